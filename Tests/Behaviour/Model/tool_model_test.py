#!/usr/bin/python3
"""Tests of the model of tools: by hand, by enumeration of lines, and of the drawn cases by planted errors."""

import contextlib
import io
import itertools
import os
import json
import pathlib
import sys
import tempfile
import unittest
from datetime import date

import completing
import explaining
import generator
import linting
import searching
import shrinking
import spelling
import tool_generator
import tool_planted
import tool_test
import tools
from spelling import key

HERE = pathlib.Path(__file__).resolve().parent


def flag(*tags, help=""):
    return {"kind": "ParameterNone", "tags": list(tags), "tagHelp": help}


def valued(kind, *tags, name="n", help="", **more):
    return {"kind": kind, "tags": list(tags), "parameterName": name, "tagHelp": help} | more


def choice(*tags, options=(), **more):
    return valued("ParameterList", *tags, validOptions=[flag(option) for option in options], **more)


def declared(required=(), optional=(), help="", root=False, hidden=False):
    return {"requiresRoot": root, "required": list(required), "optional": list(optional),
            "help": help, "hidden": hidden}


def text(*tags, **more):
    return valued("ParameterString", *tags, **more)


def number(*tags, least=1, greatest=9):
    return valued("ParameterNumber", *tags) | {"min": least, "max": greatest}


def operands(*entries):
    return [{"tag": tag, "takes": takes} for tag, takes in (entry.split(" ") for entry in entries)]


def tool_of(declarations, exact=False, **more):
    return {"declarations": declarations,
            "tool": {"spelling": "exact" if exact else "conventional"} | more}


def asked(call, case, **keys):
    return tools.observation_of({"call": call} | case | keys)


def read(declaration, line, **more):
    """What the declaration hands over, or nothing where it does not fit."""
    reader = spelling.readers_of(spelling.tool_of(tool_of([declaration], **more)))[0]
    reading = reader.read(line.split())
    if not reader.fits(reading):
        return None
    return " ".join(reader.parameters[at].tags[0] + (":" + value if reader.has_value(at) else "")
                    for at, value in reader.handed(reading))


