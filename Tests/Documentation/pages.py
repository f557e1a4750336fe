"""What the pages of the documentation show, and how to check whether it is true.

A comment before a code block says what the block is:

    <!-- program: NAME -->               a tool's source; NAME is compiled from it
    <!-- program: NAME needs HEADER -->  the same where the header is installed; left out elsewhere
    <!-- run: NAME -->                   a session: after each line that begins with "$ " stands all
                                         that it prints; NAME is the program that it is about
    <!-- do -->                          a session of which only the success counts
    <!-- file: PATH -->                  a file's content
    <!-- declarations -->                lines of C++ at namespace scope, which compile
    <!-- statements -->                  lines of C++ within an action, which compile
    <!-- checked -->                     the same, and they run: what they assert is true

The blocks of a page are gone through from top to bottom in a directory of the page's own. Later ones
see what earlier ones have left. Manual pages have the same comments after .\\", before a literal block.
"""

import os
import pathlib
import re
import subprocess

FENCED = re.compile(r"^```(\w*)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
MARK = re.compile(
    r"^<!-- (?P<what>[a-z]+)(?:: (?P<name>\S+?)(?: needs (?P<needs>\S+))?)? -->$")
LITERAL = re.compile(
    r'^\.\\" <!-- ([a-z]+): (\S+) -->\n\.Bd -literal[^\n]*\n(.*?)^\.Ed$', re.MULTILINE | re.DOTALL)

SNIPPETS = ("declarations", "statements", "checked")
WITH_NAME = ("program", "run", "file")


class Block:
    def __init__(self, what, name, needs, language, text, line):
        self.what = what
        self.name = name
        self.needs = needs
        self.language = language
        self.text = text
        self.line = line  # of the page, on which the text begins


def blocks(page):
    """All code blocks of a page; what has no mark is called "unmarked"."""
    text = page.read_text(encoding="utf-8")
    if page.suffix != ".md":
        return [Block(what, name, None, "", unescaped(code), line_of(text, found.start(3)))
                for found in LITERAL.finditer(text) for what, name, code in [found.groups()]]
    found_blocks = []
    for found in FENCED.finditer(text):
        before = text[:found.start()].rstrip("\n").rsplit("\n", 1)[-1]
        mark = MARK.match(before)
        what = mark["what"] if mark else "unmarked"
        name, needs = (mark["name"], mark["needs"]) if mark else (None, None)
        found_blocks.append(Block(what, name, needs, found[1], found[2], line_of(text, found.start(2))))
    return found_blocks


def line_of(text, position):
    return text.count("\n", 0, position) + 1


def unescaped(code):
    """A literal block of a manual page as its reader sees it."""
    return code.replace(r"\&", "").replace(r"\-", "-").replace(r"\e", "\\")


def steps(session):
    """The command lines of a session, each with the output shown."""
    for step in re.split(r"^\$ ", session, flags=re.MULTILINE)[1:]:
        command, output = step.split("\n", 1)
        yield command, output


class WorkingDirectory:
    """Where a page's blocks are gone through."""

    def __init__(self, work, programs=(), environment=None):
        self.work = pathlib.Path(work)
        self.environment = {**os.environ, "LC_ALL": "C.UTF-8", **(environment or {})}
        paths = [self.work, *programs, self.environment["PATH"]]
        self.environment["PATH"] = os.pathsep.join(map(str, paths))
        self.status = 0  # of the command line before: what $? shows

    def write(self, name, text):
        file = self.work / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")

    def run(self, command):
        """What a command line prints on both streams, and whether it succeeds."""
        shell = subprocess.run(["sh", "-c", f"(exit {self.status})\n{command}"], cwd=self.work,
                               env=self.environment, capture_output=True, text=True, check=False)
        self.status = shell.returncode
        return shell.stdout + shell.stderr

    def go_through(self, block, test):
        """Everything but programs and snippets."""
        if block.what == "file":
            self.write(block.name, block.text)
        elif block.what in ("run", "do"):
            commands = list(steps(block.text))
            test.assertTrue(commands, f"line {block.line}: a session without a command")
            for command, expected in commands:
                printed = self.run(command)
                if block.what == "run":
                    test.assertEqual(printed, expected, command)
                else:
                    test.assertEqual(self.status, 0, f"{command}\n{printed}")


class Compiler:
    def __init__(self, command):
        self.command = command  # the compiler and the flags that compile and link a tool

    def compile(self, source, program, test, *flags):
        result = subprocess.run(
            [self.command[0], "-std=c++20", source, "-o", program, *flags, *self.command[1:]],
            capture_output=True, text=True, check=False)
        test.assertEqual(result.returncode, 0, result.stderr)

    def has(self, header):
        probe = f"#include <{header}>\n"
        return subprocess.run([self.command[0], "-std=c++20", "-fsyntax-only", "-x", "c++", "-"],
                              input=probe, capture_output=True, text=True,
                              check=False).returncode == 0


def program_of_snippets(pages):
    """One program of all snippets: each page is a namespace, and what it asserts is run."""
    text = ["#undef NDEBUG", "#include <Optrella/Optrella.hpp>", "#include <cassert>",
            "#include <cstdio>", "#include <string>", "#include <vector>",
            "using namespace Optrella;"]
    calls = []
    for number, page in enumerate(pages):
        text.append(f"namespace page{number} {{")
        for block in blocks(page):
            if block.what not in SNIPPETS:
                continue
            line = f'#line {block.line} "{page.name}"'
            if block.what == "declarations":
                text += [line, block.text]
                continue
            function = f"block{block.line}"
            text += [f"void {function}([[maybe_unused]] const Parameters& given) {{", line,
                     block.text + "}"]
            if block.what == "checked":
                calls.append(f"page{number}::{function}({{}});")
        text.append("}")
    return "\n".join([*text, "int main() {", *calls, "}", ""]), len(calls)


