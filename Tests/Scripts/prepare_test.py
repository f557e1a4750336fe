#!/usr/bin/env python3
"""What Scripts/prepare asks of Homebrew on macOS, on commands that only record how they are called."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent


class PrepareOnMacOS(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = pathlib.Path(directory.name)
        self.calls = self.directory / "calls"
        for name in ("bash", "env", "dirname", "awk", "cat"):
            os.symlink(f"/usr/bin/{name}", self.directory / name)
        self.command("uname", "echo Darwin")
        self.command("xcode-select", "exit 0")

    def command(self, name, script):
        file = self.directory / name
        file.write_text(f"#!/bin/bash\n{script}\n")
        file.chmod(0o755)

    def homebrew(self, *installed):
        names = " ".join(installed)
        self.command("brew", f'echo "$*" >>"{self.calls}"\n'
                     f'if [[ $1 == list ]]; then [[ " {names} " == *" $4 "* ]]; fi')

    def prepare(self, wanted):
        return subprocess.run(["/bin/bash", ROOT / "Scripts" / "prepare", wanted], text=True,
                              env={"PATH": str(self.directory)}, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, check=False)

    def installed(self):
        return [line for line in self.calls.read_text().splitlines() if line.startswith("install")]

    def test_missing_formulae_are_named_and_installed_at_once(self):
        self.homebrew("cmake")
        result = self.prepare("check")
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertEqual(self.installed(),
                         ["install --quiet utf8proc googletest nlohmann-json python"])
        self.assertIn("missing: googletest           unit tests\n", result.stdout)
        self.assertTrue(result.stdout.endswith(
            "+ brew install utf8proc googletest nlohmann-json python\n"), result.stdout)

    def test_nothing_is_said_or_installed_where_nothing_is_missing(self):
        self.homebrew("cmake", "utf8proc")
        result = self.prepare("build")
        self.assertEqual((result.returncode, result.stdout), (0, ""))
        self.assertEqual(self.installed(), [])

    def test_a_missing_homebrew_is_said(self):
        result = self.prepare("build")
        self.assertEqual(result.returncode, 1)
        self.assertTrue(result.stdout.startswith("There is no Homebrew (https://brew.sh)"), result.stdout)
        self.assertIn("utf8proc ", result.stdout)

    def test_a_missing_compiler_is_said(self):
        self.homebrew()
        self.command("xcode-select", "exit 2")
        result = self.prepare("build")
        self.assertEqual(result.returncode, 1)
        self.assertIn("xcode-select --install", result.stdout)


class PrepareUsage(unittest.TestCase):
    def test_another_set_is_refused(self):
        result = subprocess.run([ROOT / "Scripts" / "prepare", "everything"], capture_output=True,
                                text=True, check=False)
        self.assertEqual((result.returncode, result.stdout), (64, ""))
        self.assertEqual(result.stderr, "usage: prepare build | check | all | bench\n")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
