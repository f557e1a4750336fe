#!/usr/bin/env python3
"""The steps of the page for newcomers give what it shows, with the installed library.

getting_started_test.py DIRECTORY CMAKE BUILD: BUILD is the directory in which the library has been
built; it is installed where the page installs it.
"""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

from pages import WorkingDirectory, blocks

directory = pathlib.Path(sys.argv[1])
cmake = sys.argv[2]
build = sys.argv[3]


class GettingStarted(unittest.TestCase):
    def test_every_step_gives_what_is_shown(self):
        with tempfile.TemporaryDirectory() as home:
            # A C++ compiler chosen for the library serves the tool too.
            here = WorkingDirectory(home, environment={"HOME": home})
            installed = subprocess.run([cmake, "--install", build, "--prefix", f"{home}/.local"],
                                       capture_output=True, text=True, check=False)
            self.assertEqual(installed.returncode, 0, installed.stderr)
            here.environment["PATH"] = os.pathsep.join(
                [str(pathlib.Path(cmake).parent), os.environ["PATH"]])
            sessions = 0
            for block in blocks(directory / "docs" / "getting-started.md"):
                here.go_through(block, self)
                sessions += block.what == "run"
            self.assertGreater(sessions, 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
