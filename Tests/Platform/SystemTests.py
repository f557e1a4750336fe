#!/usr/bin/env python3
"""What the system's own files of the library define is what Platform/System.hpp asks of a system, no
more and no less, and another system is refused: SystemTests.py ARCHIVE SYSTEM CMAKE
"""

import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PLATFORM = ROOT / "Sources" / "Optrella" / "Platform"
SYMBOL = re.compile(r"^[0-9a-f]+ T (?:Optrella::Platform::)(\w+)(?:\[abi:\w+\])?\(")


def asked_for():
    """The functions that System.hpp names, by the header that has their contract."""
    header, functions = "", set()
    for line in (PLATFORM / "System.hpp").read_text().splitlines():
        if heading := re.fullmatch(r"// (\w+)", line):
            header = heading[1]
        elif function := re.fullmatch(r"using Platform::(\w+);", line):
            functions.add((header, function[1]))
    return functions


def defined(archive, system):
    """The functions of the namespace that the system's own files define, by the file's name. The files
    of an archive stand there by their names alone: those of Posix/ come first, in the build's order."""
    listed = subprocess.run(["nm", "--demangle", archive], check=True, capture_output=True,
                            text=True).stdout
    functions, members = set(), []
    for line in listed.splitlines():
        if member := re.fullmatch(r"(\w+)\.cpp\.o(?:bj)?:", line):
            members.append(member[1])
        elif symbol := SYMBOL.match(line):
            functions.add((members[-1], members.count(members[-1]), symbol[1]))
    both = {file.stem for file in (PLATFORM / "Posix").glob("*.cpp")}
    own = {file.stem for file in (PLATFORM / system).glob("*.cpp")}
    return {(name, function) for name, number, function in functions
            if name in own and number == (2 if name in both else 1)}


class System(unittest.TestCase):
    def test_its_files_define_what_is_asked_for_and_nothing_else(self):
        self.assertTrue(asked_for())
        self.assertEqual(defined(*ARGUMENTS), asked_for())

    def test_each_function_has_its_contract_in_the_header_that_is_named(self):
        for header, function in asked_for():
            with self.subTest(function):
                text = (PLATFORM / f"{header}.hpp").read_text()
                self.assertRegex(text, rf"\n(?:\[\[nodiscard\]\] )?[\w:<>*&\[\] ]+[ *]{function}\(")


class AnotherSystem(unittest.TestCase):
    def test_it_is_refused_when_the_tests_are_configured(self):
        with tempfile.TemporaryDirectory() as build:
            result = subprocess.run(
                [CMAKE, "-S", ROOT, "-B", build, "-DCMAKE_SYSTEM_NAME=Plan9",
                 "-DOPTRELLA_BUILD_TESTS=ON"], capture_output=True, text=True, check=False)
        self.assertEqual(result.returncode, 1)
        self.assertIn("Optrella: no Platform/ directory for Plan9", result.stderr)


if __name__ == "__main__":
    *ARGUMENTS, CMAKE = sys.argv[1:4]
    unittest.main(argv=sys.argv[:1], verbosity=2)
