#!/usr/bin/env python3
"""What Scripts/accept shows, writes and refuses: accept_test.py"""

import contextlib
import importlib.machinery
import importlib.util
import io
import json
import pathlib
import sys
import tempfile
import unittest
from unittest import mock

SCRIPT = pathlib.Path(__file__).resolve().parent.parent.parent / "Scripts" / "accept"
loader = importlib.machinery.SourceFileLoader("accept", str(SCRIPT))
accept = importlib.util.module_from_spec(importlib.util.spec_from_loader("accept", loader))
loader.exec_module(accept)

EXPECT = {"stdout": "a\n", "stderr": "", "stopped": False}


class AcceptTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = pathlib.Path(directory.name)

    def executable(self, name, text):
        program = self.directory / name
        program.write_text(text)
        program.chmod(0o755)
        return program

    def accepted(self, act, *arguments, write=True):
        """The status, and what is said."""
        acceptance = accept.Acceptance(write)
        with contextlib.redirect_stdout(io.StringIO()) as said:
            act(acceptance, *arguments)
            status = acceptance.report()
        return status, said.getvalue()


class Cases(AcceptTest):
    """The runner is one that observes what the case says under "seen"."""

    def setUp(self):
        super().setUp()
        self.file = self.directory / "cases.jsonl"
        self.runner = self.executable("runner", f"#!{sys.executable}\nimport json, sys\n"
                                      "for line in sys.stdin: print(json.dumps(json.loads(line)['seen']))\n")
        patched = mock.patch.object(accept.compare, "DIRECTORY", self.directory)
        patched.start()
        self.addCleanup(patched.stop)

    def write(self, *lines):
        self.file.write_text("".join(line + "\n" for line in lines))
        return self.file.read_text()

    def case(self, seen, expect=None, **more):
        return json.dumps({"says": "It is so.", "call": "any", "expect": expect or EXPECT, "seen": seen,
                           **more})

    def accept(self, **options):
        return self.accepted(accept.accept_cases, str(self.runner), [self.file], **options)

    def assert_refused(self, line, reason):
        before = self.write(line)
        status, said = self.accept()
        self.assertEqual((status, self.file.read_text()), (1, before))
        self.assertIn(f"REFUSED: {self.file}:1: It is so.: {reason}\n", said)
        self.assertIn("accept: 1 differences, 1 refused, 0 written\n", said)

    def test_what_is_as_expected_is_left_and_not_shown(self):
        before = self.write(self.case(EXPECT))
        self.assertEqual(self.accept(), (0, "accept: 0 differences, 0 refused, 0 written\n"))
        self.assertEqual(self.file.read_text(), before)

    def test_a_difference_is_shown_and_left_without_write(self):
        before = self.write(self.case(EXPECT), self.case({**EXPECT, "stdout": "a \nb\n"}))
        place = f"{self.file}:2: It is so."
        self.assertEqual(self.accept(write=False), (1, f"--- {place}\n+++ {place} (observed)\n@@ -1 +1,2 @@\n"
                                                       '-stdout: "a\\n"\n+stdout: "a \\n"\n+stdout: "b\\n"\n'
                                                       "accept: 1 differences, 0 refused, 0 written\n"))
        self.assertEqual(self.file.read_text(), before)

    def test_an_accepted_difference_is_written_and_gone(self):
        seen = {**EXPECT, "stdout": "b\n"}
        self.write(self.case(EXPECT), self.case(seen), self.case(EXPECT))
        status, said = self.accept()
        self.assertEqual((status, said.splitlines()[-1]), (0, "accept: 1 differences, 0 refused, 1 written"))
        self.assertEqual(self.file.read_text().splitlines(),
                         [self.case(EXPECT), self.case(seen, seen), self.case(EXPECT)])
        self.assertEqual(self.accept(), (0, "accept: 0 differences, 0 refused, 0 written\n"))

    def test_a_line_keeps_its_own_form_and_the_order_of_its_keys(self):
        self.write('{"seen": {"b": [{"x": "é", "y": 2}], "a": "é"},  '
                   '"expect" :{ "b":[{"y":1,"x":"e"}], "a":""}}',
                   '{"expect":{"a":"ü","b":1},"seen":{"b":2,"a":"é"}}')
        self.assertEqual(self.accept()[0], 0)
        self.assertEqual(self.file.read_text().splitlines(), [
            '{"seen": {"b": [{"x": "é", "y": 2}], "a": "é"},  "expect" :'
            '{ "b":[{"y": 2, "x": "\\u00e9"}], "a":"\\u00e9"}}',
            '{"expect":{"a":"é","b":2},"seen":{"b":2,"a":"é"}}'])

    def test_only_the_keys_that_are_expected_are_written(self):
        self.write(self.case({**EXPECT, "value": 2, "more": 3}, {"value": 1}))
        self.assertEqual(self.accept()[0], 0)
        self.assertEqual(json.loads(self.file.read_text())["expect"], {"value": 2})

    def test_a_text_that_is_not_utf_8_is_written_in_hexadecimal(self):
        self.write(self.case({**EXPECT, "stdout": {"hex": "ff"}}))
        self.assertEqual(self.accept()[0], 0)
        self.assertEqual(json.loads(self.file.read_text())["expect"]["stdout"], {"hex": "ff"})

    def test_a_crash_and_a_time_limit_are_refused(self):
        for error in ("crashed", "timeout"):
            self.assert_refused(self.case({"error": error}), f"error: {error}")

    def test_a_stop_that_was_not_expected_is_refused(self):
        self.assert_refused(self.case({**EXPECT, "stopped": True}), "the process was stopped")

    def test_an_expected_stop_may_have_printed_something_else(self):
        stopped = {**EXPECT, "stopped": True}
        self.write(self.case({**stopped, "stdout": ""}, stopped))
        self.assertEqual(self.accept()[0], 0)
        self.assertEqual(json.loads(self.file.read_text())["expect"], {**stopped, "stdout": ""})

    def test_a_key_that_is_missing_is_refused(self):
        self.assert_refused(self.case(EXPECT, {"stdout": "", "value": 1}), "value is missing")

    def test_a_case_that_needs_another_user_is_left(self):
        line = self.case({**EXPECT, "stdout": "b\n"}, needs="root")
        before = self.write(self.case(EXPECT), line)
        with mock.patch.object(accept.compare, "is_member_of_group_0", return_value=False):
            self.assertEqual(self.accept(), (0, "... skipped 1 cases: they need a user of group 0\n"
                                                "accept: 0 differences, 0 refused, 0 written\n"))
        self.assertEqual(self.file.read_text(), before)


