"""Makes a failing case small: drops list elements and optional keys, shortens texts and numbers,
as long as the case keeps failing. Every reduced case is a valid one."""

import texts

# What a case is about; without it there is no case, or another one.
KEPT = {"call", "kind", "type", "state", "fetch", "spelling", "takes"}
OPTIONAL = {"userValue", "fetch"}


def is_text(value):
    return isinstance(value, str) or isinstance(value, dict) and "hex" in value


def reductions(value):
    """Simpler values of the same shape, the simplest first."""
    if is_text(value):
        return map(texts.to_json, shorter_texts(texts.from_json(value)))
    if isinstance(value, bool):
        return iter([False] if value else [])
    if isinstance(value, int):
        return iter([0] if value else [])
    if isinstance(value, list):
        return shorter_lists(value)
    if isinstance(value, dict):
        return simpler_objects(value)
    return iter([])


def shorter_texts(text):
    """Stray bytes that would become UTF-8 by meeting stay apart."""
    for part in without_parts(text):
        if texts.from_bytes(texts.to_bytes(part)) == part:
            yield part
    for at, character in enumerate(text):
        if character.isalpha() and character > "a":
            yield text[:at] + "a" + text[at + 1:]


def without_parts(sequence):
    """First nothing, then without ever smaller parts."""
    size = len(sequence)
    while size:
        for start in range(0, len(sequence), size):
            yield sequence[:start] + sequence[start + size:]
        size //= 2


def shorter_lists(values):
    yield from without_parts(values)
    for at, value in enumerate(values):
        for simpler in reductions(value):
            yield values[:at] + [simpler] + values[at + 1:]


def simpler_objects(values):
    for key in values:
        if key in OPTIONAL:
            yield {other: values[other] for other in values if other != key}
    for key, value in values.items():
        if key not in KEPT:
            for simpler in reductions(value):
                yield values | {key: simpler}


def reductions_of_case(case):
    """One place at a time; then places that only go together."""
    yield from reductions(case)
    if case["call"] == "parse":
        yield from with_shorter_tags(case)
        yield from without_a_parameter_and_its_words(case)


def with_shorter_tags(case):
    """A tag and the arguments that are equal to it become another, shorter word."""
    for argument in case["arguments"]:
        for word in ("-x", "-y", "-z"):
            if word not in case["arguments"] and len(texts.from_json(argument)) > len(word):
                yield with_text_replaced(case, texts.from_json(argument), word)


def with_text_replaced(value, old, new):
    if is_text(value):
        return new if texts.equal(texts.from_json(value), old) else value
    if isinstance(value, list):
        return [with_text_replaced(inner, old, new) for inner in value]
    if isinstance(value, dict):
        return {key: inner if key in KEPT else with_text_replaced(inner, old, new)
                for key, inner in value.items()}
    return value


def without_a_parameter_and_its_words(case):
    words = case["arguments"]
    for declarations in without_one_parameter(case["declarations"]):
        for at in range(1, len(words)):
            for count in (1, 2):
                yield case | {"declarations": declarations,
                              "arguments": words[:at] + words[at + count:]}


def without_one_parameter(declarations):
    for place, declaration in enumerate(declarations):
        for section in ("required", "optional"):
            for at in range(len(declaration[section])):
                rest = declaration[section][:at] + declaration[section][at + 1:]
                yield [*declarations[:place], declaration | {section: rest},
                       *declarations[place + 1:]]


def shrunk(case, first_failing, at_once=200, rounds=400):
    """`first_failing` takes a list of cases and answers the first that fails, or nothing."""
    for _ in range(rounds):
        smaller = first_failing_of(reductions_of_case(case), first_failing, at_once)
        if smaller is None:
            return case
        case = smaller
    return case


def first_failing_of(candidates, first_failing, at_once):
    block = []
    for candidate in candidates:
        block.append(candidate)
        if len(block) == at_once:
            found = first_failing(block)
            if found is not None:
                return found
            block = []
    return first_failing(block) if block else None
