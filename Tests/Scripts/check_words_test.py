#!/usr/bin/env python3
"""The check of words passes on the project and finds what it is to find when it is planted."""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
SCRIPT = ROOT / "Scripts" / "check_words.py"
# In two pieces: this file is looked at, too.
AFTER = "be" "hind"


def check(root):
    return subprocess.run([sys.executable, SCRIPT, root], capture_output=True, text=True, check=False)


class Words(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = pathlib.Path(directory.name)
        (self.root / "Scripts").mkdir()
        shutil.copy(ROOT / "Scripts" / "words.txt", self.root / "Scripts")

    def git(self, *arguments):
        identity = {f"GIT_{who}_{what}": "a@example.invalid" for who in ("AUTHOR", "COMMITTER")
                    for what in ("NAME", "EMAIL")}
        subprocess.run(["git", "-C", self.root, *arguments], check=True, env={**os.environ, **identity},
                       stdout=subprocess.DEVNULL)

    def assert_found(self, *lines):
        result = check(self.root)
        self.assertEqual([line for line in result.stdout.splitlines() if not line.startswith("words:")],
                         list(lines))
        self.assertEqual(result.returncode, 1 if lines else 0, result.stderr)

    def test_the_project_passes(self):
        result = check(ROOT)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertRegex(result.stdout, r"(?m)^words: [1-9]\d* files and \d+ commit messages, no fault$")

    def test_a_word_is_found_in_any_form(self):
        (self.root / "page.md").write_text(
            f"good\nall {AFTER} it\n{AFTER.capitalize()} it\nIs{AFTER.capitalize()}Us {AFTER}_us\n{AFTER.upper()}\n")
        fault = f"'{AFTER}': write after"
        self.assert_found(*(f"page.md:{line}: {fault}" for line in (2, 3, 4, 4, 5)))

    def test_a_part_of_a_longer_word_is_none(self):
        (self.root / "page.md").write_text(f"{AFTER}hand, mendable, amends, blanket, flooring\n")
        self.assert_found()

    def test_a_word_is_right_where_the_list_allows_it(self):
        (self.root / "a.cpp").write_text("auto type = ParameterFileURL::urlType::" "folder;\n")
        self.assert_found()

    def test_messages_of_commits_count_from_the_script_on(self):
        self.git("init", "-q")
        self.git("commit", "-q", "--allow-empty", "-m", f"Put it {AFTER}")
        (self.root / "Scripts" / "check_words.py").write_text("")
        self.git("add", ".")
        self.git("commit", "-q", "-m", f"Add the script {AFTER} the others")
        self.assert_found()
        self.git("commit", "-q", "--allow-empty", "-m", f"Title\n\nText {AFTER} it")
        result = check(self.root)
        self.assertRegex(result.stdout, rf"^commit [0-9a-f]+:3: '{AFTER}': write after\n$")

    def test_a_copy_without_git_says_that_no_messages_count(self):
        result = check(self.root)
        self.assertTrue(result.stdout.startswith(
            "words: commit messages are left out: git does not know this script here\n"))


if __name__ == "__main__":
    unittest.main()
