#!/usr/bin/env python3
"""The comparison passes what is right and notices each kind of fault.

usage: compare_test.py RUNNER [unittest options]
"""

import contextlib
import io
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest
from unittest import mock

import compare

HERE = pathlib.Path(__file__).resolve().parent
RUNNER = ""
TIMEOUT = 60  # seconds, for a slow machine; no test waits that long when all is well
OBSERVED = {"stdout": "", "stderr": "x\n", "stopped": False}
STOP = {"call": "firstTag", "parameter": {"kind": "ParameterNone", "tags": [], "tagHelp": ""}}


def message(text, expect):
    return {"says": "The message is shown.", "call": "outputErrorMessage", "text": text, "expect": expect}


class ComparisonTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = pathlib.Path(directory.name)
        self.file = self.directory / "cases.jsonl"

    def write(self, *cases):
        self.file.write_text("".join(json.dumps(case) + "\n" for case in cases))

    def fake_runner(self, body):
        """A runner that does as the Python code says; `lines` are the cases."""
        runner = self.directory / "runner"
        runner.write_text(f"#!{sys.executable}\nimport json, os, signal, sys\n"
                          f"lines = sys.stdin.readlines()\n{body}\n")
        runner.chmod(0o700)
        return runner

    def compared(self, *options, runner=None):
        return subprocess.run([sys.executable, HERE / "compare.py", *options, runner or RUNNER, self.file],
                              capture_output=True, text=True, timeout=TIMEOUT, check=False)

    def assert_passes(self, compared, **options):
        result = self.compared(**options)
        self.assertEqual((result.returncode, result.stdout, result.stderr),
                         (0, f"behaviour: {compared} cases compared, 0 differ\n", ""))

    def assert_says(self, expected, *options, **runner):
        result = self.compared(*options, **runner)
        self.assertEqual((result.returncode, result.stdout, result.stderr), (1, expected, ""))

    def assert_differs(self, case, *lines):
        self.write(case)
        details = "".join(f"    {line}\n" for line in lines)
        self.assert_says(f"{self.file}:1: {case.get('says', '')}\n{details}"
                         "behaviour: 1 cases compared, 1 differ\n")


class Passing(ComparisonTest):
    def test_what_is_as_expected_passes(self):
        self.write(message("x", OBSERVED), message("y", {**OBSERVED, "stderr": "y\n"}))
        self.assert_passes(2)

    def test_only_the_expected_keys_are_judged(self):
        self.write(message("x", {"stdout": ""}))
        self.assert_passes(1)

    def test_a_text_may_be_expected_in_hexadecimal(self):
        self.write(message("x", {**OBSERVED, "stderr": {"hex": "780a"}}))
        self.assert_passes(1)

    def test_bytes_that_are_not_utf_8_may_be_expected(self):
        self.write(message({"hex": "ff"}, {**OBSERVED, "stderr": {"hex": "FF0A"}}))
        self.assert_passes(1)

    def test_an_expected_stop_passes(self):
        self.write({**STOP, "expect": {"stdout": "", "stderr": "", "stopped": True}})
        self.assert_passes(1)