class ConventionalTest(unittest.TestCase):
    """Each line of a table: what is typed, and what is handed over."""

    def check(self, declaration, table, **more):
        for line, handed in table.items():
            with self.subTest(line):
                self.assertEqual(read(declaration, line, **more), handed)

    def test_options_stand_anywhere_and_words_wait_for_plain_arguments(self):
        self.check(declared([text("remove")], [flag("-y"), flag("list"), text("add")]), {
            "remove disk0": "remove:disk0", "remove -y disk0": "remove:disk0 -y",
            "-y remove disk0": "remove:disk0 -y", "remove list": "remove:list",
            "remove -y add": "remove:add -y", "remove list list": "remove:list list",
            "remove": None, "remove -y": None, "remove -- -y": "remove:-y", "-- remove x": None,
            "add remove x": None, "add x remove y": "remove:y add:x", "remove -- --": "remove:--"})

    def test_an_option_takes_the_next_argument_as_it_is_but_for_tags(self):
        self.check(declared([], [text("-n", "--name"), flag("-d"), flag("word")]), {
            "-n x": "-n:x", "-n -x": "-n:-x", "-n word": "-n:word", "-n -d": None, "-n --": None,
            "-n --help": None, "-n -": "-n:-", "-n --name": None, "-n -dd": "-n:-dd", "-n": None,
            "--name=-d": "-n:-d", "-n-d": "-n:-d", "--name=": "-n:", "--name=a=b": "-n:a=b",
            "--other=x": None, "-d -d": "-d -d", "-n x -n y": None, "-n=x": None, "word -n x": "word -n:x"})

    def test_a_flag_takes_no_value(self):
        self.check(declared([], [flag("--force")]), {"--force": "--force", "--force=x": None})

    def test_short_options_are_joined_all_or_nothing(self):
        self.check(declared([], [flag("-a"), flag("-\u00e9"), text("-n"), flag("--an"), flag("-xy")]), {
            "-ae\u0301": "-a -\u00e9", "-an5": "-a -n:5", "-na": "-n:a", "-\u00e9n5": "-\u00e9 -n:5",
            "-\u00e9n 5": "-\u00e9 -n:5", "-\u00e9n=5": None, "-\u00e9n": None, "-\u00e9n -a": None,
            "-ax": None, "-an": None, "-an=5": None, "-\u00e9an5": "-\u00e9 -a -n:5", "-xy": "-xy",
            "-ya": None, "-aa": "-a -a", "--a": None, "-\u00e9a-": None})

    def test_numbers_are_plain_where_one_is_due(self):
        self.check(declared([], [number("-s", least=-9), text("name"), number("size", least=-3)]), {
            "-5": "-s:-5", "-10": None, "-5x": None, "size -3": "size:-3", "size -4": None, "name -3": None,
            "-- -5": "-s:-5", "-s -50": "-s:-50", "-s 5 -5": None},
            operands=operands("-s one"))

    def test_operands_wait_until_all_required_words_are_given(self):
        self.check(declared([flag("add"), flag("-f")], [text("--disk"), text("--to")]), {
            "add x -f": "add -f --disk:x", "x add -f": None, "add -f x y": "add -f --disk:x --to:y",
            "add -f --disk x y": "add -f --disk:x --to:y", "add -f x y z": None,
            "add -f x --disk y": None, "-f add -- -x": "-f add --disk:-x", "add x": None,
            "add add -f": None, "add -f add": None, "add -f -- add": "add -f --disk:add"},
            operands=operands("--disk one", "--to one", "--none one", "add one"))

    def test_the_last_operand_may_take_many_or_the_rest(self):
        declaration = declared([text("--disk")], [text("--more"), flag("-f")])
        self.check(declaration, {
            "a": "--disk:a", "a b -f c": "--disk:a --more:b -f --more:c",
            "a --more b --more c": "--disk:a --more:b --more:c", "a b -x": None},
            operands=operands("--disk one", "--more many"))
        self.check(declaration, {
            "a b -f -- --help": "--disk:a --more:b --more:-f --more:-- --more:--help",
            "a --more b -f": "--disk:a --more:b -f", "a --more b c -f": "--disk:a --more:b --more:c --more:-f",
            "a -f": "--disk:a -f"},
            operands=operands("--disk one", "--more rest"))

    def test_what_is_repeated_counts_for_parameters_with_a_value(self):
        self.check(declared([flag("-f")], [text("-n")]), {
            "-f -n 1 -n 2": "-f -n:1 -n:2", "-f -f": None}, repeated=["-n", "-f", "none"])

    def test_an_operand_counts_once_under_its_first_name(self):
        self.check(declared([], [text("--a", "--b")]), {"x": "--a:x", "x y": None},
                   operands=operands("--a one", "--b many"))


class ExactTest(unittest.TestCase):
    def test_the_core_reads(self):
        """The drawn lines of the core's own cases."""
        cases = generator.Generator(4)
        for _ in range(1500):
            case = cases.case_of_parse()
            line = list(spelling.rules.texts_of(case["arguments"]))[1:]
            readers = spelling.readers_of(spelling.tool_of(case | {"tool": {"spelling": "exact"}}))
            with contextlib.suppress(spelling.rules.FatalStop):
                fits = spelling.rules.fits_of(spelling.rules.declarations_of(case), line,
                                              spelling.rules.Output())
                readings = [(reader, reader.read(line)) for reader in readers]
                self.assertEqual([fit.index for fit in fits], [
                    index for index, (reader, reading) in enumerate(readings) if reader.fits(reading)])
                for fit in fits:
                    self.assert_hands_over(*readings[fit.index], fit)

    def assert_hands_over(self, reader, reading, fit):
        self.assertEqual(
            [(reader.parameters[at].tags, value) for at, value in reader.handed(reading)],
            [(parameter.tags, parameter.user_value if parameter.has_parameter else "")
             for parameter in fit.given()])

    def test_operands_and_repeated_ones_mean_nothing(self):
        declaration = declared([text("-n")])
        more = {"operands": operands("-n many"), "repeated": ["-n"]}
        self.assertIsNone(read(declaration, "x", exact=True, **more))
        self.assertIsNone(read(declaration, "-n x -n y", exact=True, **more))
        self.assertEqual(read(declaration, "-n x", exact=True, **more), "-n:x")


