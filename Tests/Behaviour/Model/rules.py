"""What the library's operations do, rule by rule, without the library.

`observation_of(case)` answers what the behaviour runner ought to observe. The file system is asked
as the runner asks it: a relative path is relative to the current directory.
"""

import grp
import os
import pwd
from dataclasses import dataclass, field, replace

import texts
from kinds import KINDS, FatalStop, first_tag
from texts import equal, from_json, to_json


class NotKnownHere(Exception):
    """The expected result depends on this machine's users in a way that is not modelled."""


@dataclass(frozen=True)
class Option:
    tags: tuple
    tag_help: str


@dataclass(frozen=True)
class Parameter:
    kind: str
    tags: tuple
    tag_help: str
    parameter_name: str = ""
    user_value: str = ""
    options: tuple = ()
    state: str = ""

    @property
    def has_parameter(self):
        return KINDS[self.kind].has_parameter


@dataclass(frozen=True)
class Declaration:
    required: tuple
    optional: tuple
    help: str
    requires_root: bool
    hidden: bool


@dataclass
class Output:
    """What the process has written so far."""

    written: str = ""

    def print(self, text, terminator="\n"):
        self.written += text + terminator


@dataclass
class Fit:
    """The parameters that were given, required and optional ones each in the arguments' order."""

    index: int
    declaration: Declaration
    required: list = field(default_factory=list)
    optional: list = field(default_factory=list)

    def given(self):
        return self.required + self.optional


# --- reading a case ---

def texts_of(values):
    return tuple(map(from_json, values))


def option_of(entry):
    return Option(texts_of(entry["tags"]), from_json(entry["tagHelp"]))


def parameter_of(entry):
    return Parameter(
        kind=entry["kind"],
        tags=texts_of(entry["tags"]),
        tag_help=from_json(entry["tagHelp"]),
        parameter_name=from_json(entry.get("parameterName", "")),
        user_value=from_json(entry.get("userValue", "")),
        options=tuple(map(option_of, entry.get("validOptions", []))),
        state=entry.get("state", ""),
    )


def declaration_of(entry):
    return Declaration(
        required=tuple(map(parameter_of, entry["required"])),
        optional=tuple(map(parameter_of, entry["optional"])),
        help=from_json(entry["help"]),
        requires_root=entry["requiresRoot"],
        hidden=entry["hidden"],
    )


def declarations_of(case):
    return list(map(declaration_of, case["declarations"]))


# --- parameters ---

def is_equal_to(left, right):
    return (left.kind == right.kind
            and texts.all_equal(left.tags, right.tags)
            and equal(left.tag_help, right.tag_help))


def common_equal(left, right):
    return (equal(left.tag_help, right.tag_help)
            and texts.all_equal(left.tags, right.tags)
            and equal(left.user_value, right.user_value)
            and left.has_parameter == right.has_parameter
            and equal(left.parameter_name, right.parameter_name))


def validate(parameter):
    return KINDS[parameter.kind].validate(parameter)


# --- matching ---

def last_owner(argument, parameters):
    """The last one that owns the argument; nothing when none does."""
    owner = None
    for parameter in parameters:
        if any(equal(tag, argument) for tag in parameter.tags):
            owner = parameter
    return owner


def owner_and_section(argument, fit):
    """The required parameters are asked first; the owner is filed where it was found."""
    owner = last_owner(argument, fit.declaration.required)
    if owner is not None:
        return owner, fit.required
    return last_owner(argument, fit.declaration.optional), fit.optional


def could_run(index, declaration, arguments, output):
    fit = Fit(index, declaration)
    pending = None
    for argument in arguments:
        if pending is not None:
            section.append(replace(pending, user_value=argument))
            pending = None
            continue
        owner, section = owner_and_section(argument, fit)
        if owner is None:
            return None
        if owner.has_parameter:
            pending = owner
        else:
            section.append(owner)
    if pending is not None:
        output.print("Missing argument for " + first_tag(pending))
        return None
    return fit if has_enough(fit) else None


