#!/usr/bin/python3
"""Shows manual pages of many tools to the programs that format them.

    manual_page_test.py RUNNER [--tools N] [--seed S | --seed random]

The tools are those of the curated cases, some with odd texts, and N drawn ones. mandoc and groff must say
nothing of any page, and what they show must hold every text of the tool, white space apart.
"""

import argparse
import json
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import tempfile
import unicodedata

import comparing
import generator
import texts
import tool_generator
from kinds import KINDS

CASES = pathlib.Path(__file__).resolve().parent.parent / "Cases"
REPORTED_AT_MOST = 5
SECRET = "not-for-all"  # the help of hidden commands
LONG = "LongWord" * 40

# What a formatter might take for its own.
ODD_TEXTS = (
    ".Sh FAKE", "'br", ".", "..", "...", "\\", "\\\\", "\\fBbold\\fR", "\\&", "\\(em", "\\[u0041]", "\\n(yr",
    "\\*(Tm", "\\c", "\\\"", "\\s+9x\\s0", "Fl", "No", "Ns", "Ar x Op y", "Xr", "%A", "Sh", "Pp", "El", "Bl -tag",
    "Oc", "Ta", "br", "sp", "|", "(", ")", "[", "]", "a, b; c: d", "Why? Because! So.", "e.g. this i.e. that",
    "x.", "(x.)", "x. y", "X. Y. Z", "It ends here. It goes on.", "\"quoted\" 'too'", "``x''", "`x`", "^~", "--",
    "a -- b", "-", "-x --long-option", "a---b", "open() and close()", "()", "f(x)", "see mkfs(8)",
    "FreeBSD 13, OpenBSD and NetBSD", "BSD", "DragonFly", "DragonFlyBSD", "UNIX", "Tn Bx", "$Mdocdate$", "$Id$",
    "tab\there", "two  spaces", " leading", "trailing ", "a\nb", "a\n.Sh b", "a\n'b", "a\n\nb", "a\n  b\n\t- c", "\n\n\na \n \n\t\nb\n\n",
    "\r\n", "a\rb", "\0", "a\x01b\x1bc\x7fd", "\x85\x9f", "\u2028\u2029", "\ufeff", "\ufffe \ufdd0 \U0001ffff",
    "\u00fcber", "e\u0301", "\u65e5\u672c\u8a9e", "\u05e9\u05b8\u05dc\u05d5\u05dd", "\U0001f468\u200d\U0001f469",
    "\u2264 \u00d7 \u2014 \u2019", "\u00a0", "soft\u00adhyphen", "\u200b", "\U00020000 \U0010fffd \ue000",
    b"\xff", b"caf\xe9", b"\xe2\x82", b"a\xc3", b"\xed\xa0\x80", b"\xf4\x90\x80\x80",
    LONG, "word " * 60, "\u00e4" * 100, "- " * 50, "%", "%s %n {0}", "1.", "1)", "a=b", "#", ".\\\" no comment",
    "Tn", "EE", ".TS\nl.\nx\n.TE", ".EQ", "ends with \\", "{", "\\{\\", "\\}", "''", "\"", "\"\"", "a\"b", "\\ x",
    "Mr. X said", "1.4.2", "v. 2", "and so on...", "Item 5. Next", "\u201cQuoted.\u201d Next", "x.\u00a0Y", "A. B.",
)


def main():
    options = options_of(sys.argv[1:])
    missing = [name for name in ("mandoc", "groff") if not shutil.which(name)]
    if len(missing) == 2:
        print("skipped: there is neither mandoc nor groff")
        return 0
    for name in missing:
        print(f"skipped: what {name} shows: there is no {name}")
    print(f"seed {options.seed}, {options.tools} drawn tools", flush=True)
    test = Test([options.runner], shutil.which("mandoc"), shutil.which("groff"))
    with tempfile.TemporaryDirectory() as directory:
        test.run(pathlib.Path(directory), tools(options))
    return test.report(options)


def options_of(arguments):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("runner")
    parser.add_argument("--tools", type=int, default=200)
    parser.add_argument("--seed", default="1")
    options = parser.parse_args(arguments)
    options.runner = os.path.abspath(options.runner)
    if not os.access(options.runner, os.X_OK):
        parser.error(f"there is no program {options.runner}")
    options.seed = random.SystemRandom().randrange(2**32) if options.seed == "random" else int(
        options.seed)
    return options


