#!/usr/bin/python3
"""Tests of the model by the curated cases, and of the comparison by planted errors."""

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
import planted
import shrinking
import texts
import tools

HERE = pathlib.Path(__file__).resolve().parent
sys.path.append(str(HERE.parent))
import compare  # of the curated cases


# --- the curated cases ---

class CuratedCases(unittest.TestCase):
    def test_the_model_answers_as_they_expect(self):
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(compare.DIRECTORY)
        own = compare.own_rights()
        # The model of tools leaves out what is said in words: drawn cases hold it to the runner.
        # Pages and descriptions have tests of their own.
        left_out = {*tools.ANSWERS, "helpPage", "manualPage", "description"}
        cases = [case for case in compare.read_cases(sorted(compare.CASES.glob("*.jsonl")))
                 if case.needs in (None, own) and json.loads(case.line)["call"] not in left_out]
        self.assertTrue(cases)
        for case in cases:
            with self.subTest(case.place):
                answer = comparing.expectation_of(json.loads(case.line))
                if answer is None:
                    self.skipTest("a root command, which would ask this user for a password")
                self.assertEqual(compare.differences(case, answer), [], case.says)


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
            self.assertRegex(said.getvalue(), r"byte \d differs: expected b'.*\\n', observed b'.*\\x0b'")
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