class NearTest(unittest.TestCase):
    def test_distances(self):
        for typed, tag, distance in (
                ("lsit", "list", 1), ("list", "--list", 0), ("LIST", "-list", 0), ("lis", "list", 1),
                ("li", "list", None), ("ver", "--versions", 1), ("vre", "--versions", None),
                ("-V", "-v", 0), ("-w", "-v", None), ("--srot=x", "--sort", 1), ("lixx", "list", None),
                ("remvoe", "remove", 1), ("rmvoe", "remove", 2), ("cafe\u0301", "caf\u00e9", 0),
                ("caf", "caf\u00e9", 1), ("cafe", "caf\u00e9", 1), ("xbcdefghi", "abcdefghx", 2),
                ("ca", "abc", None), ("cab", "abc", None), ("LISTS", "list", None)):
            with self.subTest(typed + " " + tag):
                self.assertEqual(explaining.distance(typed, tag), distance)

    def test_no_part_is_edited_twice(self):
        self.assertEqual(explaining.alignment("ca", "abc"), 3)
        self.assertEqual(explaining.alignment("abcdef", "badcfe"), 3)


LIST = declared([flag("list", "-L")], [choice("-s", "--sort", options=["name", "size"])])
REMOVE = declared([flag("remove"), text("--disk")], [flag("-f", "--force")], root=True)
DISK = {"operands": operands("--disk one")}


class ExplainTest(unittest.TestCase):
    def explained(self, line, declarations=(LIST, REMOVE), **more):
        return asked("explain", tool_of(list(declarations), **(DISK | more)), arguments=line.split())

    def first(self, line, *keys, **more):
        attempt = self.explained(line, **more)["attempts"][0]
        return [attempt[name] for name in keys]

    def test_outcomes(self):
        for line, outcome, root in (
                ("list", "runs", False), ("remove x", "runs", True), ("lsit", "nothingFits", False),
                ("list -s x", "valueRejected", False), ("", "nothingGiven", False)):
            self.assertEqual([self.explained(line)[name] for name in ("outcome", "root")],
                             [outcome, root], line)

    def test_nothing_given_runs_what_alone_requires_nothing(self):
        for declarations, outcome in (
                ([declared(), LIST], "runs"), ([declared(), declared()], "nothingGiven"),
                ([declared(hidden=True)], "runs")):
            self.assertEqual(self.explained("", declarations)["outcome"], outcome)
        self.assertEqual(self.explained("", [declared()], exact=True)["outcome"], "nothingGiven")

    def test_several_fit(self):
        self.assertEqual(self.explained("list", (LIST, LIST))["outcome"], "severalFit")

    def test_exact_spelling_tells_a_missing_parameter_after_a_rejected_value(self):
        declarations = [declared([number("-a"), flag("-b")])]
        for line, outcome in (("-a 1 -a 2", "parameterMissing"), ("-a 1 -a 12", "valueRejected")):
            self.assertEqual(self.explained(line, declarations, exact=True)["outcome"], outcome)
        self.assertEqual(self.first("-a 1 -a 2", "missing", "repeated", declarations=declarations,
                                    exact=True), [["-b"], ["-a"]])

    def test_a_mistyped_command_is_the_nearest(self):
        self.assertEqual(self.first("remvoe x", "declaration", "accepted", "unknown", "missing", "near"),
                         [1, 0, 0, ["remove", "--disk"], ["remove"]])
        self.assertEqual(self.first("--force remove disk0 -z", "declaration", "accepted", "unknown",
                                    "missing", "near"), [1, 3, 3, [], []])

    def test_what_follows_an_unknown_argument_is_read_too(self):
        self.assertEqual(self.first("--frce remove x", "declaration", "accepted", "unknown", "missing",
                                    "near"), [1, 0, 0, [], ["--force"]])

    def test_a_missing_value(self):
        self.assertEqual(self.first("list -s", "accepted", "valueMissing", "unknown"), [2, "-s", None])
        self.assertEqual(self.first("-s --sort list", "accepted", "valueMissing", "repeated"),
                         [1, "-s", ["-s"]])

    def test_a_missing_tag_is_told_where_it_was_meant(self):
        declarations = [declared([flag("copy"), text("--disk"), flag("--force")])]
        self.assertEqual(self.first("copy forse", "accepted", "unknown", "near", "valueMissing",
                                    declarations=declarations), [2, 1, ["--force"], None])

    def test_a_tag_that_is_given_is_not_near(self):
        self.assertEqual(self.first("remove x --force --forse", "near"), [[]])
        self.assertEqual(self.first("remove x --forse", "near"), [["--force"]])

    def test_a_hidden_declaration_appears_when_its_tag_is_given_or_when_it_fits(self):
        hidden = declared([flag("debug")], [flag("-f")], hidden=True)
        idle = declared([], [flag("-i")], hidden=True)
        for line, shown in (("list", [0]), ("debug -x", [1, 0]), ("-x", [0]), ("-i", [2, 0])):
            seen = self.explained(line, (LIST, hidden, idle))
            self.assertEqual([it["declaration"] for it in seen["attempts"]], shown, line)

    def test_values_are_rejected(self):
        with generator.Playground():
            for parameter, value, rejected in (
                    (number("-x"), "10", True), (number("-x"), "9", False), (number("-x"), "x", True),
                    (valued("ParameterUUID", "-x"), "x", True),
                    (valued("ParameterUUID", "-x"), tool_generator.UUID, False),
                    (choice("-x", options=["on"]), "off", True),
                    (valued("ParameterFileURL", "-x", type="file", state="exist"), "dir", True),
                    (valued("ParameterFileURL", "-x", type="file", state="exist"), "file", False),
                    (valued("ParameterFileURL", "-x", type="folder", state="exist"), "file", True),
                    (valued("ParameterFileURL", "-x", type="folder", state="exist"), "missing", True)):
                seen = self.first("-x " + value, "rejected", declarations=[declared([], [parameter])])
                self.assertEqual(seen, [[{"parameter": "-x"}] if rejected else []])


