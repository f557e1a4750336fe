#!/usr/bin/env python3
"""Checks that the shell scripts that a Mac runs need nothing that its bash, which is 3.2, or its commands lack.

    check_shell.py [ROOT]
"""

import pathlib
import re
import subprocess
import sys

# Those that run on Linux alone, and why.
LINUX = {
    "Scripts/deb": "makes Debian packages",
    "Scripts/fuzz": "Apple's clang has no fuzzer",
    "Scripts/libcxx": "unpacks Debian's packages",
    "Scripts/machines": "emulates a Linux process",
    "Scripts/macos-link": "on a Mac the system's own tools link",
    "Scripts/release": "a release is made where Debian's packages are",
    "Scripts/utf8proc-source": "asks apt",
    "Tests/Package/conan": "checked on Linux",
    "Tests/Package/debian": "installs Debian packages",
    "Tests/Package/debian-installed": "runs in a Debian system",
    "Tests/Package/reproducible": "reads ELF files",
    "Tests/Package/shared": "reads ELF files",
    "Scripts/ziglang": "a Mac has its own headers and linker",
    "Tests/Package/vcpkg": "checked on Linux",
}
# What lacks it on a Mac, and how it is written.
MISSING = [
    ("bash 4", r"\b(?:mapfile|readarray|coproc)\b"),
    ("bash 4", r"\b(?:declare|local|typeset)\s+-[a-zA-Z]*[Ang]"),
    ("bash 4", r"\$\{\w+(?:\[[^]]*\])?(?:\^\^?|,,?)"),
    ("bash 4", r"\$\{\w+(?:\[[^]]*\])?@[A-Za-z]\}"),
    ("bash 4", r"\|&"),
    ("bash 4", r"&>>"),
    ("bash 4", r";;?&(?!&)"),
    ("bash 4", r"\$\{\w+\[-"),
    ("bash 4", r"^\s*\w+\[-\d+\]="),
    ("bash 4", r"\$\{\w+:[^}]*:\s*-"),
    ("bash 4", r"\bwait\s+-n\b"),
    ("bash 4", r"\[\[\s+(?:!\s+)?-v\s"),
    ("bash 4", r"\bshopt\s+-s\s+(?:globstar|lastpipe|autocd)"),
    ("bash 4", r"\$\{?(?:BASHPID|EPOCHSECONDS|EPOCHREALTIME|SRANDOM)\b"),
    ("bash 4", r"\bexec\s+\{"),
    ("bash 4", r"printf\s+(?:-v\s+\w+\[|'[^']*%\([^)]*\)T)"),
    ("Linux", r"\b(?:readelf|prlimit|nproc|setsid|unshare|ldd|sha256sum|tac)\b"),
    ("GNU's realpath", r"\brealpath\b"),
    ("GNU's stat", r"\bstat\s+(?:-c|--)"),
    ("GNU's find", r"\bfind\b.*\s-(?:printf|regextype|executable)\b"),
    ("GNU's cp", r"\bcp\b.*\s(?:-t\b|--)"),
    ("GNU's mv", r"\bmv\b.*\s(?:-t\b|--)"),
    ("GNU's touch", r"\btouch\s+(?:-d|--)"),
    ("GNU's sed", r"\bsed\s+(?:-[nEr]+\s+)*-i(?!\s+'')"),
    ("GNU's sed", r"\bsed\s+(?:-\w+\s+)*-\w*r\b"),
    ("GNU's grep", r"\bgrep\s+-[a-zA-Z]*P"),
    ("GNU's date", r"\bdate\s+(?:-d|--)"),
    ("GNU's sort", r"\bsort\b.*\s-[a-zA-Z]*[Vz]\b"),
    ("GNU's xargs", r"\bxargs\s+(?:-(?:0|[nPIL]\s+\S+)\s+)*(?:-r|-d|--)"),
    ("GNU's head", r"\bhead\s+(?:-n\s+|-)-"),
    ("GNU's install", r"\binstall\s+-D"),
]
COMMENT = re.compile(r"(?:^|\s)#.*$")


def scripts(root):
    listed = subprocess.run(["git", "-C", root, "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                            capture_output=True, text=True, check=False)
    if listed.returncode == 0:
        paths = set(listed.stdout.split("\0")) - {""}
    else:  # an exported copy
        paths = {each.relative_to(root).as_posix() for each in root.rglob("*") if each.is_file()}
    for path in sorted(paths):
        try:
            text = (root / path).read_text(encoding="utf-8")
        except (UnicodeDecodeError, FileNotFoundError, IsADirectoryError):
            continue
        if path.endswith(".sh") or re.match(r"#!.*\b(?:ba)?sh\b", text):
            yield path, text


def faults(text):
    for number, line in enumerate(text.splitlines(), 1):
        code = COMMENT.sub("", line)
        for what, pattern in MISSING:
            for found in re.finditer(pattern, code):
                yield number, found.group().strip(), what


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent.parent)
    found, checked, left_out = [], 0, set()
    for path, text in scripts(root):
        if path in LINUX:
            left_out.add(path)
            continue
        checked += 1
        found += [f"{path}:{number}: '{code}': macOS does not have it ({what})"
                  for number, code, what in faults(text)]
    if root == pathlib.Path(__file__).parent.parent:
        found += [f"{path}: is not there, and is listed as Linux's" for path in sorted(set(LINUX) - left_out)]
    if found:
        print("\n".join(found))
        sys.exit(1)
    print(f"shell: {checked} scripts that a Mac runs, no fault; {len(left_out)} of Linux alone")


if __name__ == "__main__":
    main()
