#!/usr/bin/python3
"""Feeds drawn cases about tools to the behaviour runner and compares its observations with the model's.

    tool_test.py RUNNER [--cases N] [--seed S | --seed random] [--call explain|complete|lint|runTool]

Exit status 1 when one case differs; a differing case is reduced to a small one first. The number of cases
comes from OPTRELLA_GENERATED_CASES where --cases does not give it.
"""

import argparse
import collections
import json
import os
import random
import sys

import comparing
import generator
import shrinking
import tool_generator
import tools

BLOCK = 500
REPORTED_AT_MOST = 5


def main():
    options = options_of(sys.argv[1:])
    print(f"seed {options.seed}, {options.cases} cases", flush=True)
    with generator.Playground():
        test = Test([options.runner])
        test.run(tool_generator.Generator(options.seed), options.cases, options.call)
        return test.report(options)


def options_of(arguments):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("runner")
    parser.add_argument("--cases", type=int,
                        default=int(os.environ.get("OPTRELLA_GENERATED_CASES", "3000")))
    parser.add_argument("--seed", default="1")
    parser.add_argument("--call", choices=tool_generator.CALLS)
    options = parser.parse_args(arguments)
    options.runner = os.path.abspath(options.runner)
    if not os.access(options.runner, os.X_OK):
        parser.error(f"there is no program {options.runner}")
    if options.cases < 1:
        parser.error("--cases must be at least 1")
    options.seed = random.SystemRandom().randrange(2**32) if options.seed == "random" else int(
        options.seed)
    return options


class Test:
    def __init__(self, runner):
        self.runner = runner
        self.compared = collections.Counter()
        self.left_out = 0
        self.differing = []

    def run(self, cases, count, call=None):
        drawn = 0
        while drawn < count and not self.differing:
            block = [cases.next_case(call) for _ in range(min(BLOCK, count - drawn))]
            drawn += len(block)
            judged = self.judged(block)
            self.left_out += len(block) - len(judged)
            self.compared.update(case["call"] for case, _ in judged)
            self.differing += [case for case, _ in self.differing_of(judged)]

    @staticmethod
    def judged(cases):
        judged = [(case, tools.observation_of(case)) for case in cases]
        return [(case, expected) for case, expected in judged if expected is not None]

    def differing_of(self, judged):
        observed = comparing.observe(self.runner, [case for case, _ in judged])
        return [(case, fault) for (case, expected), seen in zip(judged, observed)
                if (fault := tools.difference(case, expected, seen))]

    def first_failing(self, cases):
        return next((case for case, _ in self.differing_of(self.judged(cases))), None)

    # reporting

    def report(self, options):
        for case in self.small_differing():
            self.print_difference(case)
        if self.left_out:
            print(f"left out: {self.left_out} cases that the model does not judge")
        compared = sum(self.compared.values())
        print(f"{len(self.differing)} of {compared} cases differ: {dict(sorted(self.compared.items()))}")
        if self.differing:
            call = f" --call {options.call}" if options.call else ""
            print(f"again with: --seed {options.seed} --cases {options.cases}{call}")
        return 1 if self.differing or not compared or self.left_out > compared else 0

    def small_differing(self):
        """Several cases often come down to the same small one."""
        small = []
        for case in self.differing[:REPORTED_AT_MOST]:
            case = shrinking.shrunk(case, self.first_failing)
            if case not in small:
                small.append(case)
        return small

    def print_difference(self, case):
        expected = tools.observation_of(case)
        observed = comparing.observe(self.runner, [case])[0]
        print("\ncase:     " + json.dumps(case))
        print("expected: " + json.dumps(expected))
        print("observed: " + json.dumps(observed))
        print(tools.difference(case, expected, observed) or "differs no more: not repeatable", "\n")


if __name__ == "__main__":
    sys.exit(main())
