"""The reader of passwords while system calls fail: FaultTests.py FaultProbe"""

import errno
import os
import sys
import unittest

from pseudoterminal import Program, PROMPT, Terminal

PROBE = ""
PASSWORD = b"Kq7#vR2!mX9@zB4$"
INTERRUPTIBLE = ["open", "tcsetattr", "select", "read", "write"]
EVER = 1000000
CLEAN = ["0", "0", "nowhere"]  # descriptors left open, handlers changed, where the password is


class Outcome:
    """A reading with these faults: what the user saw, the result, and what was left."""

    def __init__(self, *faults):
        terminal = Terminal()
        settings = terminal.settings()
        program = Program(terminal, [PROBE], *map(str, faults))
        try:
            if program.prompts():
                terminal.type(PASSWORD + b"\n")
            self.status = program.finish()
            self.shown = terminal.take_shown()
            self.is_restored = terminal.settings() == settings
            self.printed = program.output
            self.errors = program.errors
        finally:
            program.close()
            terminal.close()
        self.result = program.lines[0]
        self.left = program.lines[1:4]
        self.calls = {name: int(count) for name, count in map(str.split, program.lines[4:])}


class FaultTest(unittest.TestCase):
    def check(self, outcome, result, left=CLEAN, is_restored=True):
        self.assertEqual((outcome.status, outcome.printed, outcome.errors), (0, b"", b""))
        self.assertEqual(outcome.result, result)
        self.assertEqual(outcome.left, left)
        self.assertEqual(outcome.is_restored, is_restored)

    @classmethod
    def setUpClass(cls):
        cls.calls = Outcome().calls

    def every_call(self, names=None):
        for name in names or self.calls:
            for number in range(1, self.calls[name] + 1):
                yield name, number


class Probe(FaultTest):
    def test_finds_the_password_where_it_is_kept(self):
        self.check(Outcome("keep"), "right", left=["0", "0", "in memory"])

    def test_sees_each_call(self):
        for name, count in self.calls.items():
            self.assertGreater(count, 0, name)


class NoFault(FaultTest):
    def test_leaves_nothing(self):
        outcome = Outcome()
        self.check(outcome, "right")
        self.assertEqual(outcome.shown, PROMPT + b"\r\n")


class Interruption(FaultTest):
    def test_of_any_call_is_no_fault(self):
        for name, number in self.every_call(INTERRUPTIBLE):
            with self.subTest(name=name, number=number):
                outcome = Outcome(name, number, number, errno.EINTR)
                self.check(outcome, "right")
                self.assertEqual(outcome.shown, PROMPT + b"\r\n")

    def test_many_times_is_no_fault(self):
        for name in INTERRUPTIBLE:
            with self.subTest(name=name):
                self.check(Outcome(name, 1, 1000, errno.EINTR), "right")


class Failure(FaultTest):
    """Except that what a call puts back stays as it is when that call fails for ever."""

    def puts_handler_back(self, name, number):
        replaced = 8  # of nine signals, one is ignored
        return name == "sigaction" and number > self.calls[name] - replaced

    def test_of_any_call_is_nothing_once(self):
        for name, number in self.every_call():
            if self.puts_handler_back(name, number):
                continue
            with self.subTest(name=name, number=number):
                self.check(Outcome(name, number, number, errno.EIO), "none")

    def test_of_any_call_is_nothing_for_ever(self):
        for name, number in self.every_call():
            if (name, number) == ("tcsetattr", 2) or name == "sigaction" and number > 2:
                continue
            with self.subTest(name=name, number=number):
                self.check(Outcome(name, number, EVER, errno.EIO), "none")

    def test_to_put_the_settings_back_is_nothing(self):
        # The terminal cannot be restored then.
        self.check(Outcome("tcsetattr", 2, EVER, errno.EIO), "none", is_restored=False)

    def test_before_the_prompt_shows_nothing(self):
        for name in ("open", "pipe", "fcntl", "tcgetattr", "tcsetattr"):
            with self.subTest(name=name):
                self.assertEqual(Outcome(name, 1, EVER, errno.EIO).shown, b"")

    def test_to_turn_the_echo_off_is_seen(self):
        outcome = Outcome("tcsetattr", 1, 1, "lie")
        self.check(outcome, "none")
        self.assertEqual(outcome.shown, b"")

    def test_to_write_everything_at_once_is_none(self):
        outcome = Outcome("write", 1, EVER, "short")
        self.check(outcome, "right")
        self.assertEqual(outcome.shown, PROMPT + b"\r\n")


def main():
    global PROBE
    PROBE = os.path.abspath(sys.argv[1])
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]], failfast="GTEST_FAIL_FAST" in os.environ)


if __name__ == "__main__":
    main()
