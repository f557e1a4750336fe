"""The entry in the system's log, seen from its other end: LogTests.py --root|--user LogProbe

In namespaces of its own, where /dev/log is a socket of these tests.
"""

import datetime
import os
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import unittest

import namespaces

LOG = "/dev/log"
MONTHS = ["Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"]
PROMPTLY = 50  # milliseconds
PRIVATE = "[CommandLineExitStatus.cpp] [**] outputErrorMessage(message:) <private>"
PROBE = ""


def prepare():
    namespaces.keep("/dev")
    os.environ["MACHINES_LOG"] = namespaces.state_of_kept("log")
    namespaces.own_devices()


def stamp(when):
    return f"{MONTHS[when.month - 1]} {when.day:2d} {when:%H:%M:%S}"


class Outcome:
    """A run of the probe: its process id, its lines, what it reported, and when it ran."""

    def __init__(self, words, environment):
        self.begin = time.time()
        probe = subprocess.Popen([PROBE, *words], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                 stderr=subprocess.PIPE, env={**os.environ, **environment})
        output, self.error = namespaces.communicate(probe)
        self.end = time.time()
        self.pid = probe.pid
        self.status = probe.returncode
        self.lines = output.decode().splitlines()

    def stamps(self, zone=datetime.timezone.utc):
        """The stamps of every second that the run touched."""
        seconds = range(int(self.begin), int(self.end) + 1)
        return [stamp(datetime.datetime.fromtimestamp(second, zone)) for second in seconds]

    def entry(self, when):
        return f"<14>{when} com.brenvale.package.Optrella[{self.pid}]: {PRIVATE}".encode()


class LogTest(unittest.TestCase):
    def setUp(self):
        self.log = None

    def tearDown(self):
        self.remove_log()

    def make_log(self, kind=socket.SOCK_DGRAM, path=LOG):
        self.log = socket.socket(socket.AF_UNIX, kind)
        self.log.setblocking(False)
        self.log.bind(path)
        os.chmod(path, 0o666)

    def remove_log(self):
        if self.log is not None:
            self.log.close()
        if os.path.lexists(LOG):
            os.unlink(LOG)

    def received(self):
        datagrams = []
        while True:
            try:
                datagrams.append(self.log.recv(1 << 20))
            except BlockingIOError:
                return datagrams

    def probe(self, *words, **environment):
        outcome = Outcome(words, {"TZ": "UTC0", "LC_ALL": "C", **environment})
        self.assertEqual(outcome.status, 0)
        return outcome