class CompleteTest(unittest.TestCase):
    def words(self, before="", current="", declarations=(LIST, REMOVE), whole=False, **more):
        seen = asked("complete", tool_of(list(declarations), **(DISK | more)), before=before.split(),
                     current=current, all=whole)
        return " ".join(offer["word"] or "<" + offer["name"] + ">" for offer in seen["offers"])

    def test_for_people(self):
        for before, offered in (
                ("", "list remove"), ("list", "--sort"), ("remove", "<n> --force"), ("remove x", "--force"),
                ("list -s", "name size"), ("-f", "remove"), ("-s", "name size"), ("list -s name", ""),
                ("remove --disk", "<n>"), ("remove --", "<n>"), ("x", ""), ("list -s bad", "")):
            self.assertEqual(self.words(before), offered, before)

    def test_the_whole_law(self):
        for before, current, offered in (
                ("", "", "list -L remove --disk -s --sort -f --force"), ("", "l", "list"),
                ("remove", "", "--disk <n> -f --force"), ("remove", "d", "<n>"), ("list", "--", "--sort"),
                ("-f remove x", "", ""), ("list -s", "s", "size")):
            self.assertEqual(self.words(before, current, whole=True), offered, (before, current))

    def test_no_line_that_fits_two_is_good(self):
        twice = [declared([flag("a")], [flag("-x")]), declared([flag("a")], [flag("-y")])]
        self.assertEqual(self.words("a", declarations=twice), "-x -y")
        self.assertEqual(self.words("", declarations=[declared([flag("a")])] * 2), "")

    def test_hidden_declarations_offer_nothing_and_fit_all_the_same(self):
        hidden = declared([flag("list")], [], hidden=True)
        self.assertEqual(self.words("", declarations=(LIST, hidden), whole=True), "list -L -s --sort")
        self.assertEqual(self.words("list", declarations=(LIST, hidden), whole=True), "-s --sort")
        self.assertEqual(self.words("", declarations=(hidden,)), "")

    def test_characters_are_compared(self):
        declarations = [declared([flag("\u00e9t\u00e9")])]
        for current, offered in (("e\u0301", "\u00e9t\u00e9"), ("e", "")):
            self.assertEqual(self.words("", current, declarations=declarations), offered)