class Differences(ComparisonTest):
    def test_another_byte_is_shown_with_its_place(self):
        self.assert_differs(message("abc", {**OBSERVED, "stderr": "abd\n"}),
                            "stderr, byte 2: expected b'd' (0x64), observed b'c' (0x63)",
                            r"    expected b'abd\n'", r"    observed b'abc\n'")

    def test_only_the_surroundings_of_a_long_text_are_shown(self):
        before, after = "1" * 100, "2" * 100
        self.assert_differs(message(before + "b" + after, {"stderr": before + "a" + after + "\n"}),
                            "stderr, byte 100: expected b'a' (0x61), observed b'b' (0x62)",
                            f"    expected ... b'{before[:24]}a{after[:23]}'",
                            f"    observed ... b'{before[:24]}b{after[:23]}'")

    def test_a_space_at_the_end_is_a_difference(self):
        self.assert_differs(message("x ", {"stderr": "x\n"}),
                            r"stderr, byte 1: expected b'\n' (0x0a), observed b' ' (0x20)",
                            r"    expected b'x\n'", r"    observed b'x \n'")

    def test_a_text_that_ends_early_is_a_difference(self):
        self.assert_differs(message("x", {"stderr": "x\n\n"}),
                            r"stderr, byte 2: expected b'\n' (0x0a), observed the end",
                            r"    expected b'x\n\n'", r"    observed b'x\n'")

    def test_a_text_that_goes_on_is_a_difference(self):
        self.assert_differs(message("x", {"stderr": ""}),
                            "stderr, byte 0: expected the end, observed b'x' (0x78)",
                            "    expected b''", r"    observed b'x\n'")

    def test_another_canonical_form_is_a_difference(self):
        self.assert_differs(message("é", {"stderr": "e\u0301\n"}),
                            r"stderr, byte 0: expected b'e' (0x65), observed b'\xc3' (0xc3)",
                            r"    expected b'e\xcc\x81\n'", r"    observed b'\xc3\xa9\n'")

    def test_one_is_not_true(self):
        self.assert_differs(message("x", {"stopped": 0}),
                            "stopped, byte 0: expected b'0' (0x30), observed b'f' (0x66)",
                            "    expected b'0'", "    observed b'false'")

    def test_null_is_not_the_text_null(self):
        case = {"call": "removeFirstLine", "text": "\nnull", "expect": {"value": None}}
        self.assert_differs(case, "value, byte 4: expected the end, observed the end",
                            "    expected b'null'", "    observed b'null'")

    def test_a_missing_key_is_a_difference(self):
        self.assert_differs(message("x", {"value": 7}), "value: expected 7, but it is missing")

    def test_an_unexpected_stop_is_a_difference_whatever_is_judged(self):
        self.assert_differs({**STOP, "expect": {"stdout": ""}},
                            "stopped, byte 0: expected b'f' (0x66), observed b't' (0x74)",
                            "    expected b'false'", "    observed b'true'")

    def test_a_stop_that_does_not_come_is_a_difference(self):
        self.assert_differs(message("x", {"stopped": True}),
                            "stopped, byte 0: expected b't' (0x74), observed b'f' (0x66)",
                            "    expected b'true'", "    observed b'false'")

    def test_an_error_is_a_difference_whatever_is_judged(self):
        self.assert_differs({"call": "dance", "expect": {"stdout": ""}}, 'error: no such call: "dance"')

    def test_all_differing_keys_of_a_case_are_shown(self):
        self.assert_differs(message("x", {"stdout": "y", "value": 7}),
                            "stdout, byte 0: expected b'y' (0x79), observed the end",
                            "    expected b'y'", "    observed b''", "value: expected 7, but it is missing")

    def test_no_more_than_the_first_differences_are_shown(self):
        self.write(*(message("x", {"value": number}) for number in range(5)))
        shown = "".join(f"{self.file}:{number + 1}: The message is shown.\n"
                        f"    value: expected {number}, but it is missing\n" for number in range(2))
        self.assert_says(shown + "... and 3 more\nbehaviour: 5 cases compared, 5 differ\n", "--show", "2")


class Faults(ComparisonTest):
    """Whatever is wrong with the runner or the files: never a pass."""

    def assert_fault(self, fault, **runner):
        self.assert_says(f"behaviour: 0 cases compared, 0 differ\nfault: {fault}\n", **runner)

    def setUp(self):
        super().setUp()
        self.write(message("x", OBSERVED), message("x", OBSERVED))

    def test_a_faithful_fake_runner_passes(self):
        self.assert_passes(2, runner=self.fake_runner(f"for line in lines: print(json.dumps({OBSERVED!r}))"))

    def test_a_missing_observation(self):
        self.assert_fault("1 observations of 2 cases",
                          runner=self.fake_runner(f"print(json.dumps({OBSERVED!r}))"))

    def test_an_observation_too_many(self):
        self.assert_fault("3 observations of 2 cases",
                          runner=self.fake_runner(f"print((json.dumps({OBSERVED!r}) + chr(10)) * 3, end='')"))

    def test_no_observation_at_all(self):
        self.assert_fault("0 observations of 2 cases", runner=self.fake_runner("pass"))

    def test_a_runner_that_fails(self):
        self.assert_fault("the runner ended with status 7 after 2 of 2 observations", runner=self.fake_runner(
            f"for line in lines: print(json.dumps({OBSERVED!r}))\nsys.exit(7)"))

    def test_a_runner_that_dies(self):
        dying = f"print(json.dumps({OBSERVED!r}), flush=True)\nos.kill(os.getpid(), signal.SIGKILL)"
        self.assert_fault("the runner ended with status -9 after 1 of 2 observations",
                          runner=self.fake_runner(dying))

    def test_a_runner_that_stops_within_a_line(self):
        self.assert_fault("the runner's last line has no end (status 0)", runner=self.fake_runner(
            f"print(json.dumps({OBSERVED!r})); print('{{', end='')"))

    def test_an_observation_that_is_no_json(self):
        self.assert_fault(f"{self.file}:1: the observation is no JSON: b'x'",
                          runner=self.fake_runner("for line in lines: print('x')"))

    def test_an_observation_that_is_no_object(self):
        result = self.compared(runner=self.fake_runner("for line in lines: print('[]')"))
        self.assertEqual(result.returncode, 1)
        self.assertIn("the observation is no object\n", result.stdout)

    def test_a_runner_that_is_not_there(self):
        missing = self.directory / "missing"
        self.assert_fault(f"[Errno 2] No such file or directory: '{missing}'", runner=missing)

    def test_a_file_that_is_not_there(self):
        self.file.unlink()
        self.assert_fault(f"[Errno 2] No such file or directory: '{self.file}'")

    def test_a_file_without_cases(self):
        self.write()
        self.assert_fault(f"{self.file}: holds no cases")

    def test_an_empty_line(self):
        self.file.write_text(json.dumps(message("x", OBSERVED)) + "\n\n")
        result = self.compared()
        self.assertEqual(result.returncode, 1)
        self.assertIn(f"fault: {self.file}:2: no case with an expectation: ", result.stdout)

    def test_a_case_without_an_expectation(self):
        self.write(STOP)
        self.assert_fault(f"{self.file}:1: no case with an expectation: KeyError('expect')")

    def test_an_expectation_of_nothing(self):
        self.write({**STOP, "expect": {}})
        self.assert_fault(f"{self.file}:1: expects nothing")

    def test_a_need_that_nobody_knows(self):
        self.write({**message("x", OBSERVED), "needs": "luck"})
        self.assert_fault(f"{self.file}:1: needs what is not known: 'luck'")