class Entry(LogTest):
    def setUp(self):
        super().setUp()
        self.make_log()

    def test_has_exactly_these_bytes(self):
        outcome = self.probe("message", "The disk is full.")
        datagrams = self.received()
        self.assertEqual(len(datagrams), 1)
        self.assertIn(datagrams[0], [outcome.entry(when) for when in outcome.stamps()])
        self.assertEqual(outcome.error, b"The disk is full.\n")
        self.assertEqual(outcome.lines, [])

    def test_has_english_months_and_a_space_before_a_small_day(self):
        for month in range(1, 13):
            for day in (1, 9, 10, 28):
                when = datetime.datetime(2023, month, day, 7, 5, 9, tzinfo=datetime.timezone.utc)
                outcome = self.probe("clock", str(int(when.timestamp())), "message", "x")
                expected = f"{MONTHS[month - 1]} {day:2d} 07:05:09"
                self.assertEqual(self.received(), [outcome.entry(expected)])

    def test_has_the_local_time(self):
        seconds = "1709251200"  # 2024-03-01 00:00:00 UTC
        for zone, expected in [("UTC0", "Mar  1 00:00:00"), ("XXX-5:30", "Mar  1 05:30:00"),
                               ("XXX+8", "Feb 29 16:00:00"), ("XXX-14", "Mar  1 14:00:00"),
                               ("XXX+0:00:01", "Feb 29 23:59:59")]:
            outcome = self.probe("clock", seconds, "message", "x", TZ=zone)
            self.assertEqual(self.received(), [outcome.entry(expected)])

    def test_has_the_daylight_saving_time(self):
        zone = "CET-1CEST,M3.5.0,M10.5.0/3"
        for seconds, expected in [("1719835200", "Jul  1 14:00:00"),
                                  ("1704110400", "Jan  1 13:00:00")]:
            outcome = self.probe("clock", seconds, "message", "x", TZ=zone)
            self.assertEqual(self.received(), [outcome.entry(expected)])

    def test_is_the_same_in_another_language(self):
        directory = tempfile.mkdtemp(dir="/dev/shm")
        self.addCleanup(shutil.rmtree, directory)
        name = directory + "/de_DE.UTF-8"
        try:
            subprocess.run(["localedef", "-i", "de_DE", "-f", "UTF-8", name], check=True,
                           stdin=subprocess.DEVNULL, capture_output=True)
        except (FileNotFoundError, subprocess.CalledProcessError):
            self.skipTest("no German locale can be made here")
        for variables in ({"LC_ALL": "de_DE.UTF-8"}, {"LC_ALL": "", "LC_TIME": "de_DE.UTF-8"}):
            outcome = self.probe("locale", "clock", "1709596800", "message", "x", LOCPATH=directory,
                                 **variables)
            self.assertEqual(outcome.lines, ["M\u00e4r"])  # it is in force
            self.assertEqual(self.received(), [outcome.entry("Mar  5 00:00:00")])

    def test_never_has_the_message(self):
        for message in ("s3cret", "", "two\nlines", "%s%n%m", "<private>", "[**]", "\u00e9"):
            outcome = self.probe("clock", "1709596800", "message", message)
            self.assertEqual(self.received(), [outcome.entry("Mar  5 00:00:00")])
            self.assertEqual(outcome.error, message.encode() + b"\n")

    def test_stays_small_however_long_the_message(self):
        outcome = self.probe("clock", "1709596800", "bytes", "1000000")
        self.assertEqual(self.received(), [outcome.entry("Mar  5 00:00:00")])
        self.assertEqual(outcome.error, b"x" * 1000000 + b"\n")

    def test_is_sent_once_for_each_call(self):
        outcome = self.probe("clock", "1709596800", "message", "a", "message", "b", "message", "a")
        self.assertEqual(self.received(), [outcome.entry("Mar  5 00:00:00")] * 3)
        self.assertEqual(outcome.error, b"a\nb\na\n")

    def test_is_sent_without_standard_error(self):
        outcome = self.probe("close", "2", "clock", "1709596800", "message", "x")
        self.assertEqual(self.received(), [outcome.entry("Mar  5 00:00:00")])
        self.assertEqual(outcome.lines, [])

    def test_goes_to_where_a_link_leads(self):
        self.remove_log()
        self.make_log(path="/dev/shm/socket")
        self.addCleanup(os.unlink, "/dev/shm/socket")
        os.symlink("shm/socket", LOG)
        outcome = self.probe("clock", "1709596800", "message", "x")
        self.assertEqual(self.received(), [outcome.entry("Mar  5 00:00:00")])

    def test_goes_to_a_log_that_is_a_stream_with_a_nul_at_its_end(self):
        self.remove_log()
        self.make_log(socket.SOCK_STREAM)
        self.log.listen(8)
        outcome = self.probe("clock", "1709596800", "message", "one", "message", "two")
        for _ in range(2):
            connection, _ = self.log.accept()
            with connection:
                self.assertEqual(connection.makefile("rb").read(),
                                 outcome.entry("Mar  5 00:00:00") + b"\0")

    def test_leaves_no_descriptor_open(self):
        outcome = self.probe("descriptors", "message", "a", "descriptors", "many", "100",
                             "descriptors")
        self.assertEqual(outcome.lines, outcome.lines[:1] * 3)

    def test_is_not_made_when_the_level_is_not_wanted(self):
        outcome = self.probe("notices", "message", "x", "sockets", "mask")
        self.assertEqual(self.received(), [])
        self.assertEqual(outcome.lines, ["0", str((1 << 6) - 1)])
        self.assertEqual(outcome.error, b"x\n")

    def test_costs_one_socket_when_the_level_is_wanted(self):
        outcome = self.probe("message", "x", "sockets", "mask")
        self.assertEqual(len(self.received()), 1)
        self.assertEqual(outcome.lines, ["1", str((1 << 8) - 1)])

    def test_leaves_the_tools_own_entries_as_they_were(self):
        outcome = self.probe("openlog", "mytool", "syslog", "one", "message", "x", "syslog", "two")
        first, own, last = self.received()
        warning = 19 * 8 + 4  # local3
        stamps = outcome.stamps()
        self.assertIn(first, [f"<{warning}>{when} mytool: one".encode() for when in stamps])
        self.assertIn(own, [outcome.entry(when) for when in stamps])
        self.assertIn(last, [f"<{warning}>{when} mytool: two".encode() for when in stamps])

    def test_gives_the_tool_no_name_in_the_log(self):
        outcome = self.probe("message", "x", "syslog", "one")
        own, tools = self.received()
        stamps = outcome.stamps()
        self.assertIn(own, [outcome.entry(when) for when in stamps])
        name = os.path.basename(PROBE)
        self.assertIn(tools, [f"<12>{when} {name}: one".encode() for when in stamps])


