"""The rows of the performance table: each a quantity with what it must and what it should reach."""

import dataclasses
import math
import pathlib
import re

import measure
from measure import (BUILD, HELP, MATCH, MATCH_ITEMS, PARSE, PARSE_ITEMS, WHOLE, counted, declaring,
                     instructions)

PEERS = ["popt", "cli11", "cxxopts", "boost", "tclap", "args", "gflags", "abseil"]

# The loader and the kernel's own page count for none.
ORDINARY_LIBRARIES = {"libstdc++", "libgcc_s", "libm", "libc",
                      "linux-vdso", "ld-linux-x86-64", "ld-linux-aarch64"}


@dataclasses.dataclass
class Row:
    number: str
    quantity: str
    value: float | None  # None: not measured, and the detail says why
    must: float | None  # None: reported, beside a row that has bounds
    aim: float | None
    detail: str
    form: str = "{:.2f}×"
    at_least: bool = False
    both: str = ""  # what both sides do; empty where there is but one

    def verdict(self):
        if self.value is None:
            return "not measured"
        if self.must is None:
            return "reported"
        if self.reaches(self.aim):
            return "aim"
        return "must" if self.reaches(self.must) else "MISSED"

    def reaches(self, bound):
        return self.value >= bound if self.at_least else self.value <= bound

    def cells(self):
        sign = "≥ " if self.at_least else "≤ "
        value = "-" if self.value is None else self.form.format(self.value)
        bounds = ["-" if bound is None else sign + self.form.format(bound) for bound in (self.must, self.aim)]
        return [self.number, self.quantity, value, *bounds, self.verdict(), self.detail]


def ours(count):
    return f"optrella-plain-{count}"


def given(count, parser="optrella"):
    return measure.command_line(f"plain-{count}", parser)


def matched(commands):
    return instructions(f"optrella-{commands}", MATCH, measure.command_line(commands))


def parsed(parser, count):
    return instructions(f"{parser}-plain-{count}", PARSE, given(count, parser))


def declared_and_parsed(parser, count):
    """Everything from the declarations to the five values; nothing when the peer is not there."""
    if not measure.is_built(f"{parser}-plain-{count}"):
        return None
    parse = matched(f"plain-{count}") if parser == "optrella" else parsed(parser, count)
    return declaring(parser, count) + parse


def ratio(number, quantity, value, other, must, aim, at_least=False, both="", form="{:.2f}×"):
    """A row of ours against another, or with at_least of another against ours."""
    if other is None:
        return Row(number, quantity, None, must, aim, "the peer is not installed", at_least=at_least)
    quotient = other / value if at_least else value / other
    return Row(number, quantity, quotient, must, aim, f"{value:,} against {other:,}", form, at_least,
               both)


def heap_rows():
    few, many = counted("plain-100", given(100)), counted("plain-1000", given(1000))
    yield Row("1", "heap calls per declaration that does not fit", (many["calls"] - few["calls"]) / 900, 0, 0,
              f"{few['calls']} calls at N=100, {many['calls']} at N=1000", "{:.3g}")
    sixteen = counted("items", ["items", "15"])
    yield Row("2", "heap calls of a match, its fetches included, both threads",
              max(few["calls"], sixteen["calls"]), 3, 1,
              f"{few['calls']} with 6 parameters given, {sixteen['calls']} with 16", "{:.0f}")


VALUES = ("argv to the five values in the tool's hands: the command by its word, the options, the number "
          "converted, the mode one of five, the file asked for; texts that the tool owns. Left out on both: "
          "the worker, and what the tool does with the values")


def match_ratios():
    for number, count, must, aim in (("3", 100, 1.6, 1.2), ("4", 1000, 1.05, 0.8)):
        yield ratio(number, f"match and fetch at N={count}, against getopt_long by hand",
                    matched(f"plain-{count}"), parsed("getopt", count), must, aim, both=VALUES)


def match_rows():
    yield from match_ratios()
    for number, words, quantity, must, aim in (("5a", "distinct", "rejected at once", 25, 10),
                                               ("5b", "alike", "same length and 7 bytes", 250, 100)):
        few, many = matched(f"{words}-10"), matched(f"{words}-100")
        yield Row(number, f"instructions per further declaration that does not fit: {quantity}",
                  (many - few) / 90, must, aim, f"{few:,} at N=10, {many:,} at N=100", "{:.0f}")