# ---- The tools ----

def tools(options):
    draw = Draw(options.seed)
    return curated_tools() + [odd_tool(text) for text in ODD_TEXTS] + [
        draw.tool_with_odd_texts() for _ in range(options.tools)]


def curated_tools():
    found = {}
    for file in sorted(CASES.glob("*.jsonl")):
        for line in file.read_text().splitlines():
            case = json.loads(line)
            if "tool" in case:
                page = page_of(case["declarations"], case["tool"])
                found[json.dumps(page, sort_keys=True)] = page
    return list(found.values())


def page_of(declarations, tool):
    declarations = [each | {"help": SECRET} if each["hidden"] else each for each in declarations]
    return {"call": "manualPage", "declarations": declarations, "tool": tool}


def odd_tool(text):
    """One text in every place that has one."""
    text = texts.to_json(text) if isinstance(text, str) else {"hex": text.hex()}
    common = {"tagHelp": text, "parameterName": text}
    choices = [{"tags": [text], "tagHelp": text}, {"tags": [text, "x"], "tagHelp": ""}]
    declarations = [
        {"required": [{"kind": "ParameterNone", "tags": [text, "-x", text], "tagHelp": text}], "optional": [
            {"kind": "ParameterList", "tags": ["-l"], "validOptions": choices, **common},
            {"kind": "ParameterList", "tags": ["-m"], "validOptions": [{"tags": [text], "tagHelp": ""}] * 2,
             **common},
            {"kind": "ParameterNumber", "tags": ["-n", text], "min": -5, "max": 5, **common}]},
        {"required": [{"kind": "ParameterString", "tags": [text], **common}],
         "optional": [{"kind": "ParameterUUID", "tags": ["--disk"], **common}]}]
    for declaration in declarations:
        declaration |= {"requiresRoot": True, "help": text, "hidden": False}
    return page_of(declarations, {"name": text, "version": text, "summary": text, "manualSection": 8,
                                  "operands": [{"tag": "--disk", "takes": "rest"}], "repeated": [text]})


class Draw(tool_generator.Generator):
    def tool_with_odd_texts(self):
        declarations = self.tool_declarations(self.pick("explain", "complete", "lint"))
        tool = self.tool(declarations) | {"manualSection": self.pick(1, 8)}
        for key in ("name", "version", "summary"):
            if self.chance(0.5):
                tool[key] = self.odd_text()
        for parameter in generator.parameters_in(declarations):
            for key in ("tagHelp", "parameterName"):
                if key in parameter and self.chance(0.6):
                    parameter[key] = self.odd_text()
            for option in parameter.get("validOptions", ()):
                if self.chance(0.4):
                    option["tagHelp"] = self.odd_text()
        for declaration in declarations:
            if not declaration["hidden"] and self.chance(0.8):
                declaration["help"] = self.odd_text()
        return page_of(declarations, tool)

    def odd_text(self):
        pieces = []
        for _ in range(self.pick(1, 1, 2, 3, 12)):
            piece = self.pick(*ODD_TEXTS, *ODD_TEXTS, *generator.ESCAPED, *generator.UNESCAPED,
                              *generator.NOT_UTF8, *generator.CLUSTERS, *generator.WORDS)
            pieces.append(piece if isinstance(piece, bytes) else piece.encode())
        text = self.pick(b"", b" ", b"\n").join(pieces)
        try:
            return text.decode()
        except UnicodeDecodeError:
            return {"hex": text.hex()}


# ---- What must be shown ----

def shown_texts(case):
    """All that a page must hold."""
    tool = case["tool"]
    yield from (tool.get(key, "") for key in ("name", "version"))
    yield without_stop(tool.get("summary", ""))
    for declaration in case["declarations"]:
        if not declaration["hidden"]:
            yield declaration["help"]
            for parameter in declaration["required"] + declaration["optional"]:
                yield from texts_of_parameter(parameter, operand_tags(tool))


def without_stop(summary):
    return summary[:-1] if isinstance(summary, str) and summary.endswith(".") else summary


def operand_tags(tool):
    return {canonical(operand["tag"]) for operand in tool.get("operands", ())}


def canonical(text):
    return unicodedata.normalize("NFD", text) if isinstance(text, str) else text["hex"]


