#!/usr/bin/env python3
"""The declarations of all examples and of all programs of the pages stand up to lint.

lint_test.py DIRECTORY COMPILER [FLAG...]: the flags are those that compile and link a tool. Each
program is linked with LintInsteadOfParsing.cpp and run: what it hands to parse, explain or runTool is linted.
"""

import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

from pages import Compiler, blocks, pages

directory = pathlib.Path(sys.argv[1])
compiler = Compiler(sys.argv[2:])

IN_PLACE = pathlib.Path(__file__).resolve().parent / "LintInsteadOfParsing.cpp"
LINTED = re.compile(r"^linted [1-9]\d* declarations\n", re.MULTILINE)

# Findings that stay, by program, each with the reason: the rule, declarations, and a line or tags.
FOUND = {
    "docs/declaring-commands.md: books": [
        ("collision 0 1 'list' '-s'", "the page shows how parse refuses it")],
}
# Programs that give nothing to any of these, and why.
NOT_LINTED = {
    "docs/coming-from.md: wake-getopt": "shows getopt",
    "docs/coming-from.md: wake-cli11": "shows CLI11",
    "docs/coming-from.md: wake-cxxopts": "shows cxxopts",
    "Examples/sessions/SessionsTests.cpp": "lints by itself",
    "docs/testing.md: faulty": "shows what lint finds",
    "docs/testing.md: items-gtest": "shows what lint finds",
}

PLANTED = """
#include <Optrella/Optrella.hpp>
using namespace Optrella;
constexpr ParameterNone list{{"list"}, ""}, all{{"-a"}, ""}, yes{{"-y"}, ""};
void nothing(const Parameters&) {}
int main(int argc, char* argv[]) {
    const CommandLinePossibility commandLines[] = {
        {false, {list}, {all}, "One list.", false, nothing},
        {false, {list}, {yes}, "Another one.", false, nothing},
    };
    return parse(commandLines, argc, argv) == parsingError::NoError ? 0 : 64;
}
"""


def example_programs():
    """Each file with a main function, and those beside it that have none."""
    for example in sorted((directory / "Examples").iterdir()):
        sources = {file: re.search(r"^int main\(", file.read_text(encoding="utf-8"), re.MULTILINE)
                   for file in sorted(example.glob("*.cpp"))}
        shared = [file for file, has_main in sources.items() if not has_main]
        for file, has_main in sources.items():
            if has_main:
                yield f"Examples/{example.name}/{file.name}", [file, *shared]


def page_programs(work):
    for page in pages(directory):
        for block in blocks(page):
            if block.what != "program" and not str(block.name).endswith(".cpp"):
                continue
            source = work / f"{page.name}-{block.line}.cpp"
            source.write_text(block.text, encoding="utf-8")
            yield f"{page.relative_to(directory)}: {block.name}", [source]


class Lint(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.place = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.place.cleanup)
        cls.work = pathlib.Path(cls.place.name)
        cls.in_place = cls.work / "in_place.o"
        compiler.compile(IN_PLACE, cls.in_place, "-c")

    def linted(self, sources):
        """What is found, and the same in sentences."""
        program = self.work / "-".join(sources[0].parts[-3:]).replace(".cpp", "")
        first, *others = sources
        compiler.compile(first, program, *others, self.in_place)
        ran = subprocess.run([program, "argument"], cwd=self.work, capture_output=True, text=True,
                             stdin=subprocess.DEVNULL, check=False, timeout=60)
        said = LINTED.search(ran.stdout)
        self.assertTrue(said, "has not given its declarations to parse or explain")
        return ran.stdout[said.end():].splitlines(), ran.stderr

    def test_a_planted_collision_is_found(self):
        source = self.work / "planted.cpp"
        source.write_text(PLANTED, encoding="utf-8")
        findings, _ = self.linted([source])
        self.assertEqual(findings, ["collision 0 1 'list'"])

    def test_examples_and_pages_declare_what_stands_up_to_lint(self):
        programs = [*example_programs(), *page_programs(self.work)]
        self.assertLessEqual({*FOUND, *NOT_LINTED}, {name for name, _ in programs})
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as together:
            started = [(name, together.submit(self.linted, sources)) for name, sources in programs
                       if name not in NOT_LINTED]
        for name, linted in started:
            with self.subTest(program=name):
                findings, sentences = linted.result()
                self.assertEqual(findings, [what for what, _ in FOUND.get(name, [])], sentences)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