DECLARED = ("the process that only declares, less the same one without declarations: the loader's relocations, "
            "code before main and at the exit; then as in row 3")


def parse_rows():
    for number, count, must, aim in (("6a", 10, 2.0, 1.0), ("6b", 100, 2.5, 1.5)):
        yield ratio(number, f"declare + parse at N={count}, against popt",
                    declared_and_parsed("optrella", count), declared_and_parsed("popt", count), must, aim,
                    both=DECLARED + "; popt: constant tables, one context for the command that is given")
    for number, parser, must, aim in (("7a", "cli11", 100, 150), ("7b", "boost", 28, 40)):
        yield ratio(number, f"declare + parse at N=100, times fewer than {parser}",
                    declared_and_parsed("optrella", 100), declared_and_parsed(parser, 100), must, aim,
                    at_least=True, both=DECLARED)


def declaration_rows():
    for number, tool, quantity, calls, size in (("8a", "plain", "constants", 0, 0),
                                                ("8b", "made", "made at run time", 3, 1307)):
        few, many = counted(f"{tool}-10", ["help"]), counted(f"{tool}-100", ["help"])
        grown = [(many[f"declare {what}"] - few[f"declare {what}"]) / 90 for what in ("calls", "bytes")]
        # The loader keeps the tool's name, of which one byte more is no command's.
        if abs(grown[1]) <= 1 / 90:
            grown[1] = 0
        yield Row(number, f"heap calls per declared command, {quantity}", grown[0], calls, calls,
                  "growth from N=10 to 100", "{:.1f}")
        yield Row(number, f"heap bytes per declared command, {quantity}", grown[1], size, size,
                  "growth from N=10 to 100, as asked for", "{:.0f}")


def exponent(number, quantity, few, many, factor):
    grown = math.log(many / few) / math.log(factor)
    return Row(number, f"growth exponent of {quantity}", grown, 1.05, 1.0, f"{few:,} to {many:,}", "{:.3f}")


def matched_items(count):
    return instructions("optrella-items", MATCH_ITEMS, ["items", str(count)])


def growth_rows():
    yield exponent("9a", "declaring, N=100 to 1000", declaring("optrella", 100), declaring("optrella", 1000), 10)
    yield exponent("9b", "matching, N=100 to 1000", matched("plain-100"), matched("plain-1000"), 10)
    yield exponent("9c", "help, N=100 to 1000", instructions(ours(100), HELP, ["help"]),
                   instructions(ours(1000), HELP, ["help"]), 10)
    yield exponent("9d", "matching, M=1000 to 100 000", matched_items(1000), matched_items(100000), 100)


def item_ratio():
    by_hand = instructions("getopt-items", PARSE_ITEMS, ["items", "100000"])
    return ratio("10a", "match at M=100 000, against getopt_long", matched_items(100000), by_hand, 2.2, 1.5,
                 both="argv to the number of items and the last one; ours counts them in the list that the "
                      "action is given, by hand they are put into a vector of pointers")


def item_rows():
    yield item_ratio()
    heap = counted("items", ["items", "100000"])
    yield Row("10b", "heap bytes per item at M=100 000", heap["bytes"] / 100000, 256, 64,
              f"asked for in {heap['calls']:,} calls", "{:.0f}")


def help_ratio():
    return ratio("11a", "help at N=100, against fprintf by hand", instructions(ours(100), HELP, ["help"]),
                 instructions("getopt-plain-100", HELP, ["help"]), 0.95, 0.8,
                 both="the same bytes to stdout; by hand one fprintf a command, with the texts from a table")


def help_rows():
    yield help_ratio()
    listing = instructions(ours(100), HELP, ["help"])
    pasted = instructions("pasted-plain-100", HELP, ["help"])
    yield Row("11a", "the same, against help texts pasted as literals", listing / pasted, None, None,
              f"{listing:,} against {pasted:,}", both="the same bytes to stdout; by hand one fputs a command")
    peers = {parser: instructions(f"{parser}-plain-100", HELP, ["help"])
             for parser in PEERS if measure.is_built(f"{parser}-plain-100")}
    best = min(peers, key=peers.get, default=None)
    yield ratio("11b", f"help at N=100, times fewer than the best peer ({best})", listing, peers.get(best),
                8, 13, at_least=True)


