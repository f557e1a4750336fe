"""Which lines a declaration reads, in both spellings, argument by argument.

A reader belongs to one declaration of a tool. Its parameters go by their position, the required ones
first; a state is a value, so that whoever searches can compare states. What a reader cannot read it
says, and goes on, so that one reading answers what a person is told as well.
"""

import functools
import re
import unicodedata
from collections import Counter
from dataclasses import dataclass, field
from typing import NamedTuple, Optional

import rules
import texts
from rules import from_json

UNKNOWN, VALUE_MISSING = "unknown", "value missing"
# What a reader takes an argument for.
TAG, VALUE, PLAIN, REST, DASHES = "tag", "value", "plain", "rest", "dashes"


@functools.lru_cache(maxsize=None)
def key(text):
    """Equal for texts that are canonically equivalent, and for no others."""
    return unicodedata.normalize("NFD", text) if texts.is_utf8(text) else text


def is_option(tag):
    return tag.startswith("-") and tag != "-"


def is_number_within(parameter, text):
    if not re.fullmatch("[+-]?[0-9]+", text):
        return False
    value = int(text)
    return -2**63 <= value < 2**63 and parameter.least <= value <= parameter.greatest


# --- a tool, as a case tells it ---

@dataclass(frozen=True)
class Parameter(rules.Parameter):
    """With the bounds of a number and the type of a path, which the core asks nobody for."""

    least: int = -2**63
    greatest: int = 2**63 - 1
    type: str = ""


@dataclass(frozen=True)
class Tool:
    declarations: tuple
    conventional: bool
    operands: tuple  # (tag, takes)
    repeated: tuple


def parameter_of(entry):
    plain = rules.parameter_of(entry)
    return Parameter(**vars(plain), least=entry.get("min", -2**63), greatest=entry.get("max", 2**63 - 1),
                  type=entry.get("type", ""))


def declaration_of(entry):
    return rules.Declaration(
        required=tuple(map(parameter_of, entry["required"])),
        optional=tuple(map(parameter_of, entry["optional"])),
        help=from_json(entry["help"]), requires_root=entry["requiresRoot"], hidden=entry["hidden"])


def tool_of(case):
    entry = case.get("tool", {})
    return Tool(
        declarations=tuple(map(declaration_of, case["declarations"])),
        conventional=entry.get("spelling", "conventional") == "conventional",
        operands=tuple((from_json(it["tag"]), it["takes"]) for it in entry.get("operands", [])),
        repeated=rules.texts_of(entry.get("repeated", [])))


def readers_of(tool):
    kind = Conventional if tool.conventional else Exact
    return [kind(declaration, tool) for declaration in tool.declarations]


# --- reading ---

class Step(NamedTuple):
    """What one argument does: the parameters that it begins to give, with their value if it is known,
    and the value of the one that was waited for."""

    state: object
    role: Optional[str] = None
    opened: tuple = ()
    filled: Optional[tuple] = None
    problem: Optional[str] = None
    missing: Optional[int] = None


@dataclass
class Entry:
    position: int
    value: Optional[str]


@dataclass
class Reading:
    roles: list = field(default_factory=list)
    entries: list = field(default_factory=list)
    problem: Optional[str] = None
    accepted: int = 0
    unknown: Optional[int] = None
    value_missing: Optional[int] = None

    def note(self, problem, accepted, unknown=None, value_missing=None):
        """Only the first problem counts."""
        if self.problem is None:
            self.problem, self.accepted = problem, accepted
            self.unknown, self.value_missing = unknown, value_missing

    def take(self, step):
        if step.filled is not None:
            position, value = step.filled
            waiting = [it for it in self.entries if it.position == position and it.value is None]
            waiting[-1].value = value
        self.entries += [Entry(*opened) for opened in step.opened]
        self.roles.append(step.role)

    def counts(self):
        return Counter(entry.position for entry in self.entries)


class Reader:
    def __init__(self, declaration, tool):
        self.declaration = declaration
        self.parameters = declaration.required + declaration.optional
        self.required = range(len(declaration.required))
        self.owners = {}
        for position in [*range(len(self.required), len(self.parameters)), *self.required]:
            for tag in self.parameters[position].tags:
                self.owners[key(tag)] = position
        self.often = frozenset()

    def owner(self, tag):
        return self.owners.get(key(tag))

    def has_value(self, position):
        return self.parameters[position].has_parameter

    def read(self, line):
        reading, state = Reading(), self.start
        for index, argument in enumerate(line):
            step = self.step(state, argument)
            if step.problem == VALUE_MISSING:
                reading.note(VALUE_MISSING, index, value_missing=step.missing)
                step = self.step(step.state, argument)
            if step.problem == UNKNOWN:
                reading.note(UNKNOWN, index, unknown=index)
            reading.take(step)
            state = step.state
        unfilled = self.unfilled(state)
        if unfilled is not None:
            reading.note(VALUE_MISSING, len(line), value_missing=unfilled)
        reading.note(None, len(line))
        return reading

    def missing(self, reading):
        return [position for position in self.required if position not in reading.counts()]

    def handed(self, reading):
        """What the action is given: (position, value)."""
        return sorted(((it.position, it.value) for it in reading.entries),
                      key=lambda it: it[0] not in self.required)


class ExactState(NamedTuple):
    pending: Optional[int]


class Exact(Reader):
    """Tag by tag; a value is whatever stands after its tag; only the count of the required ones counts."""

    start = ExactState(None)
    operands = ()

    def step(self, state, argument):
        if state.pending is not None:
            return Step(ExactState(None), VALUE, filled=(state.pending, argument))
        owner = self.owner(argument)
        if owner is None:
            return Step(state, problem=UNKNOWN)
        if self.has_value(owner):
            return Step(ExactState(owner), TAG, opened=((owner, None),))
        return Step(state, TAG, opened=((owner, ""),))

    def unfilled(self, state):
        return state.pending

    def fits(self, reading):
        counts = reading.counts()
        return reading.problem is None and has_enough(
            sum(counts[position] for position in self.required), self)

    def too_often(self, reading):
        return [position for position, count in sorted(reading.counts().items())
                if count > 1 and position in self.required]