def texts_of_parameter(parameter, operands):
    has_value = KINDS[parameter["kind"]].has_parameter
    if not parameter["tags"] and not has_value:
        return
    yield parameter["tagHelp"]
    is_operand = has_value and not operands.isdisjoint(map(canonical, parameter["tags"]))
    if not is_operand:  # whose tags are not shown
        yield from parameter["tags"]
    for option in parameter.get("validOptions", ()):
        if option["tags"]:
            yield option["tags"][0]
            yield option["tagHelp"]


# Which of them a formatter shows is its own affair.
def is_seen(character):
    category = unicodedata.category(character)
    return category not in ("Zs", "Zl", "Zp", "Cf", "Cn", "Mn", "Me") and not character.isspace()


def visible(text):
    """Without what shows nothing, and with one replacement for what cannot be shown."""
    if not isinstance(text, str):
        text = bytes.fromhex(text["hex"]).decode(errors="replace")
    text = "".join(" " if it in " \t\n\v\f\r" else "\ufffd" if is_control(it) else it for it in text)
    return "".join(filter(is_seen, unicodedata.normalize("NFD", text)))


def is_control(character):
    point = ord(character)
    return (unicodedata.category(character) == "Cc" or point in (0x2028, 0x2029)
            or 0xfdd0 <= point <= 0xfdef or point & 0xfffe == 0xfffe)


# ---- The programs ----

class Test:
    def __init__(self, runner, mandoc, groff):
        self.runner = runner
        self.mandoc = mandoc
        self.groff = groff
        self.count = 0
        self.faults = []

    def run(self, directory, cases):
        observed = comparing.observe(self.runner, cases)
        for case, seen in zip(cases, observed):
            section = 8 if case["tool"].get("manualSection") == 8 else 1
            page = directory / f"{self.count}.{section}"
            self.count += 1
            fault = self.fault_of(case, seen, page)
            if fault:
                self.faults.append((case, fault))

    def fault_of(self, case, seen, page):
        if seen.keys() != {"value", "stdout", "stderr", "stopped"} or seen["stopped"]:
            return f"observed {seen}"
        if not isinstance(seen["value"], str) or not seen["value"].isascii():
            return "the page is not ASCII"
        page.write_text(seen["value"])
        if self.mandoc:
            fault = self.fault_of_mandoc(case, page)
            if fault:
                return fault
        return self.fault_of_groff(case, page) if self.groff else None

    def fault_of_mandoc(self, case, page):
        said = output_of(self.mandoc, "-T", "lint", "-W", "all", page)
        if said:
            return said
        return missing(case, output_of(self.mandoc, "-T", "utf8", page))

    def fault_of_groff(self, case, page):
        # That a word is longer than a line is nobody's fault. Of its own accord groff hyphenates.
        run = subprocess.run([self.groff, "-mandoc", "-ww", "-Wbreak", "-rHY=0", "-rLL=2000n", "-Tutf8", page],
                             capture_output=True, check=False)
        if run.stderr or run.returncode:
            return "groff: " + run.stderr.decode()
        return missing(case, run.stdout.decode())

    def report(self, options):
        for case, fault in self.faults[:REPORTED_AT_MOST]:
            print(f"\ncase:  {json.dumps(case)}\nfault: {fault}")
        print(f"{len(self.faults)} of {self.count} pages are not as they should be")
        if self.faults:
            print(f"again with: --seed {options.seed} --tools {options.tools}")
        return 1 if self.faults or not self.count else 0


def output_of(*command):
    run = subprocess.run(command, capture_output=True, check=False,
                         env=os.environ | {"LC_ALL": "C.UTF-8"})
    return run.stdout.decode() + run.stderr.decode()


def missing(case, shown):
    """The first text that the formatted page lacks."""
    # Bold and underlined characters are written over each other; groff writes sequences, too.
    page = visible(re.sub(r"\x1b\[[0-9;]*m", "", re.sub(r".\x08", "", shown, flags=re.DOTALL)))
    if SECRET in page:
        return f"a hidden command is shown in:\n{shown}"
    for text in shown_texts(case):
        if visible(text) not in page:
            return f"{text!r} is not shown as {visible(text)!r} in:\n{shown}"
    return None


if __name__ == "__main__":
    sys.exit(main())
