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


TIMEOUT = 300  # seconds, for a command line that builds something on a slow machine
# Its steps need the installed library: getting_started_test.py takes them.
GETTING_STARTED = "getting-started.md"


class Untrue(AssertionError):
    """A page shows what does not compile, succeed or end."""


class Block:
    def __init__(self, what, name, needs, language, text, line, span):
        self.what = what
        self.name = name
        self.needs = needs
        self.language = language
        self.text = text
        self.line = line  # of the page, on which the text begins
        self.span = span  # where the text stands in the page


def pages(directory):
    return sorted([*directory.glob("*.md"), *(directory / "docs").glob("*.md"),
                   *(directory / "docs" / "man").glob("optrella.*"),
                   *(directory / "Examples").glob("*/README.md")])


def blocks(page):
    """All code blocks of a page; what has no mark is called "unmarked"."""
    text = page.read_text(encoding="utf-8")
    if page.suffix != ".md":
        return [Block(what, name, None, "", unescaped(code), line_of(text, found.start(3)),
                      found.span(3))
                for found in LITERAL.finditer(text) for what, name, code in [found.groups()]]
    found_blocks = []
    for found in FENCED.finditer(text):
        before = text[:found.start()].rstrip("\n").rsplit("\n", 1)[-1]
        mark = MARK.match(before)
        what = mark["what"] if mark else "unmarked"
        name, needs = (mark["name"], mark["needs"]) if mark else (None, None)
        found_blocks.append(Block(what, name, needs, found[1], found[2], line_of(text, found.start(2)),
                                  found.span(2)))
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
        """What a command line prints on both streams; `status` says how it ended."""
        try:
            shell = subprocess.run(["sh", "-c", f"(exit {self.status})\n{command}"], cwd=self.work,
                                   env=self.environment, capture_output=True, text=True, check=False,
                                   timeout=TIMEOUT)
        except subprocess.TimeoutExpired:
            raise Untrue(f"{command}: does not end within {TIMEOUT} s") from None
        self.status = shell.returncode
        return shell.stdout + shell.stderr

    def go_through(self, page, compiler=None):
        """Yields each session, with what it gives now and the statuses of its command lines."""
        left_out = set()
        for block in blocks(page):
            if block.needs and not compiler.has(block.needs):
                print(f"\nleft out: {block.name} in {page.name}: no {block.needs} here", flush=True)
                left_out.add(block.name)
            if block.name in left_out:
                continue
            if block.what == "program":
                self.write(f"{block.name}.cpp", block.text)
                compiler.compile(self.work / f"{block.name}.cpp", self.work / block.name)
            elif block.what == "file":
                self.write(block.name, block.text)
            elif block.what == "do":
                self.do(block)
            elif block.what == "run":
                yield block, *self.played(block)

    def do(self, block):
        for command in commands(block):
            printed = self.run(command)
            if self.status != 0:
                raise Untrue(f"{command}\n{printed}")

    def played(self, block):
        session, statuses = "", []
        for command in commands(block):
            session += f"$ {command}\n{self.run(command)}"
            statuses.append(self.status)
        return session, statuses


def at_home(home, cmake, build):
    """A newcomer's directory, with the library of `build` installed where the page says."""
    # A C++ compiler chosen for the library serves the tool too.
    here = WorkingDirectory(home, environment={"HOME": home})
    installed = subprocess.run([cmake, "--install", build, "--prefix", f"{home}/.local"],
                               capture_output=True, text=True, check=False)
    if installed.returncode != 0:
        raise Untrue(installed.stderr)
    here.environment["PATH"] = os.pathsep.join([str(pathlib.Path(cmake).parent), os.environ["PATH"]])
    return here


def commands(block):
    found = [command for command, _ in steps(block.text)]
    if not found:
        raise Untrue(f"line {block.line}: a session without a command")
    return found


class Compiler:
    def __init__(self, command):
        self.command = command  # the compiler and the flags that compile and link a tool

    def compile(self, source, program, *flags):
        # What a program says of its source shows no directory.
        nameless = f"-ffile-prefix-map={source.parent}/="
        result = subprocess.run(
            [self.command[0], "-std=c++20", nameless, source, "-o", program, *flags, *self.command[1:]],
            capture_output=True, text=True, check=False)
        if result.returncode != 0:
            raise Untrue(result.stderr)

    def has(self, header):
        probe = f"#include <{header}>\n"
        return subprocess.run([self.command[0], "-std=c++20", "-fsyntax-only", "-x", "c++", "-"],
                              input=probe, capture_output=True, text=True,
                              check=False).returncode == 0


def program_of_snippets(pages):
    """One program of all snippets: each page is a namespace, and what it asserts is run."""
    headers = ["Complete.hpp", "CompletionScript.hpp", "Description.hpp", "Explain.hpp", "HelpPage.hpp",
               "Lint.hpp", "ManualPage.hpp", "Optrella.hpp", "Tool.hpp"]
    text = ["#undef NDEBUG", *(f"#include <Optrella/{each}>" for each in headers),
            "#include <cassert>", "#include <cstdio>", "#include <string>", "#include <vector>",
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


