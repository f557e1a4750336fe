#!/usr/bin/env python3
"""Writes the benchmark's commands as literals, the way a tool's author types them.

    generate.py COUNT WORDS OUTPUT

One line for each command:  COMMAND(identifier, word, help, help of name, count, mode, file, verbose)
WORDS says how the command words differ from the one that is given, which is that at COUNT / 2:
    plain     as the words of a large tool do
    distinct  at once: in length and in the first byte
    alike     late: same length, same first seven bytes
    accented  in what follows an accented letter, so that only normalisation tells
"""

import pathlib
import sys

VERBS = """add alter attach audit backup build cancel check clean clone close convert copy create delete
    detach disable drain enable export fetch freeze grant import inspect label limit list lock merge mirror
    mount move open patch prune query rename repair reset restore resume revoke rotate scan show start
    stop suspend switch sync trace trim unlock unmount update upgrade verify watch wipe""".split()
NOUNS = """account alias archive backup bucket cache certificate cluster disk domain event gateway group
    host image index job key lease library link log mailbox message network""".split()


ENDINGS = ["", " here", " for now", " on this host", " of this machine", " on this machine for now"]


def sized(text):
    """The text with an ending that gives it the 30 to 40 characters of a usual help text."""
    return next(text + ending for ending in ENDINGS if 30 <= len(text + ending) <= 40)


def command(number, count, words):
    noun = NOUNS[number % len(NOUNS)]
    verb = VERBS[number // len(NOUNS) * 7 % len(VERBS)]
    given = number == count // 2
    word = {
        "plain": f"{verb}-{noun}",
        "distinct": "z" if given else f"{verb}-{noun}",
        "alike": f"command{number:04}",
        "accented": f"é{verb}-{noun}",
    }[words]
    texts = [f"{verb.capitalize()} the {noun}",
             f"The name that the {noun} gets", f"At most this many of the {noun}", f"How to treat the {noun}",
             f"A file that describes the {noun}", f"Tell more about the {noun}"]
    literals = ", ".join(f'"{text}"' for text in [word, *map(sized, texts)])
    return f"COMMAND(command{number}, {literals})\n"


def main():
    count, words, output = int(sys.argv[1]), sys.argv[2], sys.argv[3]
    lines = [command(number, count, words) for number in range(count)]
    assert len({line.split('"')[1] for line in lines}) == count, "two commands have the same word"
    pathlib.Path(output).write_text("".join(lines))


if __name__ == "__main__":
    main()
