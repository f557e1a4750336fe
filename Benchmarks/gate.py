"""The gate: our own instructions and heap figures against the limits that are checked in, and what they
are to tools by hand against what they must be.

They are those of one compiler, and valgrind counts them the same on every run.
"""

import json
import pathlib
import re

import measure
import rows
from measure import HELP, MATCH, MATCH_ITEMS, WHOLE, declaring

LIMITS = pathlib.Path(__file__).with_name("limits.json")
SLACK = 1.03
FAR_BELOW = 0.9


def compiler():
    cache = (measure.BUILD / "CMakeCache.txt").read_text()
    path = re.search(r"^CMAKE_CXX_COMPILER:\w+=(.*)", cache, re.MULTILINE)[1]
    version = measure.run([path, "--version"]).splitlines()[0]
    return re.sub(r"^c\+\+ ", "g++ ", version)  # the same compiler by its other name


def measured():
    figures = {"declare 100: instructions": declaring("optrella", 100),
               "declare 1000: instructions": declaring("optrella", 1000),
               "declare 100 at run time: instructions": declaring("optrella", 100, "made")}
    for commands in ("plain-10", "plain-100", "plain-1000", "distinct-100", "alike-100", "accented-100"):
        figures[f"match {commands}: instructions"] = measure.instructions(
            f"optrella-{commands}", MATCH, measure.command_line(commands))
    other_spelling = measure.decomposed(measure.command_line("accented-100"))
    figures["match accented-100 in the other spelling: instructions"] = measure.instructions(
        "optrella-accented-100", MATCH, other_spelling)
    figures["help 100: instructions"] = measure.instructions("optrella-plain-100", HELP, ["help"])
    given, items = measure.command_line("plain-100"), ["items", "10000"]
    figures["match 10000 items: instructions"] = measure.instructions("optrella-items", MATCH_ITEMS, items)
    for what, tool, arguments in (("match 100", "plain-100", given), ("help 100", "plain-100", ["help"]),
                                  ("match 10000 items", "items", items)):
        heap = measure.counted(tool, arguments)
        figures[f"{what}: heap calls"] = heap["calls"]
        figures[f"{what}: heap bytes"] = heap["bytes"]
    for what, tool in (("declare 100", "plain-100"), ("declare 100 at run time", "made-100")):
        heap = measure.counted(tool, ["help"])
        figures[f"{what}: heap calls"] = heap["declare calls"]
        figures[f"{what}: heap bytes"] = heap["declare bytes"]
    for count in (10, 100):
        figures[f"runTool {count}, the process: instructions"] = measure.instructions(
            f"runtool-static-{count}", WHOLE, measure.command_line(f"plain-{count}"))
    for _, question, count, arguments, _ in rows.QUESTIONS:
        figures[f"{question} {count}, {len(arguments)} arguments: instructions"] = measure.instructions(
            f"questions-{count}", WHOLE, [question, *arguments])
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


def compare_ratios():
    """Whether all ratios are what they must be."""
    ratios = rows.gated_ratios()
    for row in ratios:
        print(f"{row.verdict()}: {row.quantity}: {row.form.format(row.value)}, must be at most {row.must}")
    return all(row.verdict() != "MISSED" for row in ratios)


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
    is_below = compare(figures, limits["limits"])
    return compare_ratios() and is_below
