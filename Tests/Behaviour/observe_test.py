#!/usr/bin/env python3
"""What the behaviour runner promises, whatever the library does.

usage: observe_test.py RUNNER [unittest options]
"""

import json
import os
import pathlib
import resource
import signal
import subprocess
import sys
import tempfile
import time
import unittest

RUNNER = ""
TIMEOUT = 60  # seconds, for a slow machine; no test waits that long when all is well
FINE = {"call": "relay", "blocks": ["first\nx"]}
FINE_OBSERVED = {"stdout": "x\n", "stderr": "", "stopped": False}
STOP = {"call": "firstTag", "parameter": {"kind": "ParameterNone", "tags": [], "tagHelp": ""}}
STOP_OBSERVED = {"stdout": "", "stderr": "", "stopped": True}
IS_LINUX = sys.platform == "linux"


def flag(*tags):
    return {"kind": "ParameterNone", "tags": list(tags), "tagHelp": ""}


def string(value):
    return {"kind": "ParameterString", "tags": ["-s"], "parameterName": "", "tagHelp": "", "userValue": value}


def file_url(path):
    return {"kind": "ParameterFileURL", "tags": ["-f"], "type": "file", "state": "vague",
            "parameterName": "", "tagHelp": "", "userValue": path}


def declaration(required=(), optional=(), text=""):
    return {"requiresRoot": False, "required": list(required), "optional": list(optional), "help": text,
            "hidden": False}


def message(text):
    return {"call": "outputErrorMessage", "text": text}


def lengthy():
    """A case that keeps the library busy for seconds: every argument is compared with every tag."""
    tags = [f"f{number:06}" for number in range(40000)]
    return {"call": "parse", "declarations": [declaration([], [flag(tag) for tag in tags])],
            "arguments": ["tool", *tags]}


def as_lines(cases):
    lines = [case if isinstance(case, bytes) else json.dumps(case).encode() for case in cases]
    return b"".join(line + b"\n" for line in lines)


def run(given, *arguments, **options):
    return subprocess.run([RUNNER, *arguments], input=given, capture_output=True, timeout=TIMEOUT,
                          check=False, **options)


class RunnerTest(unittest.TestCase):
    maxDiff = None

    def observed(self, cases, *arguments, **options):
        result = run(as_lines(cases), *arguments, **options)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        lines = result.stdout.split(b"\n")
        self.assertEqual(lines.pop(), b"")
        return [json.loads(line) for line in lines]

    def assert_observed(self, cases, observations, *arguments, **options):
        self.assertEqual(self.observed(cases, *arguments, **options), observations)


class Lines(RunnerTest):
    def test_observations_come_in_the_order_of_the_cases(self):
        cases = [message(str(number)) if number % 3 else STOP for number in range(200)]
        self.assert_observed(cases, [{"stdout": "", "stderr": f"{number}\n", "stopped": False} if number % 3
                                     else STOP_OBSERVED for number in range(200)])

    def test_no_input_gives_no_output(self):
        self.assert_observed([], [])

    def test_the_last_line_needs_no_line_feed(self):
        result = run(as_lines([FINE, FINE]).removesuffix(b"\n"))
        self.assertEqual([json.loads(line) for line in result.stdout.splitlines()], [FINE_OBSERVED] * 2)

    def test_carriage_returns_before_line_feeds_do_not_matter(self):
        result = run(as_lines([FINE, FINE]).replace(b"\n", b"\r\n"))
        self.assertEqual([json.loads(line) for line in result.stdout.splitlines()], [FINE_OBSERVED] * 2)

    def test_a_file_gets_the_same_bytes_as_a_pipe(self):
        cases = as_lines([FINE, STOP, b"nonsense", message("x")] * 20)
        with tempfile.TemporaryFile() as given, tempfile.TemporaryFile() as output:
            given.write(cases)
            given.seek(0)
            subprocess.run([RUNNER], stdin=given, stdout=output, timeout=TIMEOUT, check=True)
            output.seek(0)
            self.assertEqual(output.read(), run(cases).stdout)

    def test_an_observation_is_written_before_the_next_case_is_read(self):
        with subprocess.Popen([RUNNER], stdin=subprocess.PIPE, stdout=subprocess.PIPE) as runner:
            for number in range(3):
                runner.stdin.write(as_lines([message(str(number))]))
                runner.stdin.flush()
                self.assertEqual(json.loads(runner.stdout.readline())["stderr"], f"{number}\n")
            runner.stdin.close()
            self.assertEqual(runner.wait(TIMEOUT), 0)

    def test_a_line_of_megabytes_is_a_line(self):
        text = "x" * 5_000_000
        self.assert_observed([message(text), FINE],
                             [{"stdout": "", "stderr": text + "\n", "stopped": False}, FINE_OBSERVED])


