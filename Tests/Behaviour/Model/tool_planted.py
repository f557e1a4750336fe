#!/usr/bin/python3
"""A runner that answers by the model of tools itself, with one error planted: tool_planted.py NAME.

Whoever compares with it must notice the error; with the name "none" nothing may differ.
"""

import json
import sys

import completing
import explaining
import linting
import running
import searching
import spelling
import texts
import tools
from completing import Completion
from explaining import Attempt
from searching import Track
from spelling import Conventional, Exact, Reader, Step


def replaced(owner, name, make):
    """The error puts what `make` makes of the original in its place."""
    def plant():
        original = getattr(owner, name)
        setattr(owner, name, make(original))
    return plant


def constant(owner, name, value):
    return replaced(owner, name, lambda _: value)


# --- reading ---

def first_owner(original):
    def init(self, declaration, tool):
        original(self, declaration, tool)
        for position in reversed(range(len(self.parameters))):
            for tag in self.parameters[position].tags:
                self.owners[spelling.key(tag)] = position
    return init


def after_init(change):
    def make(original):
        def init(self, declaration, tool):
            original(self, declaration, tool)
            change(self)
        return init
    return replaced(Conventional, "__init__", make)


def give_required_flags_often(self):
    self.once = frozenset(filter(self.has_value, self.once))


def give_optional_values_often(self):
    self.once = self.once & frozenset(self.required)


def give_flags_once(self):
    self.once = frozenset(range(len(self.parameters))) - self.often


def forget_repeated(self):
    operands = {position for position, takes in self.operands if takes != "one"}
    self.once |= self.often - operands
    self.often = frozenset(operands)


def forget_words(self):
    self.words = frozenset()


def only_last_gives_many(self):
    self.operands = tuple((position, "one") for position, _ in self.operands)


def rest_is_many(self):
    self.operands = tuple((position, "many" if takes == "rest" else takes)
                          for position, takes in self.operands)


def words_do_not_wait(original):
    def step(self, state, argument):
        waits = (isinstance(state, spelling.ConventionalState) and state.waiting is not None
                 and not state.plain and state.option is None and state.rest is None)
        owner = self.owner(argument)
        if waits and owner is not None and not self.has_value(owner) and argument != "--":
            return self.step_of_tag(state, owner, argument)
        return original(self, state, argument)
    return step


def every_word_is_required(parameter):
    return not parameter.has_parameter and bool(parameter.tags)


def any_tag_is_a_word(parameter):
    return not parameter.has_parameter and not all(map(spelling.is_option, parameter.tags))


def flags_take_values(original):
    def step(self, state, argument):
        tag, equals, _ = argument.partition("=")
        owner = self.owner(tag)
        if argument.startswith("--") and equals and owner is not None and not self.has_value(owner):
            return Step(state._replace(given=state.given | {owner}), spelling.TAG, opened=((owner, ""),))
        return original(self, state, argument)
    return step


def last_equals(original):
    return lambda self, state, argument: (
        None if argument.count("=") > 1 else original(self, state, argument))


def no_empty_value(original):
    return lambda self, state, argument: (
        None if argument.endswith("=") else original(self, state, argument))


def joined_by_code_points(_):
    def characters(self, argument):
        if not argument.startswith("-") or argument.startswith("--") or len(argument) < 3:
            return []
        return [] if self.is_forgotten_dash(argument) else list(argument[1:])
    return characters


def joined_equals(original):
    """`-n=5` as a value with the sign."""
    def characters(self, argument):
        changed = original(self, argument)
        return [it if at != 1 or it != "=" else "\0" for at, it in enumerate(changed)]
    return characters


def without_a_look_at_equals(self, argument):
    return self.owner("-" + argument) is not None


def lone_numbers(original):
    """Where no number is due."""
    def step(self, state, argument):
        if spelling.is_number_within(spelling.Parameter("", (), ""), argument):
            return self.step_of_plain(state, argument)
        return original(self, state, argument)
    return step


def no_number(_):
    return lambda self, state, argument: Step(state, problem=spelling.UNKNOWN)


def bounds_ignored(parameter, text):
    return spelling.re.fullmatch("[+-]?[0-9]+", text) is not None


def strict_upper_bound(original):
    return lambda parameter, text: original(parameter, text) and int(text) < parameter.greatest


def second_dashes_dropped(original):
    def step(self, state, argument):
        if getattr(state, "plain", False) and argument == "--" and state.rest is None:
            return Step(state, spelling.DASHES)
        return original(self, state, argument)
    return step


def rest_by_its_tag(original):
    def step(self, state, owner, argument):
        done = original(self, state, owner, argument)
        if (owner, "rest") in self.operands:
            return done._replace(state=done.state._replace(option=None, waiting=None, rest=owner), opened=())
        return done
    return step


