#!/usr/bin/env python3
"""What Scripts/on-a-mac makes of a Mac, on commands and scripts that only say that they were called."""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
STEPS = ["what this Mac has", "installing what is missing", "building and showing the example tools",
         "building everything and running the tests", "what the tests said in full",
         "a tool against the installed library", "a library for both processors",
         "what reaches the system's log", "what shells, man and sudo make of a tool"]
SYSTEM = {"uname": "echo Darwin", "sw_vers": "echo ProductVersion: 12.6", "sysctl": "echo Mac14,2",
          "xcode-select": "echo /Library/Developer/CommandLineTools", "xcrun": "echo 13.1",
          "clang": "echo Apple clang version 14.0.0", "brew": "echo Homebrew 4", "cmake": "echo cmake $*",
          "lipo": "echo x86_64 arm64", "mandoc": "echo mandoc $*", "man": "echo man $*",
          "zsh": "echo zsh $*; cat >/dev/null", "log": "echo '<private>' $*", "git": "echo v0"}
PARTS = {"Scripts/prepare": "echo prepare $*", "demo": "echo demo", "check": "echo check",
         "Tests/Package/installed": "echo installed", "build/demo/Examples/hosts": "echo hosts $*",
         "build/demo/Examples/sessions": '[[ $1 == --* ]] || { echo "sessions $*"; exit 64; }'}


class OnAMac(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = pathlib.Path(directory.name).resolve() / "project"
        self.commands = self.root.parent / "commands"
        for name, script in SYSTEM.items():
            self.write(self.commands / name, script)
        for name, script in PARTS.items():
            self.write(self.root / name, script)
        last = self.root / "build" / "gcc" / "Testing" / "Temporary" / "LastTest.log"
        last.parent.mkdir(parents=True)
        last.write_text("the tests' own words\n")
        shutil.copy(ROOT / "Scripts" / "on-a-mac", self.root / "Scripts")

    def write(self, file, script):
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(f"#!/bin/bash\n{script}\n")
        file.chmod(0o755)

    def run_script(self, *words, seconds="600"):
        result = subprocess.run([self.root / "Scripts" / "on-a-mac", *words], capture_output=True, text=True,
                                env={"PATH": f"{self.commands}:/usr/bin:/bin", "HOME": str(self.root.parent),
                                     "ON_A_MAC_SECONDS": seconds}, check=False)
        self.assertEqual(result.stderr if result.returncode != 64 else "", "")
        file = self.root / "build" / "on-a-mac.txt"
        self.report = file.read_text() if file.exists() else None
        return result

    def headings(self):
        return [line for line in self.report.splitlines() if line.startswith("==== ")]

    def test_every_step_is_run_in_order_and_shown_whole(self):
        result = self.run_script()
        self.assertEqual(result.returncode, 0, result.stdout)
        for number, (step, heading) in enumerate(zip(STEPS, self.headings(), strict=True), 1):
            self.assertRegex(heading, rf"^==== {number}\. {step}: good \(\d+ s\)$")
            self.assertRegex(result.stdout, rf"(?m)^{number}\. {step} \.\.\. good \(\d+ s\)$")
        for said in ("ProductVersion: 12.6\n", "Apple clang version 14.0.0\n", "prepare all\n", "demo\n", "check\n",
                     "the tests' own words\n", "installed\n", "cmake --preset universal\n", "x86_64 arm64\n",
                     "hosts frobnicate\n", "<private> show --last 1m --info --style compact --predicate"
                     ' subsystem == "com.brenvale.package.Optrella"\n',
                     "\nzsh -n\nmandoc -T lint build/sessions.1\nman PROJECT/build/sessions.1\n",
                     "\nsessions purge --older-than=0\n64\n",
                     "\nAll 9 steps were good.\n"):
            self.assertIn(said, self.report)
        self.assertTrue(result.stdout.endswith(
            f"Please send this file to the authors, whatever it says: {self.root}/build/on-a-mac.txt\n"))

    def test_a_step_that_fails_is_told_and_the_others_follow(self):
        self.write(self.root / "check", "echo 3 tests failed >&2\nexit 8")
        result = self.run_script()
        self.assertEqual(result.returncode, 1)
        self.assertRegex(self.headings()[3], r": FAILED with 8 \(\d+ s\)$")
        self.assertIn("\n3 tests failed\n", self.report)
        self.assertEqual(len(self.headings()), 9)
        self.assertIn("\n1 of 9 steps were not good.\n", self.report)

    def test_what_a_mac_does_not_have_is_told(self):
        (self.commands / "brew").unlink()
        self.assertEqual(self.run_script().returncode, 0)
        self.assertRegex(self.report, r"\$ brew --version\n.*brew: command not found\n\(status 127\)\n")

    def test_a_step_that_does_not_end_is_ended_with_what_it_has_started(self):
        self.write(self.root / "demo", "sleep 1000 & echo $! >started\necho begun\nwait")
        begin = time.monotonic()
        result = self.run_script(seconds="3")
        self.assertEqual(result.returncode, 1)
        self.assertLess(time.monotonic() - begin, 30)
        self.assertRegex(self.headings()[2], r": ENDED after \d+ seconds \(\d+ s\)$")
        self.assertIn("\nbegun\n", self.report)
        for heading in self.headings()[3:]:
            self.assertRegex(heading, r": not begun: the time is over \(0 s\)$")
        started = int((self.root / "started").read_text())
        state = pathlib.Path(f"/proc/{started}/stat")
        self.assertTrue(not state.exists() or state.read_text().rpartition(") ")[2].startswith("Z"))

    def test_where_things_are_is_not_in_the_file(self):
        self.write(self.root / "demo", 'echo "$HOME/secret" "$PWD/x"')
        self.run_script()
        self.assertIn("\nHOME/secret PROJECT/x\n", self.report)
        self.assertNotIn(str(self.root.parent), self.report)

    def test_elsewhere_it_does_nothing(self):
        self.write(self.commands / "uname", "echo Linux")
        result = self.run_script()
        self.assertEqual((result.returncode, self.report), (1, None))
        self.assertTrue(result.stdout.startswith("This is no Mac: "))

    def test_another_word_is_refused(self):
        result = self.run_script("now")
        self.assertEqual((result.returncode, result.stdout, self.report), (64, "", None))
        self.assertEqual(result.stderr, "usage: Scripts/on-a-mac\n")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