def has_enough(count, reader):
    return count == len(reader.required)


class ConventionalState(NamedTuple):
    given: frozenset = frozenset()
    option: Optional[int] = None   # takes the next argument
    waiting: Optional[int] = None  # takes the next plain argument
    rest: Optional[int] = None     # takes all others
    plain: bool = False            # after `--`


class Conventional(Reader):
    start = ConventionalState()

    def __init__(self, declaration, tool):
        super().__init__(declaration, tool)
        self.operands = self.operands_of(tool)
        self.words = frozenset(
            position for position in self.required if self.is_word_flag(self.parameters[position]))
        repeated = {self.owner(tag) for tag in tool.repeated} - {None}
        self.often = frozenset(filter(self.has_value, repeated)) | {
            position for position, takes in self.operands if takes != "one"}
        self.once = frozenset(
            position for position in range(len(self.parameters))
            if position in self.required or self.has_value(position)) - self.often

    def operands_of(self, tool):
        operands = {}
        for tag, takes in tool.operands:
            owner = self.owner(tag)
            if owner is not None and self.has_value(owner):
                operands.setdefault(owner, takes)
        return tuple(operands.items())

    @staticmethod
    def is_word_flag(parameter):
        return not parameter.has_parameter and bool(parameter.tags) and not is_option(
            parameter.tags[0])

    def step(self, state, argument):
        if state.rest is not None:
            return Step(state, REST, opened=((state.rest, argument),))
        if state.option is not None:
            return self.step_of_value(state, argument)
        if state.plain:
            return self.step_of_plain(state, argument)
        if argument == "--":
            return Step(state._replace(plain=True), DASHES)
        owner = self.owner(argument)
        if owner is not None and (is_option(argument) or state.waiting is None):
            return self.step_of_tag(state, owner, argument)
        if not is_option(argument):
            return self.step_of_plain(state, argument)
        return (self.step_of_equals(state, argument) or self.step_of_joined(state, argument)
                or self.step_of_number(state, argument))

    def step_of_value(self, state, argument):
        free = state._replace(option=None)
        if self.is_no_value(argument):
            return Step(free, problem=VALUE_MISSING, missing=state.option)
        return Step(free, VALUE, filled=(state.option, argument))

    def is_no_value(self, argument):
        return argument in ("--", "--help") or (
            argument.startswith("-") and self.owner(argument) is not None)

    def step_of_tag(self, state, owner, argument):
        given = state._replace(given=state.given | {owner})
        if not self.has_value(owner):
            return Step(given, TAG, opened=((owner, ""),))
        waits = "option" if is_option(argument) else "waiting"
        return Step(given._replace(**{waits: owner}), TAG, opened=((owner, None),))

    def step_of_equals(self, state, argument):
        tag, equals, value = argument.partition("=")
        owner = self.owner(tag)
        if not (argument.startswith("--") and equals) or owner is None or not self.has_value(owner):
            return None
        return Step(state._replace(given=state.given | {owner}), TAG, opened=((owner, value),))

    def step_of_joined(self, state, argument):
        """All of them or none."""
        opened, option = [], None
        characters = self.joined_characters(argument)
        for at, character in enumerate(characters):
            owner = self.owner("-" + character)
            if owner is None or character == "-":
                return None
            if not self.has_value(owner):
                opened.append((owner, ""))
                continue
            value = "".join(characters[at + 1:])
            if value.startswith("="):
                return None
            opened.append((owner, value or None))
            option = None if value else owner
            break
        if not opened:
            return None
        given = state.given | {position for position, _ in opened}
        return Step(state._replace(given=given, option=option), TAG, opened=tuple(opened))

    def joined_characters(self, argument):
        dash, *characters = texts.characters(argument)
        if dash != "-" or argument.startswith("--") or len(characters) < 2:
            return []
        return [] if self.is_forgotten_dash(argument) else characters

    def is_forgotten_dash(self, argument):
        return self.owner("-" + argument.partition("=")[0]) is not None

    def step_of_number(self, state, argument):
        due, _ = self.due(state)
        if due is not None and self.parameters[due].kind == "ParameterNumber" and is_number_within(
                self.parameters[due], argument):
            return self.step_of_plain(state, argument)
        return Step(state, problem=UNKNOWN)

    def step_of_plain(self, state, argument):
        due, takes = self.due(state)
        if due is None:
            return Step(state, problem=UNKNOWN)
        if state.waiting is not None:
            return Step(state._replace(waiting=None), PLAIN, filled=(due, argument))
        rest = due if takes == "rest" else None
        return Step(state._replace(given=state.given | {due}, rest=rest), REST if takes == "rest" else PLAIN,
                    opened=((due, argument),))

    def due(self, state):
        """The parameter that takes a plain argument here, and how much it takes."""
        if state.waiting is not None:
            return state.waiting, "one"
        if not self.words <= state.given:
            return None, None
        for position, takes in self.operands:
            if position not in state.given:
                return position, takes
        if self.operands and self.operands[-1][1] != "one":
            return self.operands[-1]
        return None, None

    @staticmethod
    def unfilled(state):
        return state.option if state.option is not None else state.waiting

    def fits(self, reading):
        return (reading.problem is None and not self.missing(reading)
                and not self.too_often(reading))

    def too_often(self, reading):
        return [position for position, count in sorted(reading.counts().items())
                if count > 1 and position in self.once]
