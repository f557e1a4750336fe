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
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = pathlib.Path(directory.name)
        self.sources = self.root / "Sources" / "Optrella"
        shutil.copytree(ROOT / "Sources", self.root / "Sources")
        shutil.copy(ROOT / "CONTRIBUTING.md", self.root)

    def check(self):
        return subprocess.run(
            [sys.executable, ROOT / "Scripts" / "check_layers.py", self.root],
            capture_output=True, text=True, check=False)

    def assert_found(self, path, message):
        result = self.check()
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertEqual(result.stdout, f"{self.root / path}: {message}\n")

    def assert_caught(self, path, line, message):
        file = self.sources / path
        file.write_text(line + "\n" + (file.read_text() if file.exists() else ""))
        self.assert_found(f"Sources/Optrella/{path}", message)

    def replace(self, path, old, new):
        file = self.root / path
        text = file.read_text()
        self.assertIn(old, text)
        file.write_text(text.replace(old, new))

    def test_sources_as_they_stand_pass(self):
        result = self.check()
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertRegex(result.stdout, r"^layers: [1-9][0-9]* files, no fault\n$")

    def test_include_from_a_higher_layer_is_caught(self):
        self.assert_caught("Text/Text.cpp", '#include "Optrella/Values.hpp"',
                           "includes Optrella/Values.hpp, which is in layer 2; its own is 1")

    def test_include_from_the_same_layer_is_caught(self):
        self.assert_caught("Fetch.cpp", '#include "Optrella/CommandLine.hpp"',
                           "includes Optrella/CommandLine.hpp, which is in layer 4; its own is 4")

    def test_upward_include_under_platform_is_caught(self):
        self.assert_caught("Platform/Linux/Worker.cpp", '#include "Optrella/Text.hpp"',
                           "includes Optrella/Text.hpp, which is in layer 1; its own is 0")

    def test_header_that_includes_itself_by_way_of_another_is_caught(self):
        for path in ("Fetch/First.hpp", "Fetch/Second.hpp"):
            guard = "OPTRELLA_" + path.replace("/", "_").replace(".", "_").upper()
            other = "Second" if "First" in path else "First"
            (self.sources / path).write_text(f"#ifndef {guard}\n#define {guard}\n"
                                             f'#include "Optrella/Fetch/{other}.hpp"\n#endif\n')
        result = self.check()
        self.assertEqual(result.stdout, "".join(
            f"{self.sources}/Fetch/{name}.hpp: includes itself by way of other headers\n"
            for name in ("First", "Second")))

    def test_include_from_another_systems_directory_is_caught(self):
        for path, included in (("Platform/Posix/Files.cpp", "Platform/MacOS/Owned.hpp"),
                               ("Values.cpp", "Platform/Posix/UserDatabase.hpp")):
            with self.subTest(path):
                self.setUp()
                self.assert_caught(path, f'#include "Optrella/{included}"',
                                   f"includes Optrella/{included}, which is another directory's own")

    def test_system_header_outside_platform_is_caught(self):
        self.assert_caught("Help.cpp", "#include <unistd.h>",
                           "includes the system header <unistd.h>")

    def test_system_header_in_a_platform_contract_is_caught(self):
        self.assert_caught("Platform/Worker.hpp", "#include <pthread.h>",
                           "includes the system header <pthread.h>")

    def test_unicode_library_elsewhere_is_caught(self):
        self.assert_caught("Text/Text.cpp", "#include <utf8proc.h>",
                           "includes the Unicode library outside Text/Unicode.cpp and Text/Characters.cpp")

    def test_heavy_installed_header_is_caught(self):
        for path in ("Fetch.hpp", "Parameters/Tags.hpp"):
            with self.subTest(path):
                self.setUp()
                self.assert_caught(
                    path, "#include <functional>",
                    "an installed header includes <functional>, which costs every including file")

    def test_condition_on_the_system_is_caught(self):
        self.assert_caught("Values.cpp", "#ifdef __APPLE__\n#endif",
                           "has a condition of the preprocessor: __APPLE__")

    def test_wrong_guard_is_caught(self):
        self.replace("Sources/Optrella/Help/Listing.hpp", "OPTRELLA_HELP_LISTING_HPP", "OPTRELLA_HELP_HPP")
        self.assert_found("Sources/Optrella/Help/Listing.hpp",
                          "has another guard than OPTRELLA_HELP_LISTING_HPP")

    def test_file_in_no_layer_is_caught(self):
        self.assert_caught("Extra.cpp", "// nothing", "is in no layer")

    def test_print_around_the_print_facility_is_caught(self):
        self.assert_caught("Help.cpp", 'void f() { std::cout << ""; }',
                           "prints around the print facility")

    def test_policy_under_platform_is_caught(self):
        self.assert_caught("Platform/Linux/Process.cpp", 'const char* sudo = "/usr/bin/sudo";',
                           "holds a text or path that is policy")

    def test_two_headers_of_one_name_are_caught(self):
        self.assert_caught("Help/Search.hpp",
                           "#ifndef OPTRELLA_HELP_SEARCH_HPP\n#define OPTRELLA_HELP_SEARCH_HPP\n#endif",
                           "shares its name with Fetch/Search.hpp")

    def test_file_with_too_many_lines_is_caught(self):
        lines = sum(file.read_text().count("\n") for file in self.sources.rglob("*.?pp"))
        file = self.sources / "Help.cpp"
        file.write_text(file.read_text() + "//\n" * (lines // 9))
        result = self.check()
        self.assertRegex(result.stdout,
                         r"/Help\.cpp: holds 1\d\.\d% of all lines; no file holds more than 9%\n$")

    def test_header_that_is_not_installed_is_caught(self):
        self.replace("Sources/Optrella/CMakeLists.txt", "  Parameters/Tags.hpp\n", "")
        self.assert_found("Sources/Optrella/Parameters/Tags.hpp",
                          "is included by a public header, and CMakeLists.txt does not install it")

    def test_header_that_is_installed_for_nobody_is_caught(self):
        self.replace("Sources/Optrella/CMakeLists.txt", "  Parameters/Tags.hpp\n",
                     "  Parameters/Tags.hpp\n  Help/Listing.hpp\n")
        self.assert_found("Sources/Optrella/Help/Listing.hpp",
                          "is installed by CMakeLists.txt, and no public header includes it")

    def test_system_that_lacks_a_file_is_caught(self):
        (self.sources / "Platform" / "MacOS" / "Log.cpp").unlink()
        self.assert_found("Sources/Optrella/Platform/MacOS/Log.cpp",
                          "is missing: Platform/System.hpp asks for it")

    def test_page_with_other_layers_is_caught(self):
        self.replace("CONTRIBUTING.md", "    5  Help  Tool\n", "")
        self.assert_found("CONTRIBUTING.md",
                          "does not show the layers as check_layers.py --table prints them")


if __name__ == "__main__":
    unittest.main()
