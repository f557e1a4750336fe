#!/usr/bin/python3
"""Tests of the model by facts and by hand, and of the comparison by planted errors."""

import contextlib
import io
import json
import os
import pathlib
import sys
import tempfile
import unicodedata
import unittest

import comparing
import generated_test
import generator
import kinds
import planted
import rules
import shrinking
import texts

HERE = pathlib.Path(__file__).resolve().parent
DATA = HERE.parent.parent / "Data"

# Facts that the Unicode data of an older `regex` cannot know; skipped by name where they differ.
NEWER_THAN_OUR_UNICODE = {"k\u1ad0": "U+1AD0 was assigned after Unicode 15.0"}


def facts(file, what):
    lines = (DATA / file).read_text(encoding="utf-8").split("\n")
    return [fact for fact in map(json.loads, filter(None, lines)) if fact["what"] == what]


class FactTest(unittest.TestCase):
    """Every fact of one sort."""

    def check(self, file, what, expected, answer):
        known = facts(file, what)
        self.assertTrue(known)
        for fact in known:
            with self.subTest(fact):
                if answer(fact) != fact[expected] and fact.get("text") in NEWER_THAN_OUR_UNICODE:
                    self.skipTest(f"{ascii(fact)}: {NEWER_THAN_OUR_UNICODE[fact['text']]}")
                self.assertEqual(answer(fact), fact[expected])

    def test_equality(self):
        self.check("text-facts.jsonl", "equal", "equal",
                   lambda fact: texts.equal(fact["a"], fact["b"]))

    def test_characters(self):
        self.check("text-facts.jsonl", "characters", "count",
                   lambda fact: len(texts.characters(fact["text"])))

    def test_cut(self):
        self.check("text-facts.jsonl", "cut", "left", lambda fact: texts.without_last_characters(
            "[ " + fact["tag"] + fact["suffix"], len(fact["suffix"])))

    def test_integer(self):
        def value(fact):
            integer = kinds.number_value(fact["text"])
            return None if integer == -1 and fact["value"] is None else integer
        self.check("value-facts.jsonl", "integer", "value", value)

    def test_uuid(self):
        self.check("value-facts.jsonl", "uuid", "value", lambda fact: kinds.uuid_value(
            fact["text"]) if kinds.is_uuid(fact["text"]) else None)

    def test_rendered(self):
        self.check("value-facts.jsonl", "rendered", "text",
                   lambda fact: texts.rendered_list(fact["list"]))

    def test_utf8(self):
        self.check("value-facts.jsonl", "utf8", "valid",
                   lambda fact: texts.is_utf8(texts.from_json({"hex": fact["hex"]})))

    def test_remove_first_line(self):
        self.check("value-facts.jsonl", "removeFirstLine", "value",
                   lambda fact: rules.remove_first_line(fact["text"]))

    def test_file_url(self):
        with small_directory() as here:
            def placed(text):
                return text.replace("{here}", here).replace("{parent}", os.path.dirname(here))
            known = facts("value-facts.jsonl", "fileURL")
            self.assertTrue(known)
            for fact in known:
                with self.subTest(fact):
                    path = placed(fact["path"])
                    self.assertEqual(kinds.file_url(path), placed(fact["url"]))
                    self.assertEqual(kinds.path_exists(path), fact["exists"])


@contextlib.contextmanager
def small_directory():
    before = os.getcwd()
    with tempfile.TemporaryDirectory(prefix="optrella") as directory:
        os.chdir(directory)
        try:
            os.makedirs("dir/sub")
            for name in ("file", "a b"):
                pathlib.Path(name).touch()
            os.symlink("dir", "link-dir")
            os.symlink("nowhere", "dangling")
            yield os.path.realpath(directory)
        finally:
            os.chdir(before)


# --- cases by hand ---

def flag(*tags, help=""):
    return {"kind": "ParameterNone", "tags": list(tags), "tagHelp": help}


def valued(kind, *tags, name="n", help="", **more):
    return {"kind": kind, "tags": list(tags), "parameterName": name, "tagHelp": help} | more


def choice(*tags, options=(), **more):
    return valued("ParameterList", *tags, validOptions=[flag(option) for option in options], **more)


def declared(required=(), optional=(), help="", root=False, hidden=False):
    return {"requiresRoot": root, "required": list(required), "optional": list(optional),
            "help": help, "hidden": hidden}


def observed(call, **keys):
    return rules.observation_of({"call": call, **keys})


def parsed(declarations, *arguments, **more):
    return observed("parse", declarations=declarations, arguments=["tool", *arguments], **more)


TEXT_A = valued("ParameterString", "-a")


