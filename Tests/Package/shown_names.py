#!/usr/bin/env python3
"""Checks what a shared library shows: shown_names.py LIBRARY HEADERS

Every name must be the library's own and stand in an installed header. Weak names of the standard
library's templates are not the library's.
"""

import pathlib
import re
import subprocess
import sys


def last_name(demangled):
    """The function or variable: std::optional<A> B::f<C>(D<E> const&) const -> f"""
    name = demangled.replace("operator()", "operator call")
    while (shorter := re.sub(r"<[^<>]*>|\([^()]*\)|\[[^]]*\]", "", name)) != name:
        name = shorter
    name = name.replace("operator call", "operator()").removesuffix(" const")
    return name.split("::")[-1].removeprefix("~")


def main():
    library, headers = sys.argv[1:]
    declared = "".join(each.read_text() for each in pathlib.Path(headers).rglob("*.hpp"))
    declared = re.sub(r"//.*", "", declared)
    listing = subprocess.run(["nm", "--dynamic", "--demangle", "--defined-only", library],
                             capture_output=True, text=True, check=True).stdout
    shown = set()
    faults = []
    for line in listing.splitlines():
        kind, name = re.fullmatch(r"[0-9a-f]+ (\S) (.*)", line).groups()
        if kind in "uVvWw" and re.search(r"\b(std|__gnu_cxx)::", name):
            continue
        shown.add(name)
        if "Optrella::" not in name or not re.search(rf"(?<!\w){re.escape(last_name(name))}(?!\w)",
                                                    declared):
            faults.append(name)
    for name in faults:
        print(f"shows {name}")
    if faults or "Optrella::displayHelp(Optrella::CommandList)" not in shown:
        sys.exit("shows what no header declares, or not what they declare")
    print(f"shows {len(shown)} names, all in installed headers")


if __name__ == "__main__":
    main()
