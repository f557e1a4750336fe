#!/usr/bin/env python3
"""The check of shell scripts passes on the project and finds what it is to find when it is planted."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
SCRIPT = ROOT / "Scripts" / "check_shell.py"

LACKED = [
    "mapfile -t lines <list", "readarray lines <list", "declare -A of", "local -n other=$1", "typeset -rA of",
    "echo ${name,,}", "echo ${names[0]^^}", "echo ${name@Q}", "make |& tee log", "make &>>log",
    "echo ${names[-1]}", "names[-1]=x", "echo ${name:0:-1}", "wait -n", "[[ -v name ]]", "shopt -s globstar",
    "echo $BASHPID", "exec {out}>log", "printf '%(%F)T'", "coproc make", "a) make ;;&",
    "readelf -d tool", "realpath -m x", "stat -c %s x", "find . -printf '%P'", "cp x -t y", "mv -t y x",
    "touch --reference x y", "sed -i s/a/b/ x", "sed -r s/a/b/ x", "grep -oP a x", "date -d now", "sort -V x",
    "ls | xargs -0 -r rm", "head -n -1 x", "install -D x y", "nproc",
]
PRESENT = [
    "# mapfile is not there", "echo ${#names[@]} ${names[@]:1:2} ${name%/*} ${name#*,} ${name:-x} ${name:1}",
    "make >log 2>&1 || true && x", "local -a names", "declare -r x", "a) make ;;", "sed -n s/a/b/p x",
    "sed -E 's/a/b/' x", "find . -name x -print0 | xargs -0 -n 8 tool --quiet", "cp -R x y", "touch -r x y",
    "while read -r x; do :; done", "ls | sed s/a/b/ | while read -r x", "grep -oE -- '-W' x", "printf '%s' x",
    "make & wait", "wait $!", "make &>log",
]


def check(root):
    return subprocess.run([sys.executable, SCRIPT, root], capture_output=True, text=True, check=False)


class Shell(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = pathlib.Path(directory.name)

    def write(self, name, *lines):
        file = self.root / name
        file.parent.mkdir(exist_ok=True)
        file.write_text("\n".join(lines) + "\n")

    def test_the_project_passes(self):
        result = check(ROOT)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertRegex(result.stdout, r"^shell: [1-9]\d* scripts that a Mac runs, no fault; [1-9]\d* of Linux")

    def test_what_a_mac_lacks_is_found(self):
        for line in LACKED:
            self.write("tool", "#!/usr/bin/env bash", line)
            result = check(self.root)
            self.assertEqual(result.returncode, 1, line)
            self.assertRegex(result.stdout, r"^tool:2: '.+': macOS does not have it \(.+\)\n", line)

    def test_what_a_mac_has_is_no_fault(self):
        self.write("tool", "#!/bin/bash", *PRESENT)
        result = check(self.root)
        self.assertEqual((result.returncode, result.stdout),
                         (0, "shell: 1 scripts that a Mac runs, no fault; 0 of Linux alone\n"))

    def test_what_is_no_shell_script_is_not_looked_at(self):
        self.write("tool.py", "#!/usr/bin/env python3", LACKED[0])
        self.write("page.md", LACKED[0])
        self.assertEqual(check(self.root).returncode, 0)

    def test_a_file_that_scripts_include_is_looked_at(self):
        self.write("common.sh", LACKED[0])
        self.assertEqual(check(self.root).returncode, 1)

    def test_what_runs_on_linux_alone_may_use_it(self):
        self.write("Scripts/machines", "#!/usr/bin/env bash", LACKED[0])
        self.assertEqual(check(self.root).returncode, 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
