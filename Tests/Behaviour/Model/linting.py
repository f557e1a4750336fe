"""What `lint` finds. The rules about lines are searched for; of the others the model says which declarations
they must name and which they may, where more than one answer is right."""

import unicodedata

import searching
import spelling
from spelling import is_option, key
from texts import to_json

SEVERITIES = {
    "collision": "error", "unreachable": "error", "masked": "note", "shadowed": "error",
    "untagged": "error", "choiceless": "error", "bounds": "error", "operand": "error",
    "swallows": "warning", "unprintable": "warning", "reserved": "note",
}
ABOUT_A_TAG = ("shadowed", "choiceless", "bounds", "reserved")
OWN_TAGS = ("--help", "-h", "--version", "--completion", "--manual", "--describe")


class Expected:
    """`witnesses`: a shortest line for each (rule, declarations). `must` and `may`: the pairs of a rule and
    the declaration that it names first, or None; with the tag, where the rule is about one."""

    def __init__(self):
        self.witnesses, self.must, self.may = {}, set(), set()


def lint(tool):
    expected = Expected()
    readers = spelling.readers_of(tool)
    for index, reader in enumerate(readers):
        for other in range(index):
            witness = searching.both(tool, readers[other], reader).shortest()
            if witness is not None:
                expected.witnesses["collision", (other, index)] = witness
        if is_unreachable(tool, readers, index):
            expected.must.add(("unreachable", index, None))
        if not tool.conventional:
            witness = searching.masked(tool, reader).shortest()
            if witness is not None:
                expected.witnesses["masked", (index,)] = witness
        add_plain_rules(tool, index, reader, expected)
    add_swallows(tool, readers, expected)
    add_undeclared_operands(tool, readers, expected)
    return expected


def is_unreachable(tool, readers, index):
    if tool.conventional and requires_nothing_alone(tool, index):
        return False
    return searching.alone(tool, readers, index, strict=False).shortest() is None


def requires_nothing_alone(tool, index):
    idle = [at for at, declaration in enumerate(tool.declarations) if not declaration.required]
    return idle == [index]


# --- rules about one declaration ---

def add_plain_rules(tool, index, reader, expected):
    for position, parameter in enumerate(reader.parameters):
        for rule, tags in tags_at_fault(tool, reader, position, parameter):
            expected.must.update((rule, index, tag and key(tag)) for tag in tags)
        expected.may.update(("reserved", index, key(tag)) for tag in parameter.tags
                            if tag in OWN_TAGS or tag == "help")
    rules = {
        "untagged": any(not it.tags or "" in it.tags for it in tagged(reader)),
        "operand": tool.conventional and has_wrong_operand(reader),
        "unprintable": has_unprintable(reader),
    }
    expected.must.update((rule, index, None) for rule, holds in rules.items() if holds)
    if not tool.conventional and tool.operands:
        expected.may.add(("operand", index, None))


def tags_at_fault(tool, reader, position, parameter):
    """The tags that findings of a rule name: those at fault, or the first one of a parameter at fault."""
    name = (parameter.tags or (None,))[:1]
    yield "shadowed", [tag for tag in parameter.tags
                       if reader.owner(tag) != position or tool.conventional and tag == "--"]
    yield "reserved", [tag for tag in parameter.tags if tag in OWN_TAGS[:2]]
    yield "choiceless", name if is_choiceless(parameter) else []
    yield "bounds", name if is_out_of_bounds(parameter) else []


def tagged(reader):
    return [*reader.parameters, *(option for it in reader.parameters for option in it.options)]


def is_out_of_bounds(parameter):
    return parameter.kind == "ParameterNumber" and parameter.least > parameter.greatest


def is_choiceless(parameter):
    choices = list(map(key, searching.choices_of(parameter)))
    return parameter.kind == "ParameterList" and (
        not parameter.options or len(set(choices)) < len(choices))


def has_wrong_operand(reader):
    takes = [it for _, it in reader.operands]
    required = [position in reader.required for position, _ in reader.operands]
    return (any(it != "one" for it in takes[:-1]) or sorted(required, reverse=True) != required
            or any(map(has_dashed_choice_in_vain, reader.parameters)))


def has_dashed_choice_in_vain(parameter):
    """Where no tag is an option, only a plain argument can be the value."""
    return not any(map(is_option, parameter.tags)) and any(
        map(is_option, searching.choices_of(parameter)))


def has_unprintable(reader):
    """The drawn texts hold no others that one may doubt."""
    tags = [tag for it in reader.parameters for tag in it.tags]
    written = [*tags, reader.declaration.help, *(it.tag_help for it in reader.parameters),
               *(it.parameter_name for it in reader.parameters)]
    return any(" " in tag for tag in tags) or any(map(is_unprintable, written))


def is_unprintable(text):
    return any(unicodedata.category(it) == "Cc" or it == "\u200b" for it in text)


# --- rules about the tool ---

