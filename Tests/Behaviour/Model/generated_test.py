#!/usr/bin/python3
"""Feeds generated cases to the behaviour runner and compares its observations with the model's.

    generated_test.py --runner PATH [--count N] [--seed S | --seed random] [--statistics]

Exit status 1 when one case differs. A differing case is reduced to a small one first. The count
comes from OPTRELLA_GENERATED_CASES where --count does not give it. The same seed and count give
the same cases everywhere.
"""

import argparse
import collections
import json
import os
import random
import subprocess
import sys

import comparing
import generator
import rules
import shrinking
import texts
from kinds import KINDS

BLOCK = 1000
REPORTED_AT_MOST = 5


def main():
    options = options_of(sys.argv[1:])
    if missing := kinds_without_model(options.runner):
        print(f"FAILED: kinds.py has no model of {', '.join(missing)}")
        return 1
    print(f"seed {options.seed}, {options.count} cases", flush=True)
    with generator.Playground() as playground:
        test = Test([options.runner], playground.here)
        test.run(generator.Generator(options.seed), options.count)
        return test.report(options)


def options_of(arguments):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--runner", required=True)
    parser.add_argument("--count", type=int,
                        default=int(os.environ.get("OPTRELLA_GENERATED_CASES", "3000")))
    parser.add_argument("--seed", default="1")
    parser.add_argument("--statistics", action="store_true")
    options = parser.parse_args(arguments)
    options.runner = os.path.abspath(options.runner)
    if not os.access(options.runner, os.X_OK):
        parser.error(f"there is no program {options.runner}")
    if options.count < 1:
        parser.error("--count must be at least 1")
    options.seed = random.SystemRandom().randrange(2**32) if options.seed == "random" else int(
        options.seed)
    return options


def kinds_without_model(runner):
    named = subprocess.run([runner, "--kinds"], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                           check=True, text=True).stdout
    return [kind for kind in named.split() if kind not in KINDS]


class Test:
    def __init__(self, runner, here):
        self.runner = runner
        self.here = here
        self.run_cases = 0
        self.differing = []
        self.left_out = collections.Counter()
        self.shares = collections.Counter()

    def run(self, cases, count):
        while self.run_cases < count and not self.differing:
            self.run_block([cases.next_case() for _ in range(min(BLOCK, count - self.run_cases))])
            if sum(self.left_out.values()) > count:
                sys.exit(f"more cases are left out than compared: {dict(self.left_out)}")

    def run_block(self, block):
        judged = [(case, expected) for case, expected in map(self.judged, block)
                  if expected is not None]
        placed = [self.placed(case) for case, _ in judged]
        for (case, expected), observed in zip(judged, comparing.observe(self.runner, placed)):
            self.run_cases += 1
            self.count(case, expected)
            if comparing.difference(expected, observed):
                self.differing.append(case)

    def placed(self, case):
        return generator.placed(case, self.here)

    def judged(self, case):
        placed = self.placed(case)
        if generator.is_undecided(placed):
            self.left_out["a path with more than one right answer"] += 1
            return case, None
        expected = comparing.expectation_of(placed)
        if expected is None:
            self.left_out["a root command, which would ask this user for a password"] += 1
        return case, expected

    # shrinking

    def first_failing(self, cases):
        """The first case that differs; of those that the model can judge."""
        judged = [case for case in cases if not generator.is_undecided(self.placed(case))]
        judged = [(case, comparing.expectation_of(self.placed(case))) for case in judged]
        judged = [(case, expected) for case, expected in judged if expected is not None]
        observed = comparing.observe(self.runner, [self.placed(case) for case, _ in judged])
        return next((case for (case, expected), seen in zip(judged, observed)
                     if comparing.difference(expected, seen)), None)

    # reporting

    def count(self, case, expected):
        self.shares["call " + case["call"]] += 1
        if expected["stopped"]:
            self.shares["stopped"] += 1
        if not json.dumps(case, ensure_ascii=False).isascii():
            self.shares["beyond ASCII"] += 1
        if '{"hex"' in json.dumps(case):
            self.shares["bytes that are not UTF-8"] += 1
        if case["call"] == "parse":
            self.count_parse(self.placed(case), expected)

    def count_parse(self, case, expected):
        declared = rules.declarations_of(case)
        arguments = rules.texts_of(case["arguments"])[1:]
        output = rules.Output()
        fits = rules.fits_of(declared, arguments, output)
        seen = {
            "no command line": not arguments,
            "fits none": arguments and not fits,
            "fits exactly one": arguments and len(fits) == 1,
            "fits several": arguments and len(fits) > 1,
            "a value is missing": output.written,
            "the action ran": expected.get("ran") is not None,
            "a value is refused": "Validation of" in texts.from_json(expected["stdout"]),
            "something is escaped": "\\" in texts.from_json(expected["stdout"]),
            "fits by a canonical twin": any(is_spelled_otherwise(fit, arguments) for fit in fits),
            "fits by a repeated tag": any(map(lacks_a_required_one, fits)),
            "one list has two owners": any(has_two_owners(declaration, argument)
                                           for declaration in declared for argument in arguments),
        }
        self.shares.update("parse: " + name for name, holds in seen.items() if holds)

    def report(self, options):
        for reason, count in self.left_out.items():
            print(f"left out: {count} cases with {reason}")
        if options.statistics:
            self.print_shares()
        for case in self.small_differing():
            self.print_difference(case)
        print(f"{len(self.differing)} of {self.run_cases} cases differ")
        if self.differing:
            print(f"again with: --seed {options.seed} --count {options.count}")
        return 1 if self.differing or not self.run_cases else 0

    def small_differing(self):
        """Several cases often come down to the same small one."""
        small = []
        for case in self.differing[:REPORTED_AT_MOST]:
            case = shrinking.shrunk(case, self.first_failing)
            if case not in small:
                small.append(case)
        return small

    def print_shares(self):
        parses = self.shares["call parse"]
        for name, count in sorted(self.shares.items()):
            whole = parses if name.startswith("parse:") else self.run_cases
            print(f"{name:36}{count:8}{100 * count / whole:7.1f} %")

    def print_difference(self, case):
        placed = self.placed(case)
        expected = comparing.expectation_of(placed)
        observed = comparing.observe(self.runner, [placed])[0]
        print("\ncase:     " + json.dumps(case))
        print("expected: " + json.dumps(expected))
        print("observed: " + json.dumps(observed))
        print(comparing.difference(expected, observed) or "differs no more: not repeatable", "\n")


def is_spelled_otherwise(fit, arguments):
    return any(all(tag not in arguments for tag in parameter.tags) for parameter in fit.given())


def lacks_a_required_one(fit):
    return any(rules.found(parameter, fit.required) is None
               for parameter in fit.declaration.required)


def has_two_owners(declaration, argument):
    owners = [sum(any(texts.equal(tag, argument) for tag in parameter.tags) for parameter in listed)
              for listed in (declaration.required, declaration.optional)]
    return max(owners) > 1


if __name__ == "__main__":
    sys.exit(main())
