#!/usr/bin/env python3
"""Checks that the compiler refuses what refused.txt says, in words that name the mistake.

    refused_test.py COMPILER [--include DIR] [NAME ...]

Each program is compiled twice: as it is written there it must be refused, and with the mistake put
right it must be accepted, so that nothing else can be the reason of the refusal.
"""

import argparse
import concurrent.futures
import os
import pathlib
import subprocess
import sys
import time

HERE = pathlib.Path(__file__).resolve().parent
CASES = HERE / "refused.txt"
HEADERS = HERE.parent.parent / "Sources"
SEEN_LINES = 12  # what a newcomer reads of an error before scrolling
JOBS = 2

PRELUDE = """#include <Optrella/Optrella.hpp>
#include <string>
using namespace Optrella;
[[maybe_unused]] static void nothing(const Parameters&) {}
"""


class Case:
    def __init__(self, name):
        self.name = name
        self.flags = []
        self.refused_flags = []
        self.lines = []  # (mark, text): "-" only in the refused program, "+" only in the right one
        self.says = []  # (family or "", text)

    def program(self, mark):
        texts = [text for its_mark, text in self.lines if its_mark in ("", mark)]
        at = texts.index("main:") if "main:" in texts else -1
        top, body = texts[:at] if at >= 0 else [], texts[at + 1:]
        return "\n".join([PRELUDE, *top, "int main(int argc, char** argv) {",
                          "(void)argc; (void)argv;", *body, "return 0; }", ""])

    def expected(self, family):
        return [text for whose, text in self.says if whose in ("", family)]


def read_cases(path):
    cases = []
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        if not line.strip() or line == "#" or line.startswith("#  "):
            continue
        head, colon, text = line.partition(": ")
        if line.startswith("== "):
            cases.append(Case(line[3:]))
        elif colon and head in ("says", "gcc says", "clang says"):
            cases[-1].says.append((head.removesuffix("says").strip(), text))
        elif colon and head == "flags":
            cases[-1].flags = text.split()
        elif colon and head == "refused flags":
            cases[-1].refused_flags = text.split()
        elif line[0] in "-+" and line[1:2] == " ":
            cases[-1].lines.append((line[0], line[2:]))
        else:
            cases[-1].lines.append(("", line.strip()))
    names = [case.name for case in cases]
    twice = {name for name in names if names.count(name) > 1}
    if twice:
        sys.exit(f"refused_test: in {path} twice: {', '.join(sorted(twice))}")
    return cases


class Compiler:
    def __init__(self, command, include):
        # The words are English and the quotation marks ASCII on every machine.
        self.environment = {**os.environ, "LC_ALL": "C"}
        self.command = [command, "-std=c++20", "-fsyntax-only", f"-I{include}", "-x", "c++"]
        version = subprocess.run([command, "--version"], capture_output=True, text=True, check=True)
        self.family = "clang" if "clang" in version.stdout else "gcc"

    def messages(self, program, flags):
        """What the compiler says when it refuses the program, nothing when it accepts it."""
        run = subprocess.run([*self.command, *flags, "-"], input=program, capture_output=True,
                             text=True, env=self.environment, check=False)
        if run.returncode == 0:
            return None
        # Some compilers write the namespace before every name, others never do.
        return run.stderr.replace("Optrella::", "") or "(no message)"


def failure(case, compiler):
    """Why the case fails, or nothing when it passes."""
    expected = case.expected(compiler.family)
    marks = {mark for mark, _ in case.lines}
    if not expected or not (case.refused_flags or {"-", "+"} <= marks):
        return "a case needs an expected text, a line marked - and a line marked +, or refused flags"
    refusal = compiler.messages(case.program("-"), case.flags + case.refused_flags)
    if refusal is None:
        return "is accepted"
    seen = "\n".join(refusal.splitlines()[:SEEN_LINES])
    for text in expected:
        if text not in seen:
            return f"{text!r} is not among the first {SEEN_LINES} lines:\n{seen}"
    reason = compiler.messages(case.program("+"), case.flags)
    if reason is not None:
        return f"is refused even when it is put right:\n{reason}"
    return None


def main():
    arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    arguments.add_argument("compiler")
    arguments.add_argument("--include", default=HEADERS, help="where Optrella/Optrella.hpp lies")
    arguments.add_argument("names", nargs="*", help="cases; all when none is named")
    options = arguments.parse_args()

    compiler = Compiler(options.compiler, options.include)
    cases = read_cases(CASES)
    unknown = set(options.names) - {case.name for case in cases}
    if unknown:
        sys.exit(f"refused_test: no such case: {', '.join(sorted(unknown))}")
    if options.names:
        cases = [case for case in cases if case.name in options.names]

    start = time.monotonic()
    failures = 0
    with concurrent.futures.ThreadPoolExecutor(JOBS) as pool:
        for case, why in zip(cases, pool.map(lambda each: failure(each, compiler), cases)):
            print(f"{case.name} ... {'ok' if why is None else 'FAIL'}", flush=True)
            if why is not None:
                failures += 1
                print(f"  {why}")
    print("-" * 70)
    print(f"Ran {len(cases)} cases with {compiler.family} in {time.monotonic() - start:.1f}s\n")
    print(f"FAILED (failures={failures})" if failures or not cases else "OK")
    return 1 if failures or not cases else 0


if __name__ == "__main__":
    sys.exit(main())