def operands_by_tag_do_not_count(original):
    def step(self, state, owner, argument):
        done = original(self, state, owner, argument)
        if owner in dict(self.operands):
            return done._replace(state=done.state._replace(given=state.given))
        return done
    return step


def tags_wait_too(original):
    """An option's value may be a tag."""
    return lambda self, argument: argument in ("--", "--help")


def help_is_a_value(original):
    return lambda self, argument: argument != "--help" and original(self, argument) or (
        self.owner(argument) is not None)


def word_tags_are_no_value(original):
    return lambda self, argument: original(self, argument) or self.owner(argument) is not None


def all_required(original):
    return lambda self, reading: original(self, reading) and not self.missing(reading)


def at_least(count, reader):
    return count >= len(reader.required)


# --- explaining ---

def levenshtein(left, right):
    rows = [list(range(len(right) + 1))]
    for at, here in enumerate(left, 1):
        row = [at]
        for to, there in enumerate(right, 1):
            row.append(min(rows[-1][to] + 1, row[-1] + 1, rows[-1][to - 1] + (here != there)))
        rows.append(row)
    return rows[-1][-1]


def distance_of(change):
    return replaced(explaining, "distance", lambda original: lambda typed, tag: change(
        original, typed, tag))


def no_short_one(original, typed, tag):
    return None if min(map(len, (typed, tag))) < 3 else original(typed, tag)


def no_beginning(original, typed, tag):
    left, right = typed.lstrip("-"), tag.lstrip("-")
    found = original(typed, tag)
    if found == 1 and right.startswith(left) and len(right) > len(left) + 1:
        return None
    return found


def beginnings_of_two(original, typed, tag):
    left, right = typed.lstrip("-"), tag.lstrip("-")
    return 1 if len(left) == 2 and right.startswith(left) and left != right else original(typed, tag)


def up_to_half(original, typed, tag):
    found = original(typed, tag)
    left, right = typed.partition("=")[0].lstrip("-"), tag.lstrip("-")
    if found is not None or min(len(left), len(right)) < 3:
        return found
    steps = explaining.alignment(left, right)
    return steps if steps <= max(len(left), len(right)) / 2 else None


def rank_without(place):
    return replaced(Attempt, "rank", lambda original: lambda self: tuple(
        it for at, it in enumerate(original(self)) if at != place))


def near_tags_of(make):
    return replaced(Attempt, "near_tags", make)


def two_near(original):
    return lambda self, argument: original(self, argument)[:2]


def given_ones_too(original):
    def near(self, argument):
        kept, self.given = self.given, set()
        found = original(self, argument)
        self.given = kept
        return found
    return near


def near_as_declared(original):
    def near(self, argument):
        tags = [tag for it in self.reader.parameters for tag in it.tags]
        return sorted(original(self, argument), key=tags.index)
    return near


def candidates_of(*roles):
    def candidates(self):
        for index, (argument, role) in enumerate(zip(self.line, self.reading.roles)):
            if role in roles and not spelling.is_option(argument):
                yield index
    return constant(Attempt, "candidates", candidates)


def stops_at_once(original):
    """What follows the first problem is not read."""
    def read(self, line):
        reading = original(self, line)
        if reading.problem == spelling.UNKNOWN:
            accepted = original(self, line[:reading.accepted])
            accepted.problem, accepted.accepted = reading.problem, reading.accepted
            accepted.unknown, accepted.value_missing = reading.unknown, None
            return accepted
        return reading
    return read


def all_judged(original):
    """Not only the one that fits."""
    def init(self, index, reader, line):
        original(self, index, reader, line)
        if self.reading.problem is None:
            self.judge()
    return init


def rejected_only_by_the_core(parameter):
    return explaining.KINDS[parameter.kind].validate(parameter) is not None


def shown_unless_hidden(self):
    return not self.reader.declaration.hidden


# --- completing, searching, linting ---

def without_goal_check(tool, readers, target, strict):
    tracks = [Track(reader, strict and index == target) for index, reader in enumerate(readers)]
    return searching.Search(tracks, searching.symbols_of(tool), [target],
                            lambda states: tracks[target].accepts(states[target]))


def visible_others(original):
    """A hidden declaration that fits as well does not count."""
    def alone(tool, readers, target, strict):
        search = original(tool, readers, target, strict)
        for at, track in enumerate(search.tracks):
            if at != target and tool.declarations[at].hidden:
                track.accepts = lambda state: False
        return search
    return alone


def one_more_word(original):
    """Only what ends a line, or what one more argument ends."""
    def reaches(self, states):
        if states is None:
            return False
        return self.is_goal(states) or any(
            following is not None and self.is_goal(following)
            for following in (self.next(states, symbol) for symbol in self.symbols))
    return reaches


def no_choices(original):
    return lambda self, step: True


