"""What `explain` answers, but for its words: `why`, `words` and the messages of rejected values."""

import unicodedata
from fractions import Fraction

import rules
import spelling
import texts
from kinds import KINDS, is_directory, is_uuid, path_exists
from spelling import PLAIN
from texts import to_json


# --- nearness ---

# As it is typed, and what programs for writing make of it.
DASHES = "-\u2010\u2011\u2012\u2013\u2014\u2015\u2212"


def without_dashes(text):
    return text.lstrip(DASHES)


def are_opposite(left, right):
    """The opposite of what was typed is never what was meant."""
    return any(longer == negation + shorter for negation in ("no-", "un")
               for longer, shorter in ((left, right), (right, left)))


def folded(text):
    return spelling.key(spelling.key(text).casefold()) if texts.is_utf8(text) else text


def characters(text):
    return [unicodedata.normalize("NFD", it) if texts.is_utf8(it) else it
            for it in texts.characters(text)]


def distance(typed, tag):
    """Nothing where the two are not near."""
    typed, tag = without_dashes(typed.partition("=")[0]), without_dashes(tag)
    if folded(typed) == folded(tag):
        return 0
    left, right = characters(typed), characters(tag)
    if min(len(left), len(right)) < 3 or are_opposite(folded(typed), folded(tag)):
        return None
    if right[:len(left)] == left:
        return 1
    steps = alignment(left, right)
    return steps if steps <= max(1, max(len(left), len(right)) // 3) else None


def alignment(left, right):
    """Optimal string alignment: no part is edited twice."""
    rows = [list(range(len(right) + 1))]
    for at, here in enumerate(left, 1):
        row = [at]
        for to, there in enumerate(right, 1):
            best = min(rows[-1][to] + 1, row[-1] + 1, rows[-1][to - 1] + (here != there))
            if at > 1 and to > 1 and here == right[to - 2] and left[at - 2] == there:
                best = min(best, rows[-2][to - 2] + 1)
            row.append(best)
        rows.append(row)
    return rows[-1][-1]


# --- values ---

def is_rejected(parameter):
    if KINDS[parameter.kind].validate(parameter) is not None:
        return True
    text = parameter.user_value
    if parameter.kind == "ParameterNumber":
        return not spelling.is_number_within(parameter, text)
    if parameter.kind == "ParameterUUID":
        return not is_uuid(text)
    if parameter.kind == "ParameterFileURL":
        return is_of_another_type(parameter)
    return False


def is_of_another_type(parameter):
    if parameter.type == "fileOrFolder" or not path_exists(parameter.user_value):
        return False
    return is_directory(texts.to_bytes(parameter.user_value)) != (parameter.type == "folder")


# --- attempts ---

class Attempt:
    def __init__(self, index, reader, line):
        self.index, self.reader, self.line = index, reader, line
        self.reading = reader.read(line)
        self.fits = reader.fits(self.reading)
        self.missing = reader.missing(self.reading)
        self.given = set(self.reading.counts())
        self.rejected = []
        # An operand needs no tag: what is near to one may be the operand.
        operands = {position for position, _ in self.reader.operands}
        self.hints = {position: None if position in operands else self.hint(position)
                      for position in self.missing}

    def judge(self):
        self.rejected = [position for position, value in self.reader.handed(self.reading)
                if is_rejected(rules.replace(self.reader.parameters[position], user_value=value))]

    # near

    def candidates(self):
        """The arguments that a missing required tag may have been meant by."""
        dashes = False
        for index, (argument, role) in enumerate(zip(self.line, self.reading.roles)):
            if role in (None, PLAIN) and (dashes or not spelling.is_option(argument)):
                yield index
            dashes = dashes or role == spelling.DASHES

    def hint(self, position):
        """(distance, index, place of the tag) of the nearest candidate; nothing where none is near."""
        near = [(distance(self.line[index], tag), index, place) for index in self.candidates()
                for place, tag in enumerate(self.reader.parameters[position].tags)]
        return min((it for it in near if it[0] is not None), default=None)

    def nearest_hint(self):
        hints = [(*hint, position) for position, hint in self.hints.items() if hint is not None]
        return min(hints, key=lambda it: (it[0], it[1], it[3], it[2]), default=None)

    def unknown_and_near(self):
        hint = self.nearest_hint()
        if hint is not None:
            _, index, place, position = hint
            return index, [self.reader.parameters[position].tags[place]]
        if self.reading.unknown is None:
            return None, []
        return self.reading.unknown, self.near_tags(self.line[self.reading.unknown])

    def near_tags(self, argument):
        near, seen = [], set()
        for position, parameter in enumerate(self.reader.parameters):
            for tag in parameter.tags:
                if self.reader.owner(tag) == position and spelling.key(tag) not in seen:
                    seen.add(spelling.key(tag))
                    if position not in self.given:
                        near.append((distance(argument, tag), tag))
        near = sorted((it for it in near if it[0] is not None), key=lambda it: it[0])
        return [tag for _, tag in near[:3]]

    # order

    def nearness(self):
        return sum(map(self.nearness_of, self.reader.required))

    def nearness_of(self, position):
        if position not in self.hints:
            return 1
        hint = self.hints[position]
        return Fraction(0) if hint is None else Fraction(1, 2 + hint[0])

    def rank(self):
        return (not self.fits, -self.nearness(), -self.reading.accepted, len(self.missing), self.index)

    def appears(self):
        return (not self.reader.declaration.hidden or self.fits
                or any(position in self.given for position in self.reader.required))

    def observed(self):
        unknown, near = self.unknown_and_near()
        missing_value = None if unknown is not None else self.reading.value_missing
        return {
            "declaration": self.index,
            "fits": self.fits,
            "accepted": self.reading.accepted,
            "unknown": unknown,
            "valueMissing": None if missing_value is None else self.name(missing_value),
            "missing": list(map(self.name, self.missing)),
            "repeated": list(map(self.name, self.reader.too_often(self.reading))),
            "rejected": [{"parameter": self.name(position)} for position in self.rejected],
            "near": list(map(to_json, near)),
        }

    def name(self, position):
        return to_json(rules.first_tag(self.reader.parameters[position]))


def explain(tool, line):
    attempts = [Attempt(index, reader, line)
                for index, reader in enumerate(spelling.readers_of(tool))]
    fitting = [attempt for attempt in attempts if attempt.fits]
    if len(fitting) == 1:
        fitting[0].judge()
    outcome = outcome_of(tool, line, fitting)
    only = fitting[0] if len(fitting) == 1 and outcome != "nothingGiven" else None
    return {
        "outcome": outcome,
        "root": only is not None and only.reader.declaration.requires_root,
        "attempts": [attempt.observed() for attempt in sorted(attempts, key=Attempt.rank)
                     if attempt.appears()],
    }


def outcome_of(tool, line, fitting):
    if not line and not (tool.conventional and len(fitting) == 1):
        return "nothingGiven"
    if len(fitting) != 1:
        return "severalFit" if fitting else "nothingFits"
    if fitting[0].rejected:
        return "valueRejected"
    return "parameterMissing" if fitting[0].missing else "runs"
