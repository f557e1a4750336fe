#!/usr/bin/env python3
"""Compares what the behaviour runner observes with what the cases expect, byte by byte.

usage: compare.py [--show COUNT] RUNNER [FILE...]

Without files: all of Cases/. Exit status 1 when anything differs, is missing, or went wrong.
"""

import argparse
import json
import os
import pathlib
import pwd
import subprocess
import sys

CASES = pathlib.Path(__file__).resolve().parent / "Cases"
DIRECTORY = "/dev"  # a directory that every system has, with `null` in it
NOBODY = 65534
CONTEXT = 24  # bytes shown on each side of a difference


class Fault(Exception):
    """The files or the runner, not a behaviour, are wrong."""


class Case:
    def __init__(self, file, number, line):
        self.line = line
        self.file = file
        self.number = number
        self.place = f"{file}:{number}"
        try:
            content = json.loads(line)
            self.expect = content["expect"]
            self.says = content.get("says", "")
            self.needs = content.get("needs")
        except (ValueError, TypeError, KeyError, AttributeError) as error:
            raise Fault(f"{self.place}: no case with an expectation: {error!r}") from None
        if not isinstance(self.expect, dict) or not self.expect:
            raise Fault(f"{self.place}: expects nothing")
        if self.needs not in (None, "root", "user"):
            raise Fault(f"{self.place}: needs what is not known: {self.needs!r}")


def read_cases(files):
    cases = []
    for file in files:
        lines = pathlib.Path(file).read_bytes().split(b"\n")
        if lines and not lines[-1]:
            lines.pop()
        if not lines:
            raise Fault(f"{file}: holds no cases")
        cases += [Case(file, number, line) for number, line in enumerate(lines, 1)]
    return cases


# ---- Differences ----

def plain(value):
    """The value with every text that is UTF-8 as a string, so that a text has one form."""
    if isinstance(value, list):
        return [plain(each) for each in value]
    if not isinstance(value, dict):
        return value
    if list(value) == ["hex"] and isinstance(value["hex"], str):
        try:
            return bytes.fromhex(value["hex"]).decode()
        except ValueError:  # not UTF-8
            return {"hex": value["hex"].lower()}
    return {key: plain(each) for key, each in value.items()}


def as_bytes(value):
    """A text is its bytes; of every other value the JSON is compared, in which 1 is not true."""
    value = plain(value)
    if isinstance(value, str):
        return value.encode(errors="surrogatepass")
    if isinstance(value, dict) and list(value) == ["hex"]:
        return bytes.fromhex(value["hex"])
    return json.dumps(value, sort_keys=True, ensure_ascii=False).encode(errors="surrogatepass")


def is_text(value):
    return isinstance(value, str) or (isinstance(value, dict) and list(value) == ["hex"])


def byte_at(data, position):
    return f"{data[position:position + 1]!r} ({data[position]:#04x})" if position < len(data) else "the end"


def around(data, position):
    begin = max(0, position - CONTEXT)
    return ("... " if begin else "") + repr(data[begin:position + CONTEXT])


def difference(key, expected, observed):
    """What differs, as lines; nothing when both are the same."""
    wanted, got = as_bytes(expected), as_bytes(observed)
    if wanted == got and is_text(expected) == is_text(observed):
        return []
    position = len(os.path.commonprefix([wanted, got]))
    return [f"{key}, byte {position}: expected {byte_at(wanted, position)}, "
            f"observed {byte_at(got, position)}",
            f"    expected {around(wanted, position)}",
            f"    observed {around(got, position)}"]


def differences(case, observation):
    if not isinstance(observation, dict):
        return ["the observation is no object"]
    if "error" in observation and "error" not in case.expect:
        return [f"error: {observation['error']}"]
    expect = {"stopped": False, **case.expect} if "stopped" in observation else case.expect
    lines = []
    for key, expected in expect.items():
        if key in observation:
            lines += difference(key, expected, observation[key])
        else:
            lines.append(f"{key}: expected {json.dumps(expected)}, but it is missing")
    return lines


# ---- The runner ----

def is_member_of_group_0():
    try:
        user = pwd.getpwuid(os.getuid())
    except KeyError:
        return False
    return 0 in os.getgrouplist(user.pw_name, user.pw_gid)


def own_rights():
    """What the cases that this user can compare need."""
    return "root" if is_member_of_group_0() else "user"


def start(runner, lines, **identity):
    result = subprocess.run([runner], input=b"".join(line + b"\n" for line in lines),
                            stdout=subprocess.PIPE, cwd=DIRECTORY, check=False, **identity)
    observed = result.stdout.split(b"\n")
    if observed.pop():
        raise Fault(f"the runner's last line has no end (status {result.returncode})")
    if result.returncode != 0:
        raise Fault(f"the runner ended with status {result.returncode} "
                    f"after {len(observed)} of {len(lines)} observations")
    if len(observed) != len(lines):
        raise Fault(f"{len(observed)} observations of {len(lines)} cases")
    return observed


class Comparison:
    def __init__(self, runner):
        self.runner = runner
        self.compared = 0
        self.different = []  # (case, lines, observation)
        self.skipped = []  # (count, reason)

    def compare(self, cases, **identity):
        for case, line in zip(cases, start(self.runner, [case.line for case in cases], **identity)):
            try:
                observation = json.loads(line)
            except ValueError:
                raise Fault(f"{case.place}: the observation is no JSON: {line!r}") from None
            lines = differences(case, observation)
            if lines:
                self.different.append((case, lines, observation))
            self.compared += 1

    def skip(self, cases, reason):
        if cases:
            self.skipped.append((len(cases), reason))

    def run(self, cases):
        own = own_rights()
        self.compare([case for case in cases if case.needs in (None, own)])
        others = [case for case in cases if case.needs not in (None, own)]
        if own == "user":
            self.skip(others, "they need a user of group 0")
        elif others:
            self.run_as_nobody(others)

    def run_as_nobody(self, cases):
        if os.geteuid() != 0:
            self.skip(cases, "they need a user outside of group 0")
            return
        try:
            self.compare(cases, user=NOBODY, group=NOBODY, extra_groups=[])
        except PermissionError as error:
            self.skip(cases, f"they need a user outside of group 0, who cannot start the runner: {error}")


def report(comparison, show):
    for case, lines, _ in comparison.different[:show]:
        print("\n    ".join([f"{case.place}: {case.says}", *lines]))
    if len(comparison.different) > show:
        print(f"... and {len(comparison.different) - show} more")
    for count, reason in comparison.skipped:
        print(f"... skipped {count} cases: {reason}")
    print(f"behaviour: {comparison.compared} cases compared, {len(comparison.different)} differ")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--show", type=int, default=10, metavar="COUNT", help="differences to print")
    parser.add_argument("runner")
    parser.add_argument("files", nargs="*")
    options = parser.parse_args()
    comparison = Comparison(os.path.abspath(options.runner))
    try:
        comparison.run(read_cases(options.files or sorted(CASES.glob("*.jsonl"))))
        if comparison.compared == 0:
            raise Fault("no case was compared")
    except (Fault, OSError) as fault:
        report(comparison, options.show)
        print(f"fault: {fault}")
        return 1
    report(comparison, options.show)
    return 1 if comparison.different else 0


if __name__ == "__main__":
    sys.exit(main())
