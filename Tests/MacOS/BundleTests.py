"""The identifier of the bundle that a tool runs from: BundleTests.py BundleProbe"""

import os
import plistlib
import shutil
import subprocess
import sys
import tempfile
import unittest

PROBE = ""
# Where Core Foundation looks for a bundle's programs.
DIRECTORY = {"darwin": "MacOS", "linux": "Linux"}[sys.platform]


class Bundle(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.contents = os.path.join(directory.name, "Tool.app", "Contents")
        self.tool = os.path.join(self.contents, DIRECTORY, "tool")
        os.makedirs(os.path.dirname(self.tool))
        shutil.copy(PROBE, self.tool)

    def describe(self, **properties):
        with open(os.path.join(self.contents, "Info.plist"), "wb") as file:
            plistlib.dump({"CFBundleExecutable": "tool", **properties}, file)

    def identifier(self, tool=None):
        probe = subprocess.run([tool or self.tool], capture_output=True, text=True, check=False)
        self.assertEqual((probe.returncode, probe.stderr), (0, ""))
        return probe.stdout

    def test_has_the_identifier_of_its_description(self):
        self.describe(CFBundleIdentifier="com.example.tool")
        self.assertEqual(self.identifier(), "com.example.tool\n")

    def test_has_one_of_any_characters(self):
        self.describe(CFBundleIdentifier="com.example.t\u00f6\u00f6l-\u5c71-\U0001f600")
        self.assertEqual(self.identifier(), "com.example.t\u00f6\u00f6l-\u5c71-\U0001f600\n")

    def test_has_a_long_one(self):
        self.describe(CFBundleIdentifier="com.example." + "x" * 5000)
        self.assertEqual(self.identifier(), "com.example." + "x" * 5000 + "\n")

    def test_has_none_without_one_in_the_description(self):
        self.describe()
        self.assertEqual(self.identifier(), "(none)\n")

    def test_has_none_without_a_description(self):
        self.assertEqual(self.identifier(), "(none)\n")

    def test_has_none_where_there_is_no_bundle(self):
        self.assertEqual(self.identifier(PROBE), "(none)\n")


if __name__ == "__main__":
    PROBE = os.path.abspath(sys.argv[1])
    unittest.main(argv=sys.argv[:1], verbosity=2)
