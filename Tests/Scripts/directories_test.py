#!/usr/bin/env python3
"""What the scripts do to the directories that they are given: nothing that others have put there is
removed. The tools that build Debian packages are scripted."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PACKAGE = "optrella_0_all.deb"
SKIPPED = 77


def is_checkout():
    """Whether git knows which files the sources are: the scripts copy those."""
    return subprocess.run(["git", "-C", ROOT, "rev-parse"], check=False, capture_output=True).returncode == 0


class Deb(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = pathlib.Path(directory.name).resolve()
        self.commands = self.directory / "commands"
        self.commands.mkdir()
        self.command("dpkg-query", "echo installed")
        # As the real one, it leaves what it has built beside the sources, and a log of its own among them.
        self.command("dpkg-buildpackage", f"test -f debian/control && test -f CMakeLists.txt && "
                     f"touch built.log && echo built >../{PACKAGE}")

    def command(self, name, script):
        file = self.commands / name
        file.write_text(f"#!/bin/sh\n{script}\n")
        file.chmod(0o755)

    def deb(self, *arguments, cwd):
        return subprocess.run([ROOT / "Scripts" / "deb", *arguments], cwd=cwd, text=True, check=False,
                              env={**os.environ, "PATH": f"{self.commands}:{os.environ['PATH']}"},
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)

    def content(self, directory):
        return {file.relative_to(directory).as_posix(): file.read_text()
                for file in directory.rglob("*") if file.is_file()}

    def test_what_is_in_the_directory_stays(self):
        packages = self.directory / "packages"
        (packages / "of mine").mkdir(parents=True)
        (packages / "letter").write_text("dear\n")
        (packages / "of mine" / "letter").write_text("friend\n")
        result = self.deb(packages, cwd="/")
        self.assertEqual((result.returncode, result.stdout), (0, ""))
        self.assertEqual(self.content(packages),
                         {"letter": "dear\n", "of mine/letter": "friend\n", PACKAGE: "built\n"})

    def test_a_relative_directory_counts_from_the_callers(self):
        here = self.directory / "here"
        here.mkdir()
        for argument, place in ((".", here), ("new/packages", here / "new" / "packages")):
            with self.subTest(argument):
                result = self.deb(argument, cwd=here)
                self.assertEqual((result.returncode, result.stdout), (0, ""))
                self.assertEqual((place / PACKAGE).read_text(), "built\n")

    def test_a_failed_build_leaves_the_directory_as_it_was(self):
        self.command("dpkg-buildpackage", f"echo built >../{PACKAGE}; exit 2")
        packages = self.directory / "packages"
        self.assertEqual(self.deb(packages, cwd="/").returncode, 2)
        self.assertFalse(packages.exists())

    def test_all_missing_packages_are_named_before_anything_is_built(self):
        self.command("dpkg-query", 'test "$3" = cmake && echo installed')
        packages = self.directory / "packages"
        result = self.deb(packages, cwd="/")
        self.assertEqual((result.returncode, result.stdout), (
            1, "deb: missing packages: build-essential debhelper dpkg-dev libutf8proc-dev\n"))
        self.assertFalse(packages.exists())

    def test_anything_but_one_directory_is_refused(self):
        for arguments in (("a", "b"), ("--help",)):
            result = self.deb(*arguments, cwd=self.directory)
            self.assertEqual((result.returncode, result.stdout), (64, "usage: deb [DIRECTORY]\n"))


class Export(unittest.TestCase):
    def test_a_relative_directory_counts_from_the_callers(self):
        with tempfile.TemporaryDirectory() as directory:
            subprocess.run([ROOT / "Scripts" / "export", "copy"], cwd=directory, check=True)
            copy = pathlib.Path(directory, "copy", "CMakeLists.txt")
            self.assertEqual(copy.read_bytes(), (ROOT / "CMakeLists.txt").read_bytes())


class Mutate(unittest.TestCase):
    def test_a_scratch_directory_with_anything_else_in_it_is_refused(self):
        with tempfile.TemporaryDirectory() as directory:
            letter = pathlib.Path(directory, "letter")
            letter.write_text("dear\n")
            fault = "a fatal stop is an abort"
            result = subprocess.run([ROOT / "Scripts" / "mutate", "--scratch", directory, fault],
                                    capture_output=True, text=True, check=False)
            self.assertEqual((result.returncode, result.stdout, result.stderr), (
                2, "", f"mutate: {directory}: holds what this script has not made\n"))
            self.assertEqual(letter.read_text(), "dear\n")


if __name__ == "__main__":
    if not is_checkout():
        print("skipped: the sources are no checkout of git, which the scripts ask for the files to copy")
        sys.exit(SKIPPED)
    unittest.main(argv=sys.argv[:1], verbosity=2)