class NoCases(RunnerTest):
    LINES = [
        b"", b" ", b"nonsense", b"{", b"[]", b"null", b"7", b'"displayHelp"', b"{}", b'{"call": 7}',
        b'{"call": "dance"}', b'{"call": "displayHelp"}', b'{"call": "displayHelp", "declarations": {}}',
        b'{"call": "displayHelp", "declarations": [{}]}', b'{"call": "displayHelp", "declarations": []} x',
        b'{"call": "outputErrorMessage", "text": 7}', b'{"call": "outputErrorMessage", "text": null}',
        b'{"call": "outputErrorMessage", "text": {"hex": "f"}}',
        b'{"call": "outputErrorMessage", "text": {"hex": "fg"}}',
        b'{"call": "outputErrorMessage", "text": {"hex": 61}}', b'{"call": "outputErrorMessage", "text": {}}',
        b'{"call": "outputErrorMessage", "text": "\xff"}',
        b'{"call": "outputErrorMessage", "text": "\\ud800"}',
        b'{"call": "relay", "blocks": "x"}', b'{"call": "rawValue", "type": "existence", "text": "x"}',
        as_lines([{"call": "getValue", "parameter": string("x")}]).strip(),
        as_lines([{"call": "getValue", "parameter": {**file_url("x"), "type": "link"}}]).strip(),
        as_lines([{"call": "getValue", "parameter": {**file_url("x"), "state": 1}}]).strip(),
        as_lines([{"call": "firstTag", "parameter": {**flag("x"), "kind": "ParameterFlag"}}]).strip(),
        as_lines([{"call": "firstTag", "parameter": {"kind": "ParameterNone", "tags": ["x"]}}]).strip(),
        as_lines([{"call": "flagEqual", "left": flag("x"), "right": string("x")}]).strip(),
        as_lines([{"call": "parse", "declarations": [], "arguments": [], "fetch": "hasty"}]).strip(),
        as_lines([{"call": "displayHelp", "declarations": [{**declaration(), "hidden": 0}]}]).strip(),
        *(as_lines([{"call": "getValue", "parameter": {
            "kind": "ParameterNumber", "tags": ["n"], "parameterName": "", "min": bound, "max": 1,
            "tagHelp": ""}}]).strip() for bound in (0.5, 1e3, "1", True, None, 2**63, -2**63 - 1)),
    ]

    def test_a_line_that_is_no_case_gives_an_error_and_the_next_case_is_observed(self):
        observations = self.observed([line for no_case in self.LINES for line in (no_case, FINE)])
        self.assertEqual(len(observations), 2 * len(self.LINES))
        for no_case, error, following in zip(self.LINES, observations[::2], observations[1::2]):
            with self.subTest(no_case):
                self.assertEqual(list(error), ["error"])
                self.assertNotEqual(error["error"], "")
                self.assertEqual(following, FINE_OBSERVED)

    def test_the_error_says_what_is_missing(self):
        self.assert_observed([{"call": "relay"}], [{"error": "no key blocks"}])

    def test_keys_that_a_call_does_not_use_are_ignored(self):
        case = {**FINE, "expect": 1, "says": [], "arguments": 7, "needs": None}
        self.assert_observed([case], [FINE_OBSERVED])