def has_enough(fit):
    """Only the number counts, so a repeated tag makes up for a missing one."""
    return len(fit.required) == len(fit.declaration.required)


def fits_of(declarations, arguments, output):
    tried = [could_run(index, declaration, arguments, output)
             for index, declaration in enumerate(declarations)]
    return [fit for fit in tried if fit is not None]


# --- parse ---

NO_ERROR = "Parse successful"
NO_MATCHING_LINE = "Unknown command line"
NO_COMMAND_LINE = "No command line specified"


def parse(declarations, passed_in, output):
    """The result, and the fit whose action is to run, if one is."""
    if len(passed_in) < 2:
        return NO_COMMAND_LINE, None
    arguments = passed_in[1:]
    fits = fits_of(declarations, arguments, output)
    if not fits:
        output.print(texts.rendered_list(arguments)
                     + " is not a valid command line.\n Please refer to the help below.")
    if len(fits) != 1:
        return NO_MATCHING_LINE, None
    fit = fits[0]
    if not validate_parameters(fit, output) or not validate_permissions(fit, output):
        return NO_MATCHING_LINE, None
    return NO_ERROR, fit


def validate_parameters(fit, output):
    valid = True
    for parameter in fit.given():
        message = validate(parameter)
        if message is not None:
            valid = False
            output.print("Validation of parameter " + first_tag(parameter)
                         + " failed : " + message)
    return valid


def validate_permissions(fit, output):
    if not fit.declaration.requires_root or is_group_member(0):
        return True
    if is_group_member(80):
        raise NotKnownHere("a password would be asked for")
    output.print("Requested command line must be run as root. Try using sudo.")
    return False


def is_group_member(group):
    try:
        user = pwd.getpwuid(os.getuid())
    except KeyError:
        return False
    return group_exists(group) and group in os.getgrouplist(user.pw_name, user.pw_gid)


def group_exists(group):
    try:
        grp.getgrgid(group)
        return True
    except KeyError:
        return False


# --- fetching ---

def found(wanted, given):
    return next((parameter for parameter in given if is_equal_to(parameter, wanted)), None)


def fetched(wanted, given, stopping):
    parameter = found(wanted, given)
    has = parameter is not None
    if not KINDS[wanted.kind].has_parameter:
        return {"has": has, "value": has}
    if not has and stopping:
        raise FatalStop
    return {"has": has, "value": KINDS[wanted.kind].value(parameter) if has else None}


# --- the help listing ---

def display_help(declarations, output):
    output.print("")
    for declaration in declarations:
        if declaration.hidden:
            continue
        description = display_help_parameters(declaration.required, False, output)
        description += display_help_parameters(declaration.optional, True, output)
        root = " (must be run as root)" if declaration.requires_root else ""
        output.print("\n  " + declaration.help + " " + root)
        output.print(description)


def display_help_parameters(parameters, optional, output):
    description = ""
    for parameter in parameters:
        output.print(form_tag_help(parameter, optional), terminator=" ")
        if parameter.has_parameter:
            description += "    " + parameter.parameter_name + "  -  " + parameter.tag_help + "\n"
            description = KINDS[parameter.kind].described(description, parameter)
        elif parameter.tag_help:
            description += "    " + parameter.tag_help + "\n"
    return description


def form_tag_help(parameter, optional):
    text = "[ " if optional else ""
    for tag in parameter.tags:
        text += tag + "|"
    if not text:
        raise FatalStop
    text = texts.without_last_characters(text, 1)
    if parameter.has_parameter:
        text += " <" + parameter.parameter_name + "> "
    return text + " ]" if optional else text


# --- texts of cases, relayed output ---