class Pages(AcceptTest):
    """The program of the pages is a script that prints a file beside it."""

    def setUp(self):
        super().setUp()
        (self.directory / "programs").mkdir()
        self.executable("programs/tool", "#!/bin/sh\n" f"cat {self.directory}/printed\n")
        (self.directory / "printed").write_text("a\n")

    def page(self, text, name="README.md"):
        page = self.directory / name
        page.parent.mkdir(parents=True, exist_ok=True)
        page.write_text(text)
        return page

    def accept(self, **options):
        return self.accepted(accept.accept_pages, self.directory, self.directory / "programs",
                             accept.pages.Compiler(["false"]), **options)

    def session(self, *steps):
        return "# Page\n\n<!-- run: tool -->\n```console\n" + "".join(steps) + "```\n\nMore.\n"

    def test_a_session_is_shown_and_left_without_write(self):
        page = self.page(before := self.session("$ tool\n", "b\n"))
        self.assertEqual(self.accept(write=False), (1, (
            "--- README.md\n+++ README.md (observed)\n@@ -3,7 +3,7 @@\n <!-- run: tool -->\n ```console\n"
            " $ tool\n-b\n+a\n ```\n \n More.\naccept: 1 differences, 0 refused, 0 written\n")))
        self.assertEqual(page.read_text(), before)

    def test_an_accepted_session_is_written_and_gone(self):
        page = self.page(self.session("$ true\n", "$ tool\n", "$ true\n", "c\n") + self.session("$ tool\n"))
        status, said = self.accept()
        self.assertEqual((status, said.splitlines()[-1]), (0, "accept: 1 differences, 0 refused, 1 written"))
        self.assertEqual(page.read_text(), self.session("$ true\n", "$ tool\n", "a\n", "$ true\n")
                         + self.session("$ tool\n", "a\n"))
        self.assertEqual(self.accept(), (0, "accept: 0 differences, 0 refused, 0 written\n"))

    def test_a_manual_page_is_written_as_such(self):
        (self.directory / "printed").write_text("-a \n.b\n\\n\nkept \n")
        page = self.page('.\\" <!-- run: tool -->\n.Bd -literal\n$ tool\n\\-b\nkept\\& \\&\n.Ed\n.Pp\n',
                         "docs/man/optrella.7")
        self.assertEqual(self.accept()[0], 0)
        self.assertEqual(page.read_text(), '.\\" <!-- run: tool -->\n.Bd -literal\n$ tool\n'
                                           '-a \\&\n\\&.b\n\\en\nkept\\& \\&\n.Ed\n.Pp\n')
        self.assertEqual(self.accept()[0], 0)

    def assert_refused(self, text, reason):
        page = self.page(text)
        status, said = self.accept()
        self.assertEqual((status, page.read_text()), (1, text))
        self.assertIn(f"REFUSED: README.md: {reason}", said)
        self.assertIn("accept: 1 differences, 1 refused, 0 written\n", said)

    def test_a_program_that_a_signal_ends_is_refused_with_its_whole_page(self):
        died = self.session("$ sh -c 'kill -ILL $$'; exit $?\n", "b\n")
        self.assert_refused(self.session("$ tool\n") + died, "line 13: a command line ended with one of [132]")

    def test_a_program_that_is_not_there_is_refused(self):
        self.assert_refused(self.session("$ toool\n", "b\n"),
                            "line 5: a command line ended with one of [127]")

    def test_a_command_line_that_does_not_end_is_refused(self):
        with mock.patch.object(accept.pages, "TIMEOUT", 0.1):
            self.assert_refused(self.session("$ sleep 5\n", "b\n"), "sleep 5: does not end within 0.1 s")

    def test_a_step_that_fails_is_refused(self):
        self.assert_refused("<!-- do -->\n```console\n$ false\n```\n" + self.session("$ tool\n"), "false")

    def test_a_program_that_does_not_compile_is_refused(self):
        self.assert_refused("<!-- program: t -->\n```cpp\n```\n", "")


class BuildDirectory(AcceptTest):
    def test_says_what_a_test_is_started_with(self):
        (self.directory / "CTestTestfile.cmake").write_text(
            f'add_test(behaviour-tests "{sys.executable}" "compare.py" "the runner")\n')
        self.assertEqual(accept.command_of(self.directory, "behaviour-tests"), ["the runner"])

    def test_that_cannot_be_built_is_not_used(self):
        with self.assertRaisesRegex(SystemExit, "cannot be brought up to date"):
            accept.build(self.directory)


if __name__ == "__main__":
    unittest.main(verbosity=2)