class Texts(RunnerTest):
    def test_bytes_that_are_not_utf_8_pass_both_ways(self):
        every_byte = bytes(range(256))
        self.assert_observed([message({"hex": every_byte.hex()})],
                             [{"stdout": "", "stderr": {"hex": every_byte.hex() + "0a"}, "stopped": False}])

    def test_hexadecimal_of_utf_8_comes_back_as_text(self):
        self.assert_observed([message({"hex": "C3a9"})], [{"stdout": "", "stderr": "é\n", "stopped": False}])

    def test_tags_values_and_results_may_be_no_utf_8(self):
        tag, value = {"hex": "2dff"}, {"hex": "fe"}
        parameter = {"kind": "ParameterString", "tags": [tag], "parameterName": "", "tagHelp": ""}
        [observation] = self.observed([{"call": "parse", "declarations": [declaration([parameter])],
                                        "arguments": ["tool", tag, value]}])
        self.assertEqual(observation["parameters"],
                         [{"kind": "ParameterString", "tags": [tag], "userValue": value}])
        self.assertEqual(observation["fetched"], [{"has": True, "value": value}])

    def test_every_output_is_valid_utf_8_and_json(self):
        output = run(as_lines([b"\xff", message("\x00\x7f\u0080\ud7ff\ue000\U0010ffff")])).stdout
        self.assertEqual(json.loads(output.decode().split("\n")[1])["stderr"],
                         "\x00\x7f\u0080\ud7ff\ue000\U0010ffff\n")


class Children(RunnerTest):
    def test_a_stop_leaves_out_the_keys_of_the_call(self):
        halfway = {"call": "parse", "declarations": [declaration([flag("a")], [string("")])],
                   "arguments": ["tool", "a"], "fetch": "stopping"}
        self.assert_observed([STOP, halfway, FINE], [STOP_OBSERVED, STOP_OBSERVED, FINE_OBSERVED])

    def test_what_was_printed_before_a_stop_is_observed(self):
        seen, = self.observed([{"call": "displayHelp", "declarations": [declaration([flag("a"), flag()])]}])
        self.assertTrue(seen["stopped"] and seen["stdout"].endswith("a "), seen)

    def test_megabytes_of_output_arrive_whole(self):
        text = "0123456789" * 1_000_000
        self.assert_observed([{"call": "relay", "blocks": ["first\n" + text]}],
                             [{"stdout": text + "\n", "stderr": "", "stopped": False}])

    def test_megabytes_before_a_stop_arrive_whole(self):
        text = "0123456789" * 200_000
        seen, = self.observed([{"call": "displayHelp",
                                "declarations": [declaration([flag("a")], text=text), declaration([flag()])]}])
        self.assertEqual((seen["stdout"].count(text), seen["stopped"]), (1, True))

    def test_megabytes_of_report_arrive_whole(self):
        text = "x" * 3_000_000
        self.assert_observed([{"call": "removeFirstLine", "text": "\n" + text}],
                             [{"value": text, "stdout": "", "stderr": "", "stopped": False}])

    def test_the_runner_keeps_its_current_directory(self):
        with tempfile.TemporaryDirectory() as directory:
            directory = os.path.realpath(directory)
            [observation] = self.observed([{"call": "getValue", "parameter": file_url("x")}],
                                          cwd=directory)
            self.assertEqual(observation["value"], pathlib.Path(directory, "x").as_uri())

    def test_a_stop_leaves_no_core_file(self):
        pattern = pathlib.Path("/proc/sys/kernel/core_pattern")
        if IS_LINUX and pattern.read_text()[0] in "/|":
            self.skipTest("this system puts core files elsewhere: " + pattern.read_text().strip())
        hard = resource.getrlimit(resource.RLIMIT_CORE)[1]
        if hard == 0:
            self.skipTest("core files are forbidden here anyway")

        def allow_core_files():
            resource.setrlimit(resource.RLIMIT_CORE, (hard, hard))

        with tempfile.TemporaryDirectory() as directory:
            own = subprocess.run([sys.executable, "-c", "import os; os.abort()"], cwd=directory, check=False,
                                 preexec_fn=allow_core_files)
            self.assertEqual(own.returncode, -signal.SIGABRT)
            if not os.listdir(directory):
                self.skipTest("no process leaves a core file here")
            for core in os.listdir(directory):
                os.remove(os.path.join(directory, core))
            self.assert_observed([STOP], [STOP_OBSERVED], cwd=directory, preexec_fn=allow_core_files)
            self.assertEqual(os.listdir(directory), [])