class Needs(ComparisonTest):
    """Cases that need a user of group 0, or one outside of it."""

    def setUp(self):
        super().setUp()
        self.write(*({**message("x", OBSERVED), "needs": needs} for needs in ("root", "user")))

    def compared_as(self, is_administrator, is_root, runner=None):
        """What the comparison says to such a user, whoever runs this test."""
        arguments = ["compare.py", str(runner or RUNNER), str(self.file)]
        with mock.patch.object(compare, "is_member_of_group_0", return_value=is_administrator), \
                mock.patch.object(os, "geteuid", return_value=0 if is_root else 1000), \
                mock.patch.object(sys, "argv", arguments), \
                contextlib.redirect_stdout(io.StringIO()) as output:
            status = compare.main()
        return status, output.getvalue()

    @unittest.skipUnless(os.geteuid() == 0, "only root can become another user")
    def test_root_compares_the_others_as_nobody(self):
        command = {"call": "parse", "arguments": ["tool", "x"], "declarations": [
            {"requiresRoot": True, "required": [{"kind": "ParameterNone", "tags": ["x"], "tagHelp": ""}],
             "optional": [], "help": "", "hidden": False}]}
        self.write({**command, "needs": "user", "expect": {"ran": None}},
                   {**command, "needs": "root", "expect": {"ran": 0}})
        runner = shutil.copy(RUNNER, self.directory)  # where everybody can start it
        self.directory.chmod(0o755)
        self.assert_passes(2, runner=runner)

    @unittest.skipUnless(os.geteuid() == 0, "only root can become another user")
    def test_root_skips_the_others_aloud_when_nobody_cannot_start_the_runner(self):
        result = self.compared(runner=shutil.copy(RUNNER, self.directory))
        self.assertEqual(result.returncode, 0)
        self.assertRegex(result.stdout, r"^\.\.\. skipped 1 cases: they need a user outside of group 0, "
                         r"who cannot start the runner: .*\nbehaviour: 1 cases compared, 0 differ\n$")

    def test_other_users_skip_the_cases_of_root_aloud(self):
        self.assertEqual(self.compared_as(is_administrator=False, is_root=False), (
            0, "... skipped 1 cases: they need a user of group 0\nbehaviour: 1 cases compared, 0 differ\n"))

    def test_a_mere_member_of_group_0_skips_the_others_aloud(self):
        self.assertEqual(self.compared_as(is_administrator=True, is_root=False), (
            0, "... skipped 1 cases: they need a user outside of group 0\n"
               "behaviour: 1 cases compared, 0 differ\n"))

    def test_nothing_compared_is_a_fault(self):
        self.write({**message("x", OBSERVED), "needs": "root"})
        self.assertEqual(self.compared_as(is_administrator=False, is_root=False), (
            1, "... skipped 1 cases: they need a user of group 0\nbehaviour: 0 cases compared, 0 differ\n"
               "fault: no case was compared\n"))


class CuratedCases(unittest.TestCase):
    def test_every_case_says_what_it_is_about_and_judges_all_output(self):
        files = sorted((HERE / "Cases").glob("*.jsonl"))
        self.assertTrue(files)
        for file in files:
            for number, line in enumerate(file.read_text().splitlines(), 1):
                with self.subTest(file=file.name, line=number):
                    case = json.loads(line)
                    self.assertRegex(case["says"], r"\S.*\.$")
                    self.assertLessEqual({"stdout", "stderr", "stopped"}, set(case["expect"]))

    def test_no_case_stands_there_twice(self):
        seen = {}
        for file in sorted((HERE / "Cases").glob("*.jsonl")):
            for number, line in enumerate(file.read_text().splitlines(), 1):
                case = json.loads(line)
                del case["says"]
                place = f"{file.name}:{number}"
                self.assertEqual(seen.setdefault(json.dumps(case, sort_keys=True), place), place)


if __name__ == "__main__":
    RUNNER = os.path.abspath(sys.argv.pop(1))
    unittest.main(verbosity=2)  # so that the reason of every skipped test is seen