def process_rows():
    arguments = given(10)
    yield ratio("12", "whole process, static libstdc++, against an empty C main",
                instructions("optrella-static-10", WHOLE, arguments), instructions("empty", WHOLE), 1.5, 1.4,
                both="the process; ours declares ten commands, runs one with five options on its worker")
    yield ratio("13", "whole process, shared libstdc++, against the getopt_long tool",
                instructions("optrella-shared", WHOLE, arguments),
                instructions("getopt-shared", WHOLE, arguments), 1.025, 1.015, form="{:.3f}×",
                both="the process with the same libraries loaded; ours runs the command on its worker")
    loaded = {pathlib.Path(line.split()[0]).name.split(".so")[0]
              for line in measure.run(["ldd", BUILD / "optrella-shared"]).splitlines()}
    further = sorted(loaded - ORDINARY_LIBRARIES)
    yield Row("14", "further shared objects at start", len(further), 0, 0, ", ".join(further) or "none",
              "{:.0f}")
    word = arguments[0]
    idle = {"no fit": [word, "--unknown"], "help": ["help"], "failed validation": [word, "-m", "wrong"]}
    threads = {name: counted("plain-10", each)["threads"] for name, each in idle.items()}
    detail = ", ".join(f"{name}: {count}" for name, count in threads.items())
    yield Row("15", "threads started when nothing runs", sum(threads.values()), 0, 0,
              f"{detail}; a command that runs: {counted('plain-10', arguments)['threads']}", "{:.0f}")


def compiling(headers, rounds):
    """Medians of the seconds that a file takes which includes no more than a header."""
    commands = {}
    for header in headers:
        source = BUILD / f"include-{pathlib.Path(header).stem}.cpp"
        source.write_text(f"#include <{header}>\nint main() {{}}\n")
        commands[header] = ["g++", "-std=c++20", "-O2", "-I", measure.ROOT / "Sources",
                            "-c", source, "-o", "/dev/null"]
    return [processor for _, processor in measure.in_rounds(commands, rounds).values()]


def compile_row(rounds=5):
    row = Row("16", "compiling the smallest file, times faster than CLI11", None, 12, 50,
              "the peer is not installed", at_least=True)
    if not measure.is_built("cli11-plain-10"):
        return row
    ours, peer = compiling(["Optrella/Optrella.hpp", "CLI/CLI.hpp"], rounds)
    row.value = peer / ours
    row.detail = f"{ours:.2f} s against {peer:.2f} s of the processor, medians of {rounds}"
    return row


def stripped(tool):
    small = BUILD / f"{tool}.stripped"
    measure.run(["strip", "-o", small, BUILD / tool])
    return small.stat().st_size


def size_row():
    table = re.compile(r"^\w+ (\w+) [rRdD] utf8proc_", re.MULTILINE)
    symbols = measure.run(["nm", "-S", BUILD / "smallest-optrella"])
    tables = sum(int(size, 16) for size in table.findall(symbols))
    tool, nothing = stripped("smallest-optrella"), stripped("smallest-nothing")
    return Row("17", "bytes that the library adds to a stripped tool", tool - nothing - tables,
               100_000, 70_000,
               f"{tool:,} - {nothing:,} of an empty tool - {tables:,} of utf8proc's tables", "{:,.0f}")


def accented_rows():
    typed = measure.command_line("accented-100")
    for number, arguments, quantity, must, aim in (
            ("18a", typed, "typed as declared", 80_000, 20_000),
            ("18b", measure.decomposed(typed), "in the other spelling", 120_000, 40_000)):
        value = instructions("optrella-accented-100", MATCH, arguments)
        yield Row(number, f"match and fetch at N=100, accented words, {quantity}", value, must, aim,
                  f"{matched('plain-100'):,} for ASCII words", "{:,.0f}")


# Each is asked of a tool whose commands all share five options and an operand: what, of how many
# commands, with which arguments, and in how many milliseconds of the processor, the process included.
QUESTIONS = [
    ("19a", "explain", 500, ["enable-hots", "--nmae", "x"], 5),
    ("19b", "explain", 10, ["add-account", *(f"item{number}" for number in range(10000))], 50),
    ("19c", "complete", 500, [], 10),
    ("19d", "complete", 500, ["--name"], 10),
    ("19e", "lint", 100, [], 50),
    ("19f", "lint", 500, [], 1000),
    ("19g", "answer", 500, [""], 10),
]