CASES_OF_TYPE = {
    "parsingError": {
        "Parse successful": "NoError",
        "Missing Parameter": "MissingParameter",
        "Unknown command line": "NoMatchingLine",
        "No command line specified": "NoCommandLine",
    },
    "urlType": {case: case for case in ("file", "folder", "fileOrFolder")},
    "existState": {case: case for case in ("exist", "absent", "vague")},
}


def case_of_raw_value(type_name, text):
    cases = CASES_OF_TYPE[type_name]
    return next((case for raw, case in cases.items() if equal(raw, text)), None)


def remove_first_line(text):
    """What follows the first character that is exactly a line feed; nothing when nothing does."""
    walked = texts.characters(text)
    if "\n" not in walked:
        return None
    return "".join(walked[walked.index("\n") + 1:]) or None


def relay(blocks, output):
    first_line = True
    for block in blocks:
        if not block or not texts.is_utf8(block):
            continue
        shown = remove_first_line(block) if first_line else block
        if shown is not None:
            output.print(shown)
            first_line = False


# --- calls ---

def call_parse(case, output):
    declarations = declarations_of(case)
    result, fit = parse(declarations, texts_of(case["arguments"]), output)
    if fit is None:
        return {"result": result, "ran": None, "worker": False, "parameters": [], "fetched": []}
    given = fit.given()
    wanted = fit.declaration.required + fit.declaration.optional
    stopping = case.get("fetch") == "stopping"
    return {
        "result": result,
        "ran": fit.index,
        "worker": True,
        "parameters": [as_handed_over(parameter) for parameter in given],
        "fetched": [fetched(parameter, given, stopping) for parameter in wanted],
    }


def as_handed_over(parameter):
    return {"kind": parameter.kind, "tags": list(map(to_json, parameter.tags)),
            "userValue": to_json(parameter.user_value)}


def call_display_help(case, output):
    display_help(declarations_of(case), output)
    return {}


def call_validate(case, _):
    message = validate(parameter_of(case["parameter"]))
    return {"message": None if message is None else to_json(message)}


def call_get_value(case, _):
    parameter = parameter_of(case["parameter"])
    return {"value": KINDS[parameter.kind].value(parameter)}


def call_first_tag(case, _):
    return {"value": to_json(first_tag(parameter_of(case["parameter"])))}


def both(case):
    return parameter_of(case["left"]), parameter_of(case["right"])


def call_is_equal_to(case, _):
    return {"equal": is_equal_to(*both(case))}


def call_common_equal(case, _):
    same = common_equal(*both(case))
    return {"equal": same, "sameHash": same}


def call_flag_equal(case, _):
    """A flag hashes all that its common details hold, also what its equality leaves out."""
    return {"equal": is_equal_to(*both(case)), "sameHash": common_equal(*both(case))}


def call_raw_value(case, _):
    return {"case": case_of_raw_value(case["type"], from_json(case["text"]))}


def call_remove_first_line(case, _):
    rest = remove_first_line(from_json(case["text"]))
    return {"value": None if rest is None else to_json(rest)}


def call_relay(case, output):
    relay(texts_of(case["blocks"]), output)
    return {}


CALLS = {
    "parse": call_parse,
    "displayHelp": call_display_help,
    "validate": call_validate,
    "getValue": call_get_value,
    "firstTag": call_first_tag,
    "isEqualTo": call_is_equal_to,
    "commonEqual": call_common_equal,
    "flagEqual": call_flag_equal,
    "rawValue": call_raw_value,
    "removeFirstLine": call_remove_first_line,
    "relay": call_relay,
}


def observation_of(case):
    if case["call"] == "outputErrorMessage":
        message = from_json(case["text"])
        return {"stdout": "", "stderr": to_json(message + "\n"), "stopped": False}
    output = Output()
    try:
        observation = CALLS[case["call"]](case, output)
        stopped = False
    except FatalStop:
        observation = {}
        stopped = True
    return observation | {"stdout": to_json(output.written), "stderr": "", "stopped": stopped}