class LintTest(unittest.TestCase):
    def rules(self, *declarations, **more):
        return sorted({it["rule"] for it in asked("lint", tool_of(list(declarations), **more))["findings"]})

    def witness(self, *declarations, **more):
        return asked("lint", tool_of(list(declarations), **more))["findings"][0]["witness"]

    def test_nothing_is_found_in_a_sound_tool(self):
        self.assertEqual(self.rules(LIST, REMOVE, **DISK), [])

    def test_collisions_have_a_shortest_witness(self):
        self.assertEqual(self.witness(LIST, LIST), ["list"])
        self.assertEqual(self.rules(declared([], [flag("-x")]), declared([], [text("--d")])), [])
        self.assertEqual(self.witness(declared([flag("a")], [flag("-x")]), declared([flag("-x")], [flag("a")])),
                         ["a", "-x"])

    def test_masking_and_what_nothing_reaches(self):
        self.assertEqual(self.rules(declared([flag("-a"), flag("-b")]), exact=True), ["masked"])
        self.assertEqual(self.rules(declared([flag("-a"), flag("-b")])), [])
        self.assertEqual(self.rules(declared()), [])
        self.assertEqual(self.rules(declared(), exact=True), ["unreachable"])
        self.assertEqual(self.rules(declared(), declared()), ["unreachable"])

    def test_plain_rules(self):
        for rule, declaration, more in (
                ("shadowed", declared([flag("-a")], [text("-a", "-b")]), {}),
                ("shadowed", declared([], [flag("--", "-b")]), {}),
                ("untagged", declared([], [flag(), flag("x")]), {}),
                ("choiceless", declared([], [choice("-s"), flag("x")]), {}),
                ("bounds", declared([], [number("-n", least=2, greatest=1)]), {}),
                ("operand", declared([flag("x")]), {"operands": operands("--none one")}),
                ("operand", declared([], [text("-a"), text("-b")]), {"operands": operands("-a many", "-b one")}),
                ("operand", declared([text("-b")], [text("-a")]), {"operands": operands("-a one", "-b one")}),
                ("operand", declared([], [choice("eth", options=["-x"])]), {}),
                ("unprintable", declared([], [flag("two words")]), {}),
                ("reserved", declared([], [flag("--help")]), {})):
            with self.subTest(rule):
                self.assertEqual(self.rules(declaration, **more), [rule])

    def test_operands_without_a_word_swallow(self):
        self.assertEqual(self.rules(LIST, declared([text("--disk"), flag("-x")]), **DISK), ["swallows"])

    def test_a_wrong_answer_is_refused(self):
        case = tool_of([LIST, LIST])
        tool = spelling.tool_of(case)
        sound = asked("lint", case)["findings"]
        self.assertIsNone(linting.first_difference(tool, sound))
        for at, change in ((0, {"witness": ["list", "-s"]}), (0, {"witness": ["lost"]}), (0, {"witness": None}),
                           (0, {"witness": ["list", "-L"]}), (0, {"severity": "note"}),
                           (0, {"declarations": [0, 2]}), (1, {"rule": "operand"})):
            changed = [it | change if at == place else it for place, it in enumerate(sound)]
            self.assertIsNotNone(linting.first_difference(tool, changed), change)
        self.assertIsNotNone(linting.first_difference(tool, sound[1:]))
        self.assertIsNotNone(linting.first_difference(tool, sound + sound[:1]))


# --- searches against enumeration ---

def small_tools(count, call, symbols_at_most):
    cases = tool_generator.Generator(11)
    while count:
        case = cases.next_case(call)
        tool = spelling.tool_of(case)
        if len(searching.symbols_of(tool)) <= symbols_at_most:
            count -= 1
            yield case, tool


def lines_of(tool, length):
    """All plainly written lines of at most that many arguments; with two words that are neither."""
    symbols = searching.symbols_of(tool)
    for count in range(1, length + 1):
        yield from map(list, itertools.product([*symbols, symbols[-1] + "w"], repeat=count))


def fitting(readers, line):
    return [index for index, reader in enumerate(readers) if reader.fits(reader.read(line))]