class MatchingTest(unittest.TestCase):
    def test_nothing_after_the_program_name_is_no_command_line(self):
        self.assertEqual(parsed([declared()]), {
            "result": "No command line specified", "ran": None, "worker": False, "parameters": [],
            "fetched": [], "stdout": "", "stderr": "", "stopped": False})

    def test_a_repeated_tag_makes_up_for_a_missing_one(self):
        seen = parsed([declared([TEXT_A, flag("-b")])], "-a", "x", "-a", "y")
        self.assertEqual([it["userValue"] for it in seen["parameters"]], ["x", "y"])
        self.assertEqual(seen["fetched"],
                         [{"has": True, "value": "x"}, {"has": False, "value": False}])

    def test_a_value_may_equal_a_tag(self):
        seen = parsed([declared([TEXT_A], [flag("-g")])], "-a", "-g")
        self.assertEqual(seen["parameters"],
                         [{"kind": "ParameterString", "tags": ["-a"], "userValue": "-g"}])

    def test_required_comes_before_optional(self):
        line = declared([flag("x"), flag("-b")], [TEXT_A, flag("x")])
        seen = parsed([line], "-a", "1", "-b", "x")
        self.assertEqual([it["tags"] for it in seen["parameters"]], [["-b"], ["x"], ["-a"]])

    def test_the_last_owner_in_a_list_wins(self):
        seen = parsed([declared([], [TEXT_A, flag("-a")])], "-a")
        self.assertEqual(seen["parameters"],
                         [{"kind": "ParameterNone", "tags": ["-a"], "userValue": ""}])

    def test_two_fits_are_silent(self):
        seen = parsed([declared([flag("x")]), declared([], [flag("x")])], "x")
        self.assertEqual((seen["result"], seen["stdout"]), ("Unknown command line", ""))

    def test_a_missing_value_is_told_with_the_first_tag_for_each_declaration(self):
        line = declared([valued("ParameterString", "--first", "-f")])
        self.assertEqual(parsed([line, line], "-f")["stdout"],
                         "Missing argument for --first\nMissing argument for --first\n"
                         '["-f"] is not a valid command line.\n Please refer to the help below.\n')

    def test_the_argument_list_is_rendered(self):
        seen = parsed([], "", "a\"'\\\t\n\r\0", "\x1b\x07\u2028\u200e", {"hex": "ff"})
        self.assertEqual(seen["stdout"].partition(" is not")[0],
                         r'''["", "a\"\'\\\t\n\r\0", "\u{1B}\u{07}\u{2028}\u{200E}", "\x{FF}"]''')

    def test_refusals_are_told_required_ones_first(self):
        seen = parsed([declared([choice("-s", options=["a", "b"])], [choice("-t")])],
                      "-t", "y", "-s", "x")
        self.assertEqual(seen["result"], "Unknown command line")
        self.assertEqual(
            seen["stdout"],
            "Validation of parameter -s failed : "
            "Item x is not a valid option. It must be one of: a, b\n"
            "Validation of parameter -t failed : Item y is not a valid option. "
            "It must be one of\n")

    def test_a_stopping_fetch_of_what_is_not_there_stops(self):
        line = declared([flag("x")], [TEXT_A])
        self.assertEqual(parsed([line], "x", fetch="stopping"),
                         {"stdout": "", "stderr": "", "stopped": True})

    def test_a_flag_never_stops(self):
        line = declared([flag("x")], [flag("y")])
        self.assertEqual(parsed([line], "x", fetch="stopping")["fetched"],
                         [{"has": True, "value": True}, {"has": False, "value": False}])


class HelpTest(unittest.TestCase):
    def help_of(self, *declarations):
        return observed("displayHelp", declarations=list(declarations))

    def test_the_listing_of_three_commands(self):
        seen = self.help_of(
            declared([flag("list")], [choice("-s", "--sort", name="order", help="Sort order",
                                             options=["name", "date"])],
                     "List the installed items."),
            declared([flag("remove"), valued("ParameterString", "-n", "--name", name="item",
                                             help="Item to remove")],
                     [flag("-f", "--force", help="Do not ask for confirmation")],
                     "Remove an item.", root=True),
            declared([flag("secret")], hidden=True))
        self.assertEqual(seen["stdout"], "\n".join([
            "",
            "list [ -s|--sort <order>  ] ",
            "  List the installed items. ",
            "    order  -  Sort order",
            "        Must be one of: name, date",
            "",
            "remove -n|--name <item>  [ -f|--force ] ",
            "  Remove an item.  (must be run as root)",
            "    item  -  Item to remove",
            "    Do not ask for confirmation",
            "", ""]))

    def test_no_commands_give_an_empty_line(self):
        self.assertEqual(self.help_of()["stdout"], "\n")

    def test_no_tags_stop_where_required_and_lose_a_space_where_optional(self):
        self.assertTrue(self.help_of(declared([flag()]))["stopped"])
        self.assertEqual(self.help_of(declared([], [flag(), valued("ParameterUUID")]))["stdout"],
                         "\n[ ] [ <n>  ] \n   \n    n  -  \n\n")

    def test_no_choices_lose_the_colon(self):
        self.assertIn("        Must be one of\n", self.help_of(declared([choice("-s")]))["stdout"])

    def test_a_prepended_character_goes_with_the_bar_and_the_comma(self):
        seen = self.help_of(declared([choice("a\u0600", options=["b\u0600"])]))
        self.assertEqual(seen["stdout"],
                         "\na <n>  \n   \n    n  -  \n        Must be one of: b\n\n")


