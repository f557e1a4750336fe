#!/usr/bin/env python3
"""The release check passes on a tree that is ready, and catches each thing that is not."""

import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
VERSION = re.search(r"^project\(Optrella VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text(),
                    re.MULTILINE).group(1)


class Release(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = pathlib.Path(directory.name)
        shutil.copytree(ROOT / "Packaging", self.root / "Packaging")
        shutil.copy(ROOT / "CMakeLists.txt", self.root)
        shutil.copy(ROOT / "README.md", self.root)
        (self.root / "Scripts").mkdir()
        shutil.copy(ROOT / "Scripts" / "release", self.root / "Scripts")
        (self.root / "CHANGELOG.md").write_text(f"# Changelog\n\n## {VERSION}\n\n- First.\n")
        self.change("Packaging/Debian/changelog", "UNRELEASED", "unstable")
        # The packages themselves have tests of their own.
        self.consume("echo 'the packages work'")
        self.git("init", "--quiet")
        self.commit()

    def git(self, *arguments):
        subprocess.run(["git", "-c", "user.name=Test", "-c", "user.email=test@optrella.invalid",
                        *arguments], cwd=self.root, check=True)

    def commit(self):
        self.git("add", "--all")
        self.git("commit", "--quiet", "--message", "Change", "--allow-empty")

    def consume(self, command):
        script = self.root / "Tests" / "Package" / "consume"
        script.parent.mkdir(parents=True, exist_ok=True)
        script.write_text(f"#!/bin/sh\n{command}\n")
        script.chmod(0o755)

    def change(self, path, old, new):
        file = self.root / path
        text = file.read_text()
        if old not in text and new in text:
            return
        self.assertIn(old, text)
        file.write_text(text.replace(old, new, 1))

    def release(self):
        return subprocess.run([self.root / "Scripts" / "release"], capture_output=True, text=True,
                              check=False)

    def assert_caught(self, message):
        self.commit()
        result = self.release()
        self.assertEqual(result.returncode, 1, result.stdout)
        failed = [line for line in result.stdout.splitlines() if "FAILED" in line]
        self.assertEqual(failed, [f"release: {message}"])
        self.assertNotIn("the packages work", result.stdout)
        self.assertNotIn("can be released", result.stdout)

    def test_tree_that_is_ready_passes(self):
        result = self.release()
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertEqual(result.stdout.splitlines()[-2:],
                         ["the packages work", f"release: {VERSION} can be released"])

    def test_changelog_without_the_version_is_caught(self):
        self.change("CHANGELOG.md", f"## {VERSION}", "## Unreleased")
        self.assert_caught(f"CHANGELOG.md, first heading: FAILED: 'Unreleased', not '{VERSION}'")

    def test_changelog_without_entries_is_caught(self):
        self.change("CHANGELOG.md", "- First.\n", "")
        self.assert_caught("CHANGELOG.md, entries: FAILED: '0', not 'some'")

    def test_debian_package_of_another_version_is_caught(self):
        self.change("Packaging/Debian/changelog", f"({VERSION})", "(9.9.9)")
        self.assert_caught("Packaging/Debian/changelog: FAILED: "
                           "'optrella (9.9.9) unstable; urgency=medium', "
                           f"not 'optrella ({VERSION}) unstable; urgency=medium'")

    def test_debian_package_of_another_soname_is_caught(self):
        self.change("Packaging/Debian/control", "Package: liboptrella0.", "Package: liboptrella9.")
        self.assertRegex(VERSION, r"^0\.")
        soname = "liboptrella" + VERSION.rpartition(".")[0]
        wrong = soname.replace("liboptrella0.", "liboptrella9.")
        self.assert_caught(f"Packaging/Debian/control: FAILED: '{wrong}', not '{soname}'")

    def test_vcpkg_port_of_another_version_is_caught(self):
        self.change("Packaging/vcpkg/optrella/vcpkg.json", f'"{VERSION}"', '"9.9.9"')
        self.assert_caught(f"Packaging/vcpkg: FAILED: '9.9.9', not '{VERSION}'")

    def test_homebrew_formula_of_another_version_is_caught(self):
        self.change("Packaging/Homebrew/optrella.rb", '  head "file:',
                    '  url "https://optrella.example/optrella-9.9.9.tar.gz"\n  head "file:')
        self.assert_caught(f"Packaging/Homebrew: FAILED: '9.9.9', not '{VERSION}'")

    def test_page_that_asks_for_another_version_is_caught(self):
        self.change("README.md", "find_package(Optrella 0.", "find_package(Optrella 9.")
        minor = VERSION.rpartition(".")[0]
        wrong = minor.replace("0.", "9.", 1)
        self.assert_caught(f"README.md, find_package: FAILED: '{wrong}', not '{minor}'")

    def test_file_that_is_not_committed_is_caught(self):
        (self.root / "forgotten").write_text("")
        result = self.release()
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertIn("release: files that are not committed: FAILED: '1', not '0'\n", result.stdout)

    def test_packages_that_do_not_work_are_caught(self):
        self.consume("echo 'they do not'; exit 1")
        self.commit()
        result = self.release()
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertEqual(result.stdout.splitlines()[-1], "they do not")


if __name__ == "__main__":
    unittest.main()