def first_track_strict(original):
    def both(tool, left, right):
        search = original(tool, left, right)
        search.tracks[1].strict = False
        return search
    return both


def longer_witness(original):
    return lambda self: (lambda line: line and line + line[-1:])(original(self))


def lint_without(rule):
    def make(original):
        def lint(tool):
            expected = original(tool)
            expected.must = {it for it in expected.must if it[0] != rule}
            expected.witnesses = {it: line for it, line in expected.witnesses.items() if it[0] != rule}
            return expected
        return lint
    return replaced(linting, "lint", make)


def severity(rule, other):
    return lambda: linting.SEVERITIES.update({rule: other})


def sorted_by_word(original):
    def complete(*arguments):
        answer = original(*arguments)
        return {"offers": sorted(answer["offers"], key=lambda it: str(it["word"]))}
    return complete


def never_reduced(original):
    return lambda tool, before, current, whole: original(tool, before, current, True)


def always_reduced(original):
    return lambda tool, before, current, whole: original(tool, before, current, False)


def shortest_tag(position, offers):
    return min((it for it in offers if it.kind == "tag" and it.position == position),
               key=lambda it: len(texts.characters(it.word)))


def all_visible(original):
    def complete(tool, *rest):
        shown = [spelling.rules.replace(it, hidden=False) for it in tool.declarations]
        return original(spelling.Tool(tuple(shown), tool.conventional, tool.operands, tool.repeated), *rest)
    return complete


def once_by_last(original):
    return lambda offers: original(offers[::-1])[::-1]


def equal_by_bytes(_):
    return lambda text: text


# --- running ---

def taken_for_fit(outcome):
    def make(original):
        def outcome_of(*arguments):
            found = original(*arguments)
            return "runs" if found == outcome else found
        return outcome_of
    return make


