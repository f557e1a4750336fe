"""The gate: our own instructions and heap figures against the limits that are checked in.

They are those of one compiler, and valgrind counts them the same on every run.
"""

import json
import pathlib
import re

import measure
from measure import COMPLETE, DECLARE, HELP, MATCH

LIMITS = pathlib.Path(__file__).with_name("limits.json")
SLACK = 1.03
FAR_BELOW = 0.9


def compiler():
    cache = (measure.BUILD / "CMakeCache.txt").read_text()
    path = re.search(r"^CMAKE_CXX_COMPILER:\w+=(.*)", cache, re.MULTILINE)[1]
    version = measure.run([path, "--version"]).splitlines()[0]
    return re.sub(r"^c\+\+ ", "g++ ", version)  # the same compiler by its other name


def measured():
    figures = {}
    for count in (10, 100, 1000):
        tool, given = f"optrella-plain-{count}", measure.command_line(f"plain-{count}")
        figures[f"declare {count}: instructions"] = measure.instructions(tool, DECLARE)
        figures[f"match {count}: instructions"] = measure.instructions(tool, MATCH, given)
    given = measure.command_line("plain-100")
    figures["complete 100: instructions"] = measure.instructions("optrella-plain-100", COMPLETE, given)
    figures["help 100: instructions"] = measure.instructions("optrella-plain-100", HELP, ["help"])
    for words in ("distinct-100", "alike-100"):
        figures[f"match {words}: instructions"] = measure.instructions(
            f"optrella-{words}", MATCH, measure.command_line(words))
    items = ["items", "10000"]
    figures["match 10000 items: instructions"] = measure.instructions("optrella-items", MATCH, items)
    for what, tool, arguments in (("match 100", "plain-100", given), ("help 100", "plain-100", ["help"]),
                                  ("match 10000 items", "items", items)):
        heap = measure.counted(tool, arguments)
        figures[f"{what}: heap calls"] = heap["calls"]
        figures[f"{what}: heap bytes"] = heap["bytes"]
    heap = measure.counted("plain-100", ["help"])
    figures["declare 100: heap calls"] = heap["declare calls"]
    figures["declare 100: heap bytes"] = heap["declare bytes"]
    return figures


def compare(figures, limits):
    """Prints what is above its limit, or far below it; whether all are within."""
    above = 0
    for name, figure in figures.items():
        limit = limits[name]
        if figure > limit * SLACK:
            above += 1
            print(f"ABOVE: {name}: {figure:,}, the limit is {limit:,} and {SLACK - 1:.0%}")
        elif figure < limit * FAR_BELOW:
            print(f"far below: {name}: {figure:,}, the limit is {limit:,}: tighten it with --gate --update")
    print(f"gate: {len(figures)} figures, {above} above their limits")
    return above == 0


def run(update):
    """Whether no figure is above its limit."""
    measure.build("gate")
    if update:
        LIMITS.write_text(json.dumps({"compiler": compiler(), "limits": measured()}, indent=2) + "\n")
        return True
    limits = json.loads(LIMITS.read_text())
    if compiler() != limits["compiler"]:
        print(f"skipped: the limits are those of {limits['compiler']}; here is {compiler()}")
        return True
    figures = measured()
    if figures.keys() != limits["limits"].keys():
        print("The figures and the limits are not the same ones: write the limits with --gate --update")
        return False
    return compare(figures, limits["limits"])
