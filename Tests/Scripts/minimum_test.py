#!/usr/bin/env python3
"""The oldest macOS is the same one wherever it is named."""

import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
NAMES = {"11": "big_sur", "12": "monterey", "13": "ventura", "14": "sonoma", "15": "sequoia"}


def found(file, pattern):
    return set(re.findall(pattern, (ROOT / file).read_text()))


class OldestMacOS(unittest.TestCase):
    def setUp(self):
        (self.oldest,) = found("CMakeLists.txt", r'CMAKE_OSX_DEPLOYMENT_TARGET (\d+)\.0 CACHE')

    def test_is_what_an_older_one_is_refused_for(self):
        self.assertEqual(found("CMakeLists.txt", r"VERSION_LESS (\d+)\)"), {self.oldest})
        self.assertEqual(found("CMakeLists.txt", r"needs macOS (\d+) or newer"), {self.oldest})

    def test_is_that_of_the_homebrew_formula(self):
        self.assertEqual(found("Packaging/Homebrew/optrella.rb", r"depends_on macos: :(\w+)"),
                         {NAMES[self.oldest]})

    def test_is_what_the_pages_say(self):
        for page in ("README.md", "docs/platforms.md"):
            self.assertEqual(found(page, r"macOS (\d+) or newer"), {self.oldest}, page)

    def test_is_what_is_compiled_for_here(self):
        self.assertEqual(found("Scripts/macos-link", r"(?m)^oldest_macos=(\d+)\.0$"), {self.oldest})
        self.assertEqual(found("Scripts/libcxx", r"-apple-macos(\d+)"), {self.oldest})


if __name__ == "__main__":
    unittest.main(verbosity=2)