class LogThatTakesNothing(LogTest):
    def expect_prompt_calls(self):
        outcome = self.probe("timed", "one", "timed", "two", "descriptors", "many", "100",
                             "descriptors")
        first, second, before, after = outcome.lines
        self.assertEqual(outcome.error, b"one\ntwo\n" + b"again\n" * 100)
        self.assertLess(float(first), PROMPTLY)
        self.assertLess(float(second), PROMPTLY)
        self.assertEqual(before, after)

    def fill(self):
        """Sends until the socket takes no more, and returns how many it took."""
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as sender:
            sender.setblocking(False)
            for count in range(100000):
                try:
                    sender.sendto(b"filling", LOG)
                except BlockingIOError:
                    return count
        self.fail("a socket without bounds")

    def test_is_absent(self):
        self.assertFalse(os.path.lexists(LOG))
        self.expect_prompt_calls()

    def test_is_full(self):
        self.make_log()
        count = self.fill()
        self.expect_prompt_calls()
        self.assertEqual(self.received(), [b"filling"] * count)
        outcome = self.probe("clock", "1709596800", "message", "x")
        self.assertEqual(self.received(), [outcome.entry("Mar  5 00:00:00")])

    def test_is_read_by_nobody(self):
        self.make_log()
        count = self.fill()
        self.assertEqual(len(self.received()), count)
        outcome = self.probe("clock", "1709596800", "many", str(count + 50), "timed", "last")
        self.assertLess(float(outcome.lines[0]), PROMPTLY)
        self.assertEqual(self.received(), [outcome.entry("Mar  5 00:00:00")] * count)
        self.assertEqual(outcome.error, b"again\n" * (count + 50) + b"last\n")

    def test_was_left_by_its_reader(self):
        self.make_log()
        self.log.close()
        self.expect_prompt_calls()

    def test_is_a_stream_whose_reader_hangs(self):
        self.make_log(socket.SOCK_STREAM)
        self.log.listen(0)
        self.expect_prompt_calls()

    def test_is_a_file(self):
        open(LOG, "w").close()
        self.expect_prompt_calls()
        self.assertEqual(os.stat(LOG).st_size, 0)

    def test_is_a_fifo(self):
        os.mkfifo(LOG)
        self.expect_prompt_calls()

    def test_is_a_link_to_itself(self):
        os.symlink("log", LOG)
        self.expect_prompt_calls()

    def test_may_not_be_written(self):
        if os.geteuid() == 0:
            self.skipTest("root may write everywhere")
        self.make_log()
        os.chmod(LOG, 0)
        self.expect_prompt_calls()
        self.assertEqual(self.received(), [])


def tearDownModule():
    if os.environ["MACHINES_LOG"] != namespaces.state_of_kept("log"):
        raise AssertionError("the machine's own log was touched")


def main(is_root, arguments):
    global PROBE
    PROBE = os.path.abspath(arguments[0])
    program = unittest.main(argv=sys.argv[:1], verbosity=2, exit=False)
    sys.exit(0 if program.result.wasSuccessful() else 1)


if __name__ == "__main__":
    namespaces.run(prepare, main)