class EnumerationTest(unittest.TestCase):
    """What some short line shows is offered; what is offered, a line shows."""

    def test_offers(self):
        offered = 0
        for case, tool in small_tools(150, "complete", 8):
            before = list(spelling.rules.texts_of(case["before"]))
            readers = spelling.readers_of(tool)
            found = self.found(tool, readers, before, 3)
            for target, declaration in enumerate(tool.declarations):
                if declaration.hidden:
                    continue
                completion = completing.Completion(tool, readers, target, before)
                offers = {(it.kind, it.word and key(it.word), it.position) for it in completion.offers()}
                with self.subTest(json.dumps(case)):
                    self.assertLessEqual(found[target], offers)
                for offer in offers - found[target]:
                    self.assert_shown(tool, readers, target, before, offer, completion)
                offered += len(offers)
        self.assertGreater(offered, 300)

    def found(self, tool, readers, before, length):
        found = [set() for _ in readers]
        for end in lines_of(tool, length):
            line = before + end
            fits = fitting(readers, line)
            if len(fits) == 1 and linting.is_strict(readers[fits[0]], line):
                found[fits[0]] |= self.offer_of(tool, readers[fits[0]], line, len(before))
        return found

    @staticmethod
    def offer_of(tool, reader, line, at):
        """How the line's argument there would be offered."""
        known = {key(it) for it in searching.symbols_of(tool)[:-1]}
        reading, word = reader.read(line), line[at]
        role, owner = reading.roles[at], reader.owner(word)
        if role == spelling.TAG:
            return set() if owner is None else {("tag", key(word), owner)}
        changed = reader.read(line[:at] + [word + "\0"] + line[at + 1:])
        changed = [a.position for a, b in zip(reading.entries, changed.entries) if a != b]
        parameter = reader.parameters[changed[0]] if changed else None
        if parameter is None:
            return set()
        if parameter.kind == "ParameterList":
            return {("choice", key(word), changed[0])}
        kind = "path" if parameter.kind == "ParameterFileURL" else "value"
        return set() if key(word) in known else {(kind, None, changed[0])}

    def assert_shown(self, tool, readers, target, before, offer, completion):
        word = offer[1] if offer[1] is not None else completion.fresh
        search = completion.search
        search.start = lambda states=search.next(completion.states, word): states
        end = [] if search.is_goal(search.start()) else search.shortest()
        line = before + [word] + end
        self.assertEqual(fitting(readers, line), [target])
        self.assertTrue(linting.is_strict(readers[target], line))

    def test_findings(self):
        shown = 0
        for case, tool in small_tools(150, "lint", 7):
            readers = spelling.readers_of(tool)
            expected = linting.lint(tool)
            lines = list(lines_of(tool, 3))
            self.assertIsNone(linting.first_difference(tool, linting.findings_of(tool)))
            shown += len(expected.witnesses)
            with self.subTest(json.dumps(case)):
                self.assertEqual(self.proved(readers, lines), {
                    place: len(line) for place, line in expected.witnesses.items() if len(line) <= 3
                    and (place[0] == "collision" or not tool.conventional)})
                self.assert_reachable(tool, readers, lines, expected)
        self.assertGreater(shown, 30)

    @staticmethod
    def proved(readers, lines):
        proved = {}
        for line in lines:
            strict = [at for at, reader in enumerate(readers) if linting.is_strict(reader, line)]
            for pair in itertools.combinations(strict, 2):
                proved.setdefault(("collision", pair), len(line))
            for at, reader in enumerate(readers):
                if isinstance(reader, spelling.Exact) and linting.is_masking(reader, line):
                    proved.setdefault(("masked", (at,)), len(line))
        return proved

    def assert_reachable(self, tool, readers, lines, expected):
        reached = {fits[0] for fits in (fitting(readers, line) for line in lines) if len(fits) == 1}
        for at, _ in enumerate(readers):
            if ("unreachable", at, None) in expected.must:
                self.assertNotIn(at, reached)
            elif at not in reached:
                witness = searching.alone(tool, readers, at, strict=False).shortest()
                idle = tool.conventional and linting.requires_nothing_alone(tool, at)
                self.assertTrue(idle or fitting(readers, witness) == [at])


# --- the drawn cases ---

CASES = {"explain": 2500, "complete": 800, "lint": 800, "runTool": 800}


