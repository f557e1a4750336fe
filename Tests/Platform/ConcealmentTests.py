#!/usr/bin/env python3
"""A thief of the same user gets into a process before and after a concealment, and never meanwhile:
ConcealmentTests.py PROBE"""

import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest

NOBODY = 65534
WORD = b"a word that stands in this process alone"

# Tries to open the descriptor and to read the memory of a process; what it got, a letter each.
THIEF = """
import os, sys
process, descriptor, address, size = map(int, sys.argv[1:])
got = ""
try:
    os.close(os.open(f"/proc/{process}/fd/{descriptor}", os.O_RDONLY | os.O_NONBLOCK))
    got += "d"
except PermissionError:
    pass
try:
    with open(f"/proc/{process}/mem", "rb", buffering=0) as memory:
        memory.seek(address)
        if memory.read(size) == %r:
            got += "m"
except PermissionError:
    pass
print(got)
""" % WORD


class Concealment(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = pathlib.Path(directory.name)
        self.directory.chmod(0o755)
        self.probe = shutil.copy(PROBE, self.directory / "probe")
        # Root may look into every process; both are nobody's then.
        self.user = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if os.geteuid() == 0 else {}
        self.process = subprocess.Popen([self.probe], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        cwd=self.directory, **self.user)
        self.addCleanup(self.end)

    def end(self):
        self.process.kill()
        self.process.communicate()

    def stolen(self):
        place = self.process.stdout.readline().decode().split()
        # The system's own Python: another one need not be anybody's to run.
        return subprocess.run(["/usr/bin/python3", "-c", THIEF, str(self.process.pid), *place], check=True,
                              stdout=subprocess.PIPE, text=True, cwd="/", **self.user).stdout.strip()

    def tell(self, command):
        self.process.stdin.write(command.encode())
        self.process.stdin.flush()

    def setUpThief(self):
        before = self.stolen()
        if before != "dm":
            self.skipTest(f"here a process cannot look into another one of its user: '{before}'")

    def test_nothing_is_stolen_from_a_concealed_process(self):
        self.setUpThief()
        self.tell("+")
        self.assertEqual(self.stolen(), "")
        self.tell("-")
        self.assertEqual(self.stolen(), "dm")

    def test_the_last_of_several_concealments_ends_it(self):
        self.setUpThief()
        for command, stolen in (("+", ""), ("+", ""), ("-", ""), ("+", ""), ("-", ""), ("-", "dm")):
            self.tell(command)
            self.assertEqual(self.stolen(), stolen)

    def test_a_process_that_was_closed_before_stays_closed(self):
        self.setUpThief()
        for command in "c+-":
            self.tell(command)
            self.assertEqual(self.stolen(), "")

    def test_a_concealed_process_leaves_no_core(self):
        self.setUpThief()
        pattern = pathlib.Path("/proc/sys/kernel/core_pattern").read_text().strip()
        if pattern != "core":
            self.skipTest(f"cores go elsewhere here: {pattern}")
        if self.cores_after("") == 0:
            self.skipTest("here no process leaves a core, as with a sanitizer")
        self.assertEqual(self.cores_after("+"), 0)

    def cores_after(self, commands):
        """How many cores a process leaves that dies by a trap after these commands."""
        place = self.directory / f"cores{len(commands)}"
        place.mkdir()
        place.chmod(0o777)
        process = subprocess.Popen(["sh", "-c", 'ulimit -c unlimited; exec "$0"', self.probe],
                                   stdin=subprocess.PIPE, stdout=subprocess.PIPE, cwd=place, **self.user)
        for command in ["", *commands]:
            process.stdin.write(command.encode())
            process.stdin.flush()
            process.stdout.readline()
        process.send_signal(signal.SIGTRAP)
        process.communicate()
        self.assertEqual(process.returncode, -signal.SIGTRAP)
        return len(list(place.glob("core*")))


if __name__ == "__main__":
    PROBE = sys.argv[1]
    unittest.main(argv=sys.argv[:1], verbosity=2)