ERRORS = {
    # reading
    "first owner": ("explain", replaced(Reader, "__init__", first_owner)),
    "equal by bytes": ("explain", replaced(spelling, "key", equal_by_bytes)),
    "words do not wait": ("explain", replaced(Conventional, "step", words_do_not_wait)),
    "required flags often": ("explain", after_init(give_required_flags_often)),
    "optional values often": ("explain", after_init(give_optional_values_often)),
    "flags once": ("explain", after_init(give_flags_once)),
    "repeated forgotten": ("explain", after_init(forget_repeated)),
    "operands before words": ("explain", after_init(forget_words)),
    "many is one": ("explain", after_init(only_last_gives_many)),
    "rest is many": ("explain", after_init(rest_is_many)),
    "required options are words": ("explain", constant(
        Conventional, "is_word_flag", staticmethod(every_word_is_required))),
    "any tag makes a word": ("explain", constant(
        Conventional, "is_word_flag", staticmethod(any_tag_is_a_word))),
    "flags take values": ("explain", replaced(Conventional, "step_of_equals", flags_take_values)),
    "last equals sign": ("explain", replaced(Conventional, "step_of_equals", last_equals)),
    "no empty value": ("explain", replaced(Conventional, "step_of_equals", no_empty_value)),
    "joined by code points": ("explain", replaced(
        Conventional, "joined_characters", joined_by_code_points)),
    "joined equals sign": ("explain", replaced(Conventional, "joined_characters", joined_equals)),
    "nothing joined": ("explain", replaced(
        Conventional, "joined_characters", lambda _: lambda self, argument: [])),
    "dash not forgotten": ("explain", constant(
        Conventional, "is_forgotten_dash", lambda self, argument: False)),
    "dash forgotten but for equals": ("explain", constant(
        Conventional, "is_forgotten_dash", without_a_look_at_equals)),
    "lone numbers": ("explain", replaced(Conventional, "step_of_number", lone_numbers)),
    "no numbers": ("explain", replaced(Conventional, "step_of_number", no_number)),
    "bounds ignored": ("explain", constant(spelling, "is_number_within", bounds_ignored)),
    "greatest left out": ("explain", replaced(spelling, "is_number_within", strict_upper_bound)),
    "second dashes dropped": ("explain", replaced(Conventional, "step", second_dashes_dropped)),
    "rest by its tag": ("explain", replaced(Conventional, "step_of_tag", rest_by_its_tag)),
    "operands by tag do not count": ("explain", replaced(
        Conventional, "step_of_tag", operands_by_tag_do_not_count)),
    "a tag as a value": ("explain", replaced(Conventional, "is_no_value", tags_wait_too)),
    "help as a value": ("explain", replaced(Conventional, "is_no_value", help_is_a_value)),
    "no word as a value": ("explain", replaced(Conventional, "is_no_value", word_tags_are_no_value)),
    "exact: all required": ("explain", replaced(Exact, "fits", all_required)),
    "exact: at least as many": ("explain", constant(spelling, "has_enough", at_least)),
    # explaining
    "plain distance": ("explain", constant(explaining, "alignment", levenshtein)),
    "near by code points": ("explain", constant(explaining, "characters", list)),
    "near to nothing short": ("explain", distance_of(no_short_one)),
    "case counts": ("explain", constant(explaining, "folded", lambda text: text)),
    "dashes count": ("explain", constant(explaining, "without_dashes", lambda text: text)),
    "no beginnings": ("explain", distance_of(no_beginning)),
    "beginnings of two": ("explain", distance_of(beginnings_of_two)),
    "up to half": ("explain", distance_of(up_to_half)),
    "what follows = is compared": ("explain", distance_of(
        lambda original, typed, tag: original(typed.replace("=", "-"), tag))),
    "two near ones": ("explain", near_tags_of(two_near)),
    "given ones are near": ("explain", near_tags_of(given_ones_too)),
    "near as declared": ("explain", near_tags_of(near_as_declared)),
    "fits not first": ("explain", rank_without(0)),
    "nearness does not rank": ("explain", rank_without(1)),
    "accepted does not rank": ("explain", rank_without(2)),
    "missing does not rank": ("explain", rank_without(3)),
    "values are candidates": ("explain", candidates_of(None, spelling.PLAIN, spelling.VALUE)),
    "only unknown candidates": ("explain", candidates_of(None)),
    "reading ends": ("explain", replaced(Reader, "read", stops_at_once)),
    "all values judged": ("explain", replaced(Attempt, "__init__", all_judged)),
    "values judged by the core": ("explain", constant(
        explaining, "is_rejected", rejected_only_by_the_core)),
    "hidden ones do not appear": ("explain", constant(Attempt, "appears", shown_unless_hidden)),
    "hidden ones appear": ("explain", constant(Attempt, "appears", lambda self: True)),
    # completing
    "good fits two": ("complete", constant(searching, "alone", without_goal_check)),
    "hidden ones do not fit": ("complete", replaced(searching, "alone", visible_others)),
    "hidden ones offer": ("complete", replaced(completing, "complete", all_visible)),
    "one word ahead": ("complete", replaced(searching.Search, "reaches", one_more_word)),
    "any choice": ("complete", replaced(Track, "holds_choices", no_choices)),
    "twice is good": ("complete", constant(
        Track, "must_be_once", lambda self, position: not self.exact and position in self.reader.once)),
    "by word": ("complete", replaced(completing, "complete", sorted_by_word)),
    "never reduced": ("complete", replaced(completing, "complete", never_reduced)),
    "always reduced": ("complete", replaced(completing, "complete", always_reduced)),
    "shortest tag": ("complete", constant(completing, "longest", shortest_tag)),
    "last offer holds": ("complete", replaced(completing, "once", once_by_last)),
    "offered twice": ("complete", constant(completing, "once", lambda offers: offers)),
    "one category": ("complete", constant(Completion, "category", lambda self, position: 0)),
    "begins by bytes": ("complete", constant(completing, "begins_with", str.startswith)),
    "placeholders whatever begins": ("complete", replaced(
        completing, "can_begin_with", lambda original: lambda offer, current: offer.word is None or (
            original(offer, current)))),
    # linting
    "one strict side": ("lint", replaced(searching, "both", first_track_strict)),
    "a longer witness": ("lint", replaced(searching.Search, "shortest", longer_witness)),
    **{"without " + rule: ("lint", lint_without(rule)) for rule in linting.SEVERITIES},
    "another severity": ("lint", severity("collision", "note")),
    # running
    "what is rejected runs": ("runTool", replaced(explaining, "outcome_of", taken_for_fit("valueRejected"))),
    "the first of several runs": ("runTool", replaced(explaining, "outcome_of", taken_for_fit("severalFit"))),
    "what is wrong succeeds": ("runTool", constant(running, "WRONG", 0)),
    "given as on the line": ("runTool", constant(Reader, "handed", lambda self, reading: [
        (it.position, it.value) for it in reading.entries])),
}


def main():
    if sys.argv[1] != "none":
        ERRORS[sys.argv[1]][1]()
    for line in sys.stdin:
        case = json.loads(line)
        print(json.dumps(spoken(case, tools.observation_of(case))))


def spoken(case, observation):
    """With the words that the comparison leaves to others."""
    observation = observation or {}
    if case["call"] == "runTool" and observation and observation["ran"] is None:
        return observation | {"stderr": case["tool"]["name"] + ": no\n"}
    if case["call"] != "explain" or not observation:
        return observation
    for attempt in observation["attempts"]:
        attempt["why"] = None if attempt["unknown"] is None else "notKnown"
    words = [] if observation["outcome"] == "runs" else [case["tool"]["name"] + ": no"]
    return observation | {"words": words}


if __name__ == "__main__":
    main()