class PlantedErrorTest(unittest.TestCase):
    """The drawn cases of a call notice each error that is planted there."""

    @classmethod
    def setUpClass(cls):
        cls.playground = generator.Playground()
        cls.playground.__enter__()
        cls.judged = {}
        for call in tool_generator.CALLS:
            cases = tool_generator.Generator(1)
            cls.judged[call] = tool_test.Test.judged([cases.next_case(call) for _ in range(CASES[call])])

    @classmethod
    def tearDownClass(cls):
        cls.playground.__exit__()

    @staticmethod
    def runner(error):
        return [sys.executable, str(HERE / "tool_planted.py"), error]

    def is_noticed(self, call, error):
        """Whether some case differs; few errors need many cases."""
        test, judged = tool_test.Test(self.runner(error)), self.judged[call]
        bounds = [0, 60, 300, 800, len(judged)]
        return any(test.differing_of(judged[start:end]) for start, end in itertools.pairwise(bounds))

    def test_every_error_is_noticed(self):
        """Of a short run every eighth: all of them take half a minute."""
        errors = list(tool_planted.ERRORS.items())
        step = 1 if "OPTRELLA_GENERATED_CASES" in os.environ else 8
        for error, (call, _) in errors[date.today().toordinal() % step::step]:
            with self.subTest(error):
                self.assertTrue(self.is_noticed(call, error))

    def test_nothing_differs_without_an_error(self):
        for call in tool_generator.CALLS:
            self.assertFalse(self.is_noticed(call, "none"))

    def test_a_differing_case_is_reduced_to_a_small_one_that_differs(self):
        for error in ("words do not wait", "near to nothing short", "good fits two"):
            test = tool_test.Test(self.runner(error))
            call = tool_planted.ERRORS[error][0]
            differing = test.differing_of(self.judged[call][:300])[0][0]
            small = shrinking.shrunk(differing, test.first_failing)
            self.assertIsNotNone(test.first_failing([small]))
            self.assertLess(len(json.dumps(small)), 800)

    def test_the_program_reports_a_difference_and_fails(self):
        with tempfile.TemporaryDirectory() as directory:
            runner = pathlib.Path(directory, "runner")
            planted = f"{sys.executable} {HERE / 'tool_planted.py'} 'words do not wait'"
            runner.write_text(f"#!/bin/sh\nexec {planted}\n")
            runner.chmod(0o700)
            said = io.StringIO()
            with contextlib.redirect_stdout(said):
                sys.argv = ["tool_test.py", str(runner), "--cases", "600", "--seed", "7", "--call", "explain"]
                self.assertEqual(tool_test.main(), 1)
            self.assertIn("--seed 7 --cases 600 --call explain", said.getvalue())
            self.assertIn("case:     {\"call\": \"explain\"", said.getvalue())


class ComparisonTest(unittest.TestCase):
    CASE = {"call": "explain"} | tool_of([LIST]) | {"arguments": ["lsit"]}

    def test_what_is_settled_elsewhere_may_differ(self):
        expected = tools.observation_of(self.CASE)
        case = self.CASE | {"tool": self.CASE["tool"] | {"name": "items"}}
        seen = json.loads(json.dumps(expected)) | {"words": ["items: x"]}
        for attempt in seen["attempts"]:
            attempt["why"] = "x"
        self.assertIsNone(tools.difference(case, expected, seen))
        self.assertIsNotNone(tools.difference(case, expected, expected))
        self.assertIsNotNone(tools.difference(case, expected, {"error": "timeout"}))
        for change in ({"outcome": "runs"}, {"root": True}, {"attempts": []}, {"stdout": "x"}, {"words": []},
                       {"words": ["x"]}, {"attempts": [seen["attempts"][0] | {"why": None}]}):
            self.assertIsNotNone(tools.difference(case, expected, seen | change))


class GeneratorTest(unittest.TestCase):
    def test_a_seed_gives_the_same_cases(self):
        first, second = tool_generator.Generator(5), tool_generator.Generator(5)
        self.assertEqual([first.next_case() for _ in range(200)],
                         [second.next_case() for _ in range(200)])


if __name__ == "__main__":
    unittest.main(verbosity=2)