class OperationTest(unittest.TestCase):
    def value(self, call, **keys):
        seen = observed(call, **keys)
        return "stopped" if seen["stopped"] else next(iter(seen.values()))

    def test_numbers(self):
        expected = {"+42": 42, "-0": 0, "007": 7, "": -1, "+": -1, "42 ": -1, "0x10": -1,
                    "\uff14": -1, "42\n": -1, "9223372036854775807": 2**63 - 1,
                    "-9223372036854775808": -2**63,
                    "9223372036854775808": -1, "-9223372036854775809": -1, "500": 500}
        self.assertEqual({text: kinds.number_value(text) for text in expected}, expected)

    def test_only_first_tags_are_choices(self):
        options = [flag("read", "r"), flag("write")]
        for word, value in (("write", "write"), ("Write", "stopped"), ("r", "stopped")):
            parameter = choice("-m", userValue=word) | {"validOptions": options}
            self.assertEqual(self.value("getValue", parameter=parameter), value)

    def test_a_choice_without_tags_stops_when_it_is_reached(self):
        parameter = choice("-m", options=["a"], userValue="a")
        parameter["validOptions"].append(flag())
        self.assertIsNone(self.value("validate", parameter=parameter))
        parameter["userValue"] = "b"
        self.assertEqual(self.value("validate", parameter=parameter), "stopped")

    def test_paths(self):
        with small_directory():
            for state, path, message in (
                    ("exist", "dir", None), ("exist", "p", "p does not exist"),
                    ("absent", "p", None), ("absent", "file", "file must not exist"),
                    ("vague", "", None)):
                parameter = valued("ParameterFileURL", "-f", type="file", state=state,
                                   userValue=path)
                self.assertEqual(self.value("validate", parameter=parameter), message)

    def test_equality_leaves_out_value_and_name(self):
        left = valued("ParameterString", "-s", help="h")
        for change, equal, common in (
                ({"userValue": "x"}, True, False), ({"parameterName": "m"}, True, False),
                ({"kind": "ParameterUUID"}, False, True), ({"tagHelp": "H"}, False, False),
                ({"tags": ["-s", "-t"]}, False, False), ({"tags": ["-s"]}, True, True)):
            with self.subTest(change):
                pair = {"left": left, "right": left | change}
                self.assertEqual(self.value("isEqualTo", **pair), equal)
                self.assertEqual(self.value("commonEqual", **pair), common)

    def test_a_flags_hash_holds_what_its_equality_leaves_out(self):
        seen = observed("flagEqual", left=flag("x"), right=flag("x") | {"userValue": "1"})
        self.assertEqual((seen["equal"], seen["sameHash"]), (True, False))

    def test_raw_values(self):
        for type_name, text, case in (
                ("parsingError", "Unknown command line", "NoMatchingLine"),
                ("parsingError", "unknown command line", None), ("parsingError", "NoError", None),
                ("urlType", "fileOrFolder", "fileOrFolder"), ("urlType", "File", None),
                ("existState", "vague", "vague"), ("existState", "file", None)):
            self.assertEqual(self.value("rawValue", type=type_name, text=text), case)

    def test_the_relay_drops_the_first_line(self):
        for blocks, shown in (
                (["Password:\nhello\n"], "hello\n\n"), (["Password:"], ""),
                (["Password:", "\nhello"], "hello\n"), (["Password:\n", "a\nb\n"], "b\n\n"),
                (["p\nx", "x", "y\n"], "x\nx\ny\n\n"), (["p\nx", "", {"hex": "ff"}], "x\n")):
            self.assertEqual(observed("relay", blocks=blocks)["stdout"], shown)

    def test_an_error_message_gets_a_line_end(self):
        self.assertEqual(observed("outputErrorMessage", text="x\n"),
                         {"stdout": "", "stderr": "x\n\n", "stopped": False})

    def test_a_text_that_is_not_utf8_is_equal_to_the_same_bytes_only(self):
        stray = texts.from_json({"hex": "c3a9ff"})
        self.assertTrue(texts.equal(stray, texts.from_json({"hex": "c3a9ff"})))
        self.assertFalse(texts.equal(stray, texts.from_json({"hex": "65cc81ff"})))


# --- the comparison, the generator and the shrinking ---

