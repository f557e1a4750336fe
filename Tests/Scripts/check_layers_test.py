#!/usr/bin/env python3
"""The layer check passes on the sources and catches each kind of fault when it is planted."""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent


class LayerCheck(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        shutil.copytree(ROOT / "Sources", self.root / "Sources")

    def check(self):
        return subprocess.run(
            [sys.executable, ROOT / "Scripts" / "check_layers.py", self.root],
            capture_output=True, text=True, check=False)

    def assert_caught(self, path, line, message):
        file = self.root / "Sources" / "Optrella" / path
        file.write_text(line + "\n" + (file.read_text() if file.exists() else ""))
        result = self.check()
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertEqual(result.stdout, f"{file}: {message}\n")

    def test_sources_as_they_stand_pass(self):
        result = self.check()
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertRegex(result.stdout, r"^layers: [1-9][0-9]* files, no fault\n$")

    def test_include_from_a_higher_floor_is_caught(self):
        self.assert_caught("Text.cpp", '#include "Optrella/Values.hpp"',
                           "includes Optrella/Values.hpp, which is on floor 2; its own is 1")

    def test_include_from_the_same_floor_is_caught(self):
        self.assert_caught("Fetch.cpp", '#include "Optrella/CommandLine.hpp"',
                           "includes Optrella/CommandLine.hpp, which is on floor 4; its own is 4")

    def test_upward_include_under_platform_is_caught(self):
        self.assert_caught("Platform/Linux/Worker.cpp", '#include "Optrella/Text.hpp"',
                           "includes Optrella/Text.hpp, which is on floor 1; its own is 0")

    def test_include_from_another_systems_folder_is_caught(self):
        self.assert_caught("Platform/Posix/Files.cpp", '#include "Optrella/Platform/MacOS/Owned.hpp"',
                           "includes Optrella/Platform/MacOS/Owned.hpp, which is on floor 0; its own is 0")

    def test_system_header_outside_platform_is_caught(self):
        self.assert_caught("CommandLine.cpp", "#include <unistd.h>",
                           "includes the system header <unistd.h>")

    def test_system_header_in_a_platform_contract_is_caught(self):
        self.assert_caught("Platform/Worker.hpp", "#include <pthread.h>",
                           "includes the system header <pthread.h>")

    def test_unicode_library_elsewhere_is_caught(self):
        self.assert_caught("Text.cpp", "#include <utf8proc.h>",
                           "includes the Unicode library outside Internal/Unicode.cpp")

    def test_heavy_public_header_is_caught(self):
        self.assert_caught("Fetch.hpp", "#include <functional>",
                           "a public header includes <functional>, which costs every including file")

    def test_condition_on_the_system_is_caught(self):
        self.assert_caught("Values.cpp", "#ifdef __APPLE__\n#endif",
                           "has a condition of the preprocessor: __APPLE__")

    def test_file_on_no_floor_is_caught(self):
        self.assert_caught("Extra.cpp", "// nothing", "is on no floor")

    def test_print_around_the_print_facility_is_caught(self):
        self.assert_caught("Help.cpp", 'void f() { std::cout << ""; }',
                           "prints around the print facility")

    def test_policy_under_platform_is_caught(self):
        self.assert_caught("Platform/Linux/Process.cpp", 'const char* sudo = "/usr/bin/sudo";',
                           "holds a text or path that is policy")


if __name__ == "__main__":
    unittest.main()