class Surroundings(RunnerTest):
    def test_children_whose_ends_are_ignored_are_observed_all_the_same(self):
        def ignore_children():
            signal.signal(signal.SIGCHLD, signal.SIG_IGN)

        self.assert_observed([STOP, FINE], [STOP_OBSERVED, FINE_OBSERVED], preexec_fn=ignore_children)

    def test_standard_error_may_be_closed(self):
        cases = [message("m"), STOP, message("n")]
        result = subprocess.run([RUNNER], input=as_lines(cases), stdout=subprocess.PIPE, timeout=TIMEOUT,
                                check=False, preexec_fn=lambda: os.close(2))
        observations = [json.loads(line) for line in result.stdout.splitlines()]
        self.assertEqual([each["stderr"] for each in observations], ["m\n", "", "n\n"])
        self.assertEqual([each["stopped"] for each in observations], [False, True, False])

    def test_standard_input_must_be_open(self):
        result = subprocess.run([RUNNER], capture_output=True, timeout=TIMEOUT, check=False,
                                preexec_fn=lambda: os.close(0))
        self.assertEqual((result.returncode, result.stdout, result.stderr),
                         (1, b"", b"optrella-observe: read: Bad file descriptor\n"))

    def test_standard_output_must_be_open(self):
        result = subprocess.run([RUNNER], input=as_lines([FINE]), stderr=subprocess.PIPE, timeout=TIMEOUT,
                                check=False, preexec_fn=lambda: os.close(1))
        self.assertEqual((result.returncode, result.stderr),
                         (1, b"optrella-observe: write: Bad file descriptor\n"))


class Kinds(RunnerTest):
    def kinds(self):
        result = run(b"", "--kinds")
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        kinds = result.stdout.decode().splitlines()
        self.assertIn("ParameterFileURL", kinds)
        return kinds

    def test_each_kind_that_is_named_is_known(self):
        kinds = self.kinds()
        self.assert_observed([{"call": "firstTag", "parameter": {"kind": kind}} for kind in kinds],
                             [{"error": "no key tags"}] * len(kinds))

    def test_each_kind_has_a_row_in_the_readme(self):
        page = (pathlib.Path(__file__).resolve().parents[2] / "README.md").read_text()
        for kind in self.kinds():
            self.assertIn(f"\n| `{kind}` | ", page)


class TimeLimit(RunnerTest):
    def test_a_case_that_takes_too_long_gives_timeout_and_the_next_one_is_observed(self):
        begin = time.monotonic()
        self.assert_observed([FINE, lengthy(), FINE], [FINE_OBSERVED, {"error": "timeout"}, FINE_OBSERVED],
                             "--time-limit", "0.5")
        self.assertGreater(time.monotonic() - begin, 0.5)

    def test_what_is_no_limit_is_refused(self):
        limits = [["--time-limit", limit] for limit in ("0", "-1", "x", "1s", "nan", "inf", "")]
        for arguments in (*limits, ["--time-limit"], ["--time-limit", "1", "x"], ["cases.jsonl"]):
            with self.subTest(arguments):
                result = run(as_lines([FINE]), *arguments)
                self.assertEqual((result.returncode, result.stdout, result.stderr), (
                    64, b"", b"usage: optrella-observe [--time-limit SECONDS] < cases.jsonl\n"
                    b"       optrella-observe --kinds\n"))