def question_rows(rounds=5):
    commands = {number: [BUILD / f"questions-{count}", question, *arguments]
                for number, question, count, arguments, _ in QUESTIONS}
    seconds = measure.in_rounds(commands, rounds)
    for number, question, count, arguments, must in QUESTIONS:
        yield Row(number, f"{question} at N={count}, {len(arguments):,} arguments", seconds[number][1] * 1000, must,
                  must / 2, f"milliseconds of the processor, the whole process; median of {rounds}", "{:.1f} ms")


def run_tool_ratios():
    for number, count, must in (("20a", 10, 1.1), ("20b", 100, 1.3)):
        answers = {measure.run([BUILD / f"{tool}-static-{count}", *given(count)]) for tool in ("optrella", "runtool")}
        if len(answers) != 1:
            raise SystemExit(f"runTool and parse answer differently: {answers}")
        yield ratio(number, f"whole process of runTool at N={count}, static libstdc++, against parse",
                    instructions(f"runtool-static-{count}", WHOLE, given(count)),
                    instructions(f"optrella-static-{count}", WHOLE, given(count)), must, (1 + must) / 2,
                    both="the process that runs the command in the middle with five options on its worker")


def unused_row():
    tool, core = stripped("smallest-optrella"), stripped("smallest-core")
    return Row("20d", "bytes of runTool in a tool that does not call it", tool - core, 0, 0,
               f"{tool:,}, and {core:,} when it is linked without runTool and what only that needs", "{:,.0f}")


def run_tool_rows(rounds=9):
    yield from run_tool_ratios()
    tool, core = stripped("smallest-static-runtool"), stripped("smallest-static-optrella")
    yield Row("20c", "bytes that runTool adds to a stripped tool, static libstdc++", tool - core, 150_000, 120_000,
              f"{tool:,} against {core:,} with parse and displayHelp", "{:,.0f}")
    yield unused_row()
    core, tool = compiling(["Optrella/Optrella.hpp", "Optrella/Tool.hpp"], rounds)
    yield Row("20e", "compiling a file that includes Tool.hpp, against Optrella.hpp", tool / core, 1.3, 1.2,
              f"{tool:.2f} s against {core:.2f} s of the processor, medians of {rounds}")


def gated_ratios():
    """Both sides are counted in one run, so that no compiler is to blame."""
    return [*match_ratios(), item_ratio(), help_ratio(), *run_tool_ratios(), unused_row()]


def all_rows():
    for rows in (heap_rows, match_rows, parse_rows, declaration_rows, growth_rows, item_rows, help_rows,
                 process_rows):
        yield from rows()
    yield compile_row()
    yield size_row()
    yield from accented_rows()
    yield from question_rows()
    yield from run_tool_rows()


# ---- Every parser beside the others ----

def side_by_side(rounds=101):
    """For each parser and N: instructions of declaring, parsing, help and the process; its time."""
    tools = {(parser, count): f"{parser}-plain-{count}" for count in (10, 100)
             for parser in ["optrella", "getopt", *PEERS] if measure.is_built(f"{parser}-plain-{count}")}
    measure.check_answers(tools.values())
    measure.check_help()
    commands = {key: [BUILD / tool, *given(key[1], key[0])] for key, tool in tools.items()}
    seconds = measure.in_rounds({"empty": [BUILD / "empty"], **commands}, rounds)

    def times(key):
        return [f"{each * 1e6:.0f} µs" for each in seconds[key]]

    yield ["parser", "N", "declare", "parse", "help", "whole process", "wall time", "processor time"]
    yield ["an empty C main", "", "", "", "", f"{instructions('empty', WHOLE):,}", *times("empty")]
    for (parser, count), tool in tools.items():
        arguments = given(count, parser)
        parse = MATCH if parser == "optrella" else PARSE
        figures = [declaring(parser, count), instructions(tool, parse, arguments),
                   instructions(tool, HELP, ["help"]), instructions(tool, WHOLE, arguments)]
        yield [parser, str(count), *(f"{figure:,}" for figure in figures), *times((parser, count))]
