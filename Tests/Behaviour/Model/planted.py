#!/usr/bin/python3
"""A runner that answers by the model itself, with one error planted: planted.py NAME.

Whoever compares with it must notice the error; with the name "none" nothing may differ.
"""

import json
import os
import sys
import unicodedata

import regex

import kinds
import rules
import texts
from rules import replace

ORIGINAL_OBSERVATION = rules.observation_of
ORIGINAL_COULD_RUN = rules.could_run
ORIGINAL_EQUAL = texts.equal
ORIGINAL_FIRST_LINE = rules.remove_first_line
ORIGINAL_ESCAPED = texts.must_be_escaped


def flipped(case):
    """One bit of the last byte of standard output."""
    observation = ORIGINAL_OBSERVATION(case)
    written = bytearray(texts.to_bytes(texts.from_json(observation["stdout"])))
    if written:
        written[-1] ^= 1
    return observation | {"stdout": texts.to_json(texts.from_bytes(bytes(written)))}


def first_owner(argument, parameters):
    return next((parameter for parameter in parameters
                 if any(texts.equal(tag, argument) for tag in parameter.tags)), None)


def optional_asked_first(argument, fit):
    owner = rules.last_owner(argument, fit.declaration.optional)
    if owner is not None:
        return owner, fit.optional
    return rules.last_owner(argument, fit.declaration.required), fit.required


def every_required_one(fit):
    return all(rules.found(parameter, fit.required) for parameter in fit.declaration.required)


def silent_about_missing(index, declaration, arguments, _):
    return ORIGINAL_COULD_RUN(index, declaration, arguments, rules.Output())


def equal_compatibly(left, right):
    return unicodedata.normalize("NFKD", left) == unicodedata.normalize("NFKD", right)


def equal_without_case(left, right):
    return ORIGINAL_EQUAL(left.casefold(), right.casefold())


def cut_by_code_points(text, count):
    return text[:max(0, len(text) - count)]


def first_refusal_only(fit, output):
    for parameter in fit.given():
        message = rules.validate(parameter)
        if message is not None:
            output.print("Validation of parameter " + rules.first_tag(parameter)
                         + " failed : " + message)
            return False
    return True


def any_integer(text):
    try:
        return int(text)
    except ValueError:
        return -1


def last_found(wanted, given):
    return next((parameter for parameter in reversed(given)
                 if rules.is_equal_to(parameter, wanted)), None)


def all_visible(case):
    return list(map(lambda entry: rules.declaration_of(entry | {"hidden": False}),
                    case["declarations"]))


def set_equality(equality):
    texts.equal = rules.equal = kinds.equal = equality


ERRORS = {
    "none": lambda: None,
    "flipped": lambda: setattr(rules, "observation_of", flipped),
    "first owner": lambda: setattr(rules, "last_owner", first_owner),
    "optional asked first": lambda: setattr(rules, "owner_and_section", optional_asked_first),
    "repeats do not count": lambda: setattr(rules, "has_enough", every_required_one),
    "silent about missing": lambda: setattr(rules, "could_run", silent_about_missing),
    "equal by bytes": lambda: set_equality(lambda left, right: left == right),
    "equal without case": lambda: set_equality(equal_without_case),
    "equal compatibly": lambda: set_equality(equal_compatibly),
    "cut by code points": lambda: setattr(texts, "without_last_characters", cut_by_code_points),
    "first refusal only": lambda: setattr(rules, "validate_parameters", first_refusal_only),
    "line feed alone": lambda: setattr(
        rules, "remove_first_line", lambda text: text.partition("\n")[2] or None),
    "empty rest": lambda: setattr(
        rules, "remove_first_line", lambda text: ORIGINAL_FIRST_LINE(text + "x")),
    "any integer": lambda: setattr(kinds, "number_value", any_integer),
    "last found": lambda: setattr(rules, "found", last_found),
    "hidden shown": lambda: setattr(rules, "declarations_of", all_visible),
    "link is a directory": lambda: setattr(kinds, "is_directory", os.path.isdir),
    "link is not followed": lambda: setattr(
        kinds, "path_exists", lambda path: os.path.lexists(texts.to_bytes(path))),
    "dots stay": lambda: setattr(kinds, "without_dot_segments", lambda path: path),
    "tilde escaped": lambda: setattr(
        kinds, "STANDS_IN_A_URL", kinds.STANDS_IN_A_URL - set(b"~")),
    "invisible unescaped": lambda: setattr(texts, "INVISIBLE", regex.compile("(?!)")),
    "emoji escaped": lambda: setattr(texts, "EMOJI_SEQUENCE", regex.compile("(?!)")),
    "joiner at an emoji's end": lambda: setattr(
        texts, "EMOJI_SEQUENCE", regex.compile(texts.EMOJI_SEQUENCE.pattern + r"\u200d?")),
    "U+0085 unescaped": lambda: setattr(
        texts, "must_be_escaped", lambda it: it != "\x85" and ORIGINAL_ESCAPED(it)),
    "any UUID": lambda: setattr(kinds, "is_uuid", lambda text: len(text) == 36),
    "name is compared": lambda: setattr(rules, "is_equal_to", rules.common_equal),
}


def main():
    ERRORS[sys.argv[1]]()
    for line in sys.stdin:
        print(json.dumps(rules.observation_of(json.loads(line))))


if __name__ == "__main__":
    main()