def children_of(process):
    """The processes whose parent it is, those that ended and were not reaped among them."""
    children = []
    for stat in pathlib.Path("/proc").glob("[0-9]*/stat"):
        try:
            fields = stat.read_text().rpartition(")")[2].split()
        except (FileNotFoundError, ProcessLookupError):
            continue
        if int(fields[1]) == process:
            children.append(int(stat.parent.name))
    return children


@unittest.skipUnless(IS_LINUX, "finding a child process needs /proc")
class ChildrenUnderSignals(RunnerTest):
    """A child that is still at its case is sent a signal from outside."""

    def setUp(self):
        self.runner = subprocess.Popen([RUNNER], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                       stderr=subprocess.DEVNULL)
        self.addCleanup(self.end)
        self.runner.stdin.write(as_lines([lengthy()]))
        self.runner.stdin.flush()
        self.child = self.only_child()

    def end(self):
        for child in children_of(self.runner.pid):
            os.kill(child, signal.SIGKILL)
        self.runner.kill()
        self.runner.communicate()

    def only_child(self):
        deadline = time.monotonic() + TIMEOUT
        while time.monotonic() < deadline:
            children = children_of(self.runner.pid)
            if children:
                return children[0]
        raise self.failureException("the runner has started no child")

    def answer(self):
        return json.loads(self.runner.stdout.readline())

    def assert_goes_on(self):
        self.assertEqual(children_of(self.runner.pid), [])
        self.runner.stdin.write(as_lines([FINE]))
        self.runner.stdin.flush()
        self.assertEqual(self.answer(), FINE_OBSERVED)

    def test_a_child_that_hangs_is_ended_after_ten_seconds(self):
        begin = time.monotonic()
        os.kill(self.child, signal.SIGSTOP)
        self.assertEqual(self.answer(), {"error": "timeout"})
        self.assertGreater(time.monotonic() - begin, 9)
        self.assertLess(time.monotonic() - begin, 20)
        self.assert_goes_on()

    def test_a_crash_is_an_error_and_no_stop(self):
        os.kill(self.child, signal.SIGKILL)
        self.assertEqual(self.answer(), {"error": f"ended by signal {int(signal.SIGKILL)}"})
        self.assert_goes_on()

    def test_an_abort_is_an_error_and_no_stop(self):
        os.kill(self.child, signal.SIGABRT)
        self.assertEqual(self.answer(), {"error": f"ended by signal {int(signal.SIGABRT)}"})
        self.assert_goes_on()

    def test_a_trap_is_a_stop(self):
        os.kill(self.child, signal.SIGTRAP)
        self.assertEqual(self.answer(), STOP_OBSERVED)
        self.assert_goes_on()


class Rate(RunnerTest):
    CASES = 1000
    PER_MINUTE = 5000

    def measured(self, given):
        """Cases a minute of a core's own time: other work on the machine takes none of it."""
        def core_seconds():
            used = resource.getrusage(resource.RUSAGE_CHILDREN)
            return used.ru_utime + used.ru_stime
        before = core_seconds()
        result = run(given)
        seconds = core_seconds() - before
        self.assertEqual(result.stdout.count(b"\n"), self.CASES)
        print(f"rate: {self.CASES * 60 / seconds:.0f} cases a minute")
        return self.CASES * 60 / seconds

    def test_one_core_observes_5000_cases_a_minute(self):
        parse = {"call": "parse", "declarations": [declaration([flag("list")], [string("")])],
                 "arguments": ["tool", "list", "-s", "x"]}
        cases = [FINE, STOP, parse, {"call": "parse", "declarations": [], "arguments": ["tool", "x"]}]
        given = as_lines(cases * (self.CASES // len(cases)))
        self.assertGreater(self.measured(given), self.PER_MINUTE)


if __name__ == "__main__":
    RUNNER = os.path.abspath(sys.argv.pop(1))
    unittest.main(verbosity=2)  # so that the reason of every skipped test is seen