def add_swallows(tool, readers, expected):
    """In exact spelling there are no operands. A mistyped command stands first; whether it is swallowed at
    another place, or where its value is rejected later, is doubtful."""
    for index, reader in enumerate(readers):
        others = [other for other in readers if other is not reader and getattr(other, "words", ())]
        if not reader.operands or reader.words or not others:
            continue
        search = searching.swallowing(tool, reader, strict=True)
        if search.reaches(search.next(search.start(), search.symbols[-1])):
            expected.must.add(("swallows", index, None))
        if searching.swallowing(tool, reader, strict=False).shortest():
            expected.may.add(("swallows", index, None))


def add_undeclared_operands(tool, readers, expected):
    tags = [tag for tag, _ in tool.operands] + list(tool.repeated)
    lacking = [tag for tag in tags if not any(is_declared(reader, tag) for reader in readers)]
    if lacking:
        expected.must.add(("operand", None, None))


def is_declared(reader, tag):
    owner = reader.owner(tag)
    return owner is not None and reader.has_value(owner)


def findings_of(tool):
    """As a runner would answer."""
    expected = lint(tool)
    plain = [(rule, [] if index is None else [index], [] if tag is None else [to_json(tag)])
             for rule, index, tag in expected.must]
    return [finding(*it) for it in proved(tool, expected)] + [finding(*it, None) for it in plain]


def finding(rule, declarations, parameters, witness):
    return {"rule": rule, "severity": SEVERITIES[rule], "declarations": declarations,
            "parameters": parameters, "witness": witness, "sentence": rule}


def proved(tool, expected):
    readers = spelling.readers_of(tool)
    for (rule, declarations), line in expected.witnesses.items():
        lacking = missing_tags(readers[declarations[0]], line) if rule == "masked" else []
        yield rule, list(declarations), lacking, list(map(to_json, line))


def missing_tags(reader, line):
    """Those that have a name."""
    missing = [reader.parameters[position] for position in reader.missing(reader.read(line))]
    return [to_json(it.tags[0]) for it in missing if it.tags]


# --- judging what was found ---

def first_difference(tool, findings):
    """What is wrong with the findings, or nothing."""
    expected = lint(tool)
    for finding in findings:
        if SEVERITIES.get(finding["rule"]) != finding["severity"]:
            return f"severity of {finding}"
    return witnesses_difference(tool, expected, findings) or names_difference(expected, findings)


def witnesses_difference(tool, expected, findings):
    found = {}
    for finding in findings:
        if finding["rule"] in ("collision", "masked"):
            place = finding["rule"], tuple(sorted(finding["declarations"]))
            if place in found:
                return f"{place} is reported twice"
            found[place] = finding
    if found.keys() != expected.witnesses.keys():
        return f"expected {sorted(expected.witnesses)}, observed {sorted(found)}"
    return next(filter(None, (witness_fault(tool, place, found[place], len(shortest))
                              for place, shortest in expected.witnesses.items())), None)


def witness_fault(tool, place, found, length):
    witness = found["witness"]
    line = list(map(spelling.from_json, witness or []))
    if len(line) != length:
        return f"{place}: the shortest witness has {length} arguments, observed {witness}"
    if not is_plainly_written(tool, line):
        return f"{place}: {witness} is not plainly written"
    readers = spelling.readers_of(tool)
    if place[0] == "masked":
        reader = readers[place[1][0]]
        proves = is_masking(reader, line) and missing_tags(reader, line) == found["parameters"]
    else:
        proves = all(is_strict(readers[index], line) for index in place[1])
    return None if proves else f"{place}: {witness} proves nothing"


def is_plainly_written(tool, line):
    symbols = {key(symbol) for symbol in searching.symbols_of(tool)}
    return all(key(word) in symbols or not word.startswith("-") for word in line)


def is_masking(reader, line):
    reading = reader.read(line)
    return reader.fits(reading) and bool(reader.missing(reading))


def is_strict(reader, line):
    """Whether the line fits, leaves nothing out, gives nothing twice and holds its choices."""
    reading = reader.read(line)
    return (reader.fits(reading) and not reader.missing(reading)
            and all(count == 1 or position in reader.often
                    for position, count in reading.counts().items())
            and all(searching.Track.is_choice(reader.parameters[position], value)
                    for position, value in reader.handed(reading)))


def names_difference(expected, findings):
    found = {names_of(finding) for finding in findings if finding["rule"] not in ("collision", "masked")}
    lacking, idle = expected.must - found, found - expected.must - expected.may
    if lacking or idle:
        return f"lacking {sorted(lacking, key=str)}, too many {sorted(idle, key=str)}"
    return None


def names_of(finding):
    index = finding["declarations"][0] if finding["declarations"] else None
    if finding["rule"] not in ABOUT_A_TAG or not finding["parameters"]:
        return finding["rule"], index, None
    return finding["rule"], index, key(spelling.from_json(finding["parameters"][0]))
