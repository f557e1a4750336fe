#!/usr/bin/env python3
"""The programs shown in the documentation compile, and print what is shown behind them.

documentation_test.py FOLDER COMPILER [FLAG...]: the flags are those that compile and link a tool.

In a page, <!-- program: NAME --> stands before the source of a program, and <!-- run: NAME --> before a
session: lines that begin with "$ NAME" are run, and what follows is all that they print.
"""

import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import unittest

BLOCK = re.compile(r"^<!-- (program|run): (\w+) -->\n```\w+\n(.*?)^```$", re.MULTILINE | re.DOTALL)

folder = pathlib.Path(sys.argv[1])
compiler = sys.argv[2:]


def pages():
    return sorted([folder / "README.md", *(folder / "docs").glob("*.md")])


def steps(session):
    """The command lines of a session, each with the output shown."""
    for step in re.split(r"^\$ ", session, flags=re.MULTILINE)[1:]:
        command, output = step.split("\n", 1)
        yield command, output


class Documentation(unittest.TestCase):
    def setUp(self):
        work = tempfile.TemporaryDirectory()
        self.addCleanup(work.cleanup)
        self.work = pathlib.Path(work.name)

    def compile(self, name, source):
        file = self.work / f"{name}.cpp"
        file.write_text(source)
        result = subprocess.run(
            [compiler[0], "-std=c++20", file, "-o", self.work / name, *compiler[1:]],
            capture_output=True, text=True, check=False)
        self.assertEqual(result.returncode, 0, result.stderr)

    def run_session(self, session):
        count = 0
        for command, expected in steps(session):
            words = shlex.split(command)
            result = subprocess.run([self.work / words[0], *words[1:]], capture_output=True,
                                    text=True, check=False)
            self.assertEqual(result.stdout + result.stderr, expected, command)
            count += 1
        self.assertGreater(count, 0, "a session without a command")

    def test_programs_print_what_is_shown(self):
        for page in pages():
            with self.subTest(page=page.name):
                for what, name, text in BLOCK.findall(page.read_text()):
                    if what == "program":
                        self.compile(name, text)
                    else:
                        self.run_session(text)

    def test_the_first_page_shows_a_program_and_a_session(self):
        kinds = [what for what, _, _ in BLOCK.findall((folder / "README.md").read_text())]
        self.assertEqual(kinds, ["program", "run"])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
