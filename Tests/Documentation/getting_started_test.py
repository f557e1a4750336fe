#!/usr/bin/env python3
"""The steps of the page for newcomers give what it shows, with the installed library.

getting_started_test.py DIRECTORY CMAKE BUILD: BUILD is the directory in which the library has been
built; it is installed where the page installs it.
"""

import pathlib
import sys
import tempfile
import unittest

from pages import GETTING_STARTED, at_home

directory = pathlib.Path(sys.argv[1])
cmake = sys.argv[2]
build = sys.argv[3]


class GettingStarted(unittest.TestCase):
    maxDiff = None

    def test_every_step_gives_what_is_shown(self):
        with tempfile.TemporaryDirectory() as home:
            sessions = 0
            for block, session, _ in at_home(home, cmake, build).go_through(
                    directory / "docs" / GETTING_STARTED):
                self.assertEqual(session, block.text)
                sessions += 1
            self.assertGreater(sessions, 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
