#!/usr/bin/env python3
"""What the documentation shows is true: its programs compile and print what is shown after them.

documentation_test.py DIRECTORY PROGRAMS COMPILER [FLAG...]: PROGRAMS is where the example tools have
been built, the flags are those that compile and link a tool. pages.py says how the blocks of a page
are marked.
"""

import pathlib
import re
import sys
import tempfile
import unittest

import picture
from pages import (FENCED, GETTING_STARTED, SNIPPETS, WITH_NAME, Compiler, WorkingDirectory, blocks,
                   pages, program_of_snippets)

directory = pathlib.Path(sys.argv[1])
programs = pathlib.Path(sys.argv[2])
compiler = Compiler(sys.argv[3:])

LINK = re.compile(r"\]\(([^)#:]+)(?:#[^)]*)?\)")


def name_of(page):
    return str(page.relative_to(directory))


class Documentation(unittest.TestCase):
    maxDiff = None

    def test_what_a_page_shows_is_so(self):
        for page in pages(directory):
            if page.name != GETTING_STARTED:
                with self.subTest(page=name_of(page)), tempfile.TemporaryDirectory() as work:
                    here = WorkingDirectory(work, [programs])
                    for block, session, _ in here.go_through(page, compiler):
                        self.assertEqual(session, block.text)

    def test_the_picture_shows_what_a_user_sees(self):
        self.assertEqual(picture.PICTURE.read_text(encoding="utf-8"),
                         picture.drawn(picture.session(programs)))

    def test_snippets_compile_and_what_they_assert_is_true(self):
        program, count = program_of_snippets(pages(directory))
        self.assertGreater(count, 0)
        with tempfile.TemporaryDirectory() as work:
            here = WorkingDirectory(work)
            here.write("snippets.cpp", program)
            compiler.compile(here.work / "snippets.cpp", here.work / "snippets", "-Wall", "-Wno-unused")
            here.run("./snippets >printed 2>&1")
            self.assertEqual(here.status, 0, (here.work / "printed").read_text())

    def test_every_block_of_code_says_what_it_is(self):
        known = {*SNIPPETS, *WITH_NAME, "do"}
        for page in pages(directory):
            for block in blocks(page):
                with self.subTest(page=name_of(page), line=block.line):
                    if block.language in ("cpp", "console"):
                        self.assertNotEqual(block.what, "unmarked")
                    self.assertIn(block.what, {*known, "unmarked"})
                    self.assertEqual(block.name is not None, block.what in WITH_NAME)

    def test_links_between_pages_lead_somewhere(self):
        for page in pages(directory):
            prose = FENCED.sub("", page.read_text(encoding="utf-8"))
            for link in LINK.findall(prose):
                with self.subTest(page=name_of(page), link=link):
                    self.assertTrue((page.parent / link).exists())

    def test_the_first_page_shows_a_program_and_a_session(self):
        kinds = [block.what for block in blocks(directory / "README.md")]
        self.assertEqual(kinds[:2], ["program", "run"])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