SEEN = {"value": 1, "stdout": "ab", "stderr": "", "stopped": False}


class ComparisonTest(unittest.TestCase):
    def test_nothing_is_said_of_the_same(self):
        self.assertIsNone(comparing.difference(SEEN, dict(SEEN)))

    def test_the_first_differing_byte_is_named(self):
        self.assertEqual(comparing.difference(SEEN, SEEN | {"stdout": "a"}),
                         "stdout: byte 1 differs: expected b'ab', observed b'a'")

    def test_what_else_differs_is_noticed(self):
        for change in ({"value": True}, {"value": 1.0}, {"value": None}, {"value": "1"},
                       {"more": 1}, {"stopped": True}, {"stderr": "x"}, {"stdout": {"hex": "6162"}},
                       {"error": "timeout"}):
            with self.subTest(change):
                self.assertIsNotNone(comparing.difference(SEEN, SEEN | change))

    def test_a_missing_key_is_noticed(self):
        self.assertIsNotNone(comparing.difference(SEEN, {"stdout": "ab"}))

    def test_only_a_stopped_process_may_lose_output_and_only_the_end(self):
        stopped = {"stdout": "ab", "stderr": "", "stopped": True}
        self.assertIsNone(comparing.difference(stopped, stopped | {"stdout": "a"}))
        self.assertIsNotNone(comparing.difference(stopped, stopped | {"stdout": "b"}))
        self.assertIsNotNone(comparing.difference(stopped, stopped | {"stdout": "abc"}))


def planted_test(error):
    return [sys.executable, str(HERE / "planted.py"), error]


class PlantedErrorTest(unittest.TestCase):
    """3000 cases notice each planted error."""

    def test_every_error_is_noticed(self):
        for error in planted.ERRORS:
            with self.subTest(error), generator.Playground() as playground:
                test = generated_test.Test(planted_test(error), playground.here)
                test.run(generator.Generator(1), 3000)
                self.assertEqual(bool(test.differing), error != "none")

    def test_a_differing_case_is_reduced_to_a_small_one_that_differs(self):
        for error in ("first owner", "optional asked first", "cut by code points", "last found"):
            with self.subTest(error), generator.Playground() as playground:
                test = generated_test.Test(planted_test(error), playground.here)
                test.run(generator.Generator(1), 3000)
                small = shrinking.shrunk(test.differing[0], test.first_failing)
                self.assertIsNotNone(test.first_failing([small]))
                self.assertLess(len(json.dumps(small)), 420)

    def test_the_program_reports_a_difference_and_fails(self):
        with tempfile.TemporaryDirectory() as directory:
            runner = pathlib.Path(directory, "runner")
            runner.write_text(f"#!/bin/sh\nexec {sys.executable} {HERE / 'planted.py'} flipped\n")
            runner.chmod(0o700)
            said = io.StringIO()
            with contextlib.redirect_stdout(said):
                sys.argv = ["generated_test.py", "--runner", str(runner), "--count", "50",
                            "--seed", "7"]
                self.assertEqual(generated_test.main(), 1)
            self.assertIn("byte 0 differs: expected b'\\n', observed b'\\x0b'", said.getvalue())
            self.assertIn('case:     {"call": "displayHelp", "declarations": []}', said.getvalue())
            self.assertIn("--seed 7 --count 50", said.getvalue())

    def test_the_program_fails_for_a_kind_that_the_model_lacks(self):
        with tempfile.TemporaryDirectory() as directory:
            runner = pathlib.Path(directory, "runner")
            runner.write_text("#!/bin/sh\necho ParameterNone\necho ParameterColour\n")
            runner.chmod(0o700)
            said = io.StringIO()
            with contextlib.redirect_stdout(said):
                sys.argv = ["generated_test.py", "--runner", str(runner)]
                self.assertEqual(generated_test.main(), 1)
            self.assertEqual(said.getvalue(), "FAILED: kinds.py has no model of ParameterColour\n")


class GeneratorTest(unittest.TestCase):
    def test_a_seed_gives_the_same_cases(self):
        first, second = generator.Generator(5), generator.Generator(5)
        self.assertEqual([first.next_case() for _ in range(200)],
                         [second.next_case() for _ in range(200)])

    def test_all_twins_are_the_same_text_and_no_near_misses_are(self):
        for group in generator.TWINS:
            self.assertTrue(all(texts.equal(group[0], other) for other in group), ascii(group))
        for group in generator.NEAR_MISSES:
            for at, text in enumerate(group):
                self.assertFalse(any(texts.equal(text, it) for it in group[at + 1:]), ascii(text))

    def test_no_text_holds_a_virama(self):
        cases = generator.Generator(3)
        written = set(json.dumps([cases.next_case() for _ in range(3000)], ensure_ascii=False))
        self.assertEqual([it for it in written if unicodedata.combining(it) == 9], [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
