#!/usr/bin/env python3
"""Runs the example tool `hosts` as its user does and compares every byte that it writes.

usage: hosts_test.py [path of the built tool] [unittest options]

Without a path the environment variable OPTRELLA_HOSTS names the tool.
"""

import collections
import errno
import os
import pathlib
import pwd
import resource
import shutil
import signal
import stat
import subprocess
import sys
import tempfile
import time
import unittest

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "Documentation"))
import pages

TOOL = os.environ.get("OPTRELLA_HOSTS", "")
TIMEOUT = 60  # seconds, for a slow machine; no test waits that long when all is well
NOBODY = 65534
IS_ROOT = os.geteuid() == 0

README = pathlib.Path(__file__).resolve().parents[2] / "Examples" / "hosts" / "README.md"
# The example's page shows the listing.
HELP = dict(shown for block in pages.blocks(README) if block.what == "run"
            for shown in pages.steps(block.text))["hosts help"].encode()

UNKNOWN = b" is not a valid command line.\n Please refer to the help below.\n"

CONTENT = b"""# The loopback comes first.
127.0.0.1\tlocalhost

192.0.2.10   Web.example web\t# front
192.0.2.9\tdb.example  db
::1             localhost ip6-localhost
  this line is kept
"""

Outcome = collections.namedtuple("Outcome", "status stdout stderr")


def groups_of_user(uid):
    """The groups that the system's records give the user, as the tool asks for them."""
    try:
        user = pwd.getpwuid(uid)
    except KeyError:
        return set()
    return set(os.getgrouplist(user.pw_name, user.pw_gid))


class HostsTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.directory = os.path.realpath(tempfile.mkdtemp(prefix="hosts-test-"))
        self.addCleanup(shutil.rmtree, self.directory)
        self.write("hosts", CONTENT)

    def path(self, name):
        return os.path.join(self.directory, name)

    def error(self, action, name, number):
        return f"Cannot {action} {self.path(name)}: {os.strerror(number)}\n".encode()

    def write(self, name, content):
        with open(self.path(name), "wb") as file:
            file.write(content)

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def run_tool(self, *arguments, tool=None, **options):
        result = subprocess.run(
            [tool or TOOL, *arguments],
            cwd=self.directory,
            stdin=subprocess.DEVNULL,
            stdout=options.pop("stdout", subprocess.PIPE),
            stderr=subprocess.PIPE,
            timeout=TIMEOUT,
            start_new_session=True,  # without a terminal nobody can be asked for a password
            **options,
        )
        return Outcome(result.returncode, result.stdout, result.stderr)

    def run_as_ordinary_user(self, *arguments):
        if not IS_ROOT:
            return self.run_tool(*arguments)
        # A copy, because the build directory may be closed to others.
        programs = tempfile.mkdtemp(prefix="hosts-test-")
        self.addCleanup(shutil.rmtree, programs)
        os.chmod(programs, 0o755)
        tool = shutil.copy(TOOL, programs)
        try:
            return self.run_tool(*arguments, tool=tool, user=NOBODY, group=NOBODY, extra_groups=[])
        except (PermissionError, subprocess.SubprocessError) as reason:
            self.skipTest(f"an ordinary user cannot run the tool here: {reason}")

    def open_directory_to_others(self, mode=0o755):
        os.chmod(self.directory, mode)

    def assert_outcome(self, outcome, status=0, stdout=b"", stderr=b""):
        self.assertEqual(outcome, Outcome(status, stdout, stderr))

    def assert_files(self, **contents):
        """The directory holds these files and no other: no temporary file is left."""
        self.assertEqual({name: self.read(name) for name in os.listdir(self.directory)}, contents)


class CommandLine(HostsTest):
    def test_help_lists_every_visible_command(self):
        self.assert_outcome(self.run_tool("help"), stdout=HELP)

    def test_dashed_help_does_the_same(self):
        self.assert_outcome(self.run_tool("--help"), stdout=HELP)

    def test_no_argument_gives_the_help_and_status_64(self):
        self.assert_outcome(self.run_tool(), 64, HELP)

    def test_an_unknown_command_is_named_before_the_help(self):
        self.assert_outcome(self.run_tool("list", "it's"), 64, b'["list", "it\\\'s"]' + UNKNOWN + HELP)

    def test_an_empty_argument_is_named_too(self):
        self.assert_outcome(self.run_tool(""), 64, b'[""]' + UNKNOWN + HELP)

    def test_tags_are_case_sensitive(self):
        self.assert_outcome(self.run_tool("List"), 64, b'["List"]' + UNKNOWN + HELP)

    def test_two_commands_at_once_are_no_command_line(self):
        self.assert_outcome(self.run_tool("list", "help"), 64, b'["list", "help"]' + UNKNOWN + HELP)

    def test_a_repeated_command_is_no_command_line(self):
        outcome = self.run_tool("look-up", "db", "look-up", "web")
        self.assert_outcome(outcome, 64, b'["look-up", "db", "look-up", "web"]' + UNKNOWN + HELP)

    def test_a_dangling_tag_of_one_command_is_said_once(self):
        expected = b'Missing argument for look-up\n["look-up"]' + UNKNOWN + HELP
        self.assert_outcome(self.run_tool("look-up"), 64, expected)

    def test_a_dangling_tag_is_called_by_its_first_name(self):
        expected = b'Missing argument for -s\n["list", "--sort"]' + UNKNOWN + HELP
        self.assert_outcome(self.run_tool("list", "--sort"), 64, expected)

    def test_a_dangling_tag_of_seven_commands_is_said_seven_times(self):
        expected = b"Missing argument for -f\n" * 7 + b'["--file"]' + UNKNOWN + HELP
        self.assert_outcome(self.run_tool("--file"), 64, expected)

    def test_a_tag_may_be_the_value_of_another_tag(self):
        outcome = self.run_tool("look-up", "--file", "--file", "hosts")
        self.assert_outcome(outcome, 1, stderr=f"--file is not in {self.path('hosts')}\n".encode())

    def test_an_option_may_come_before_the_command(self):
        self.assert_outcome(self.run_tool("--file", "hosts", "look-up", "db"), stdout=b"192.0.2.9\n")

    def test_a_missing_hosts_file_is_refused(self):
        expected = b"Validation of parameter -f failed : none does not exist\n" + HELP
        self.assert_outcome(self.run_tool("list", "--file", "none"), 64, expected)

    def test_every_unacceptable_value_is_said(self):
        expected = (
            b"Validation of parameter -f failed : none does not exist\n"
            b"Validation of parameter -s failed : Item age is not a valid option. It must be one of: address, name\n"
        )
        outcome = self.run_tool("list", "-f", "none", "-s", "age")
        self.assert_outcome(outcome, 64, expected + HELP)

    def test_an_argument_that_is_not_utf8_is_shown_in_hexadecimal(self):
        self.assert_outcome(self.run_tool(b"a\xff"), 64, b'["a\\x{FF}"]' + UNKNOWN + HELP)

    def test_a_value_that_is_not_utf8_keeps_its_bytes(self):
        outcome = self.run_tool("look-up", b"a\xff", "--file", "hosts")
        self.assert_outcome(outcome, 1, stderr=b"a\xff is not in " + self.path("hosts").encode() + b"\n")

    def test_a_path_that_is_not_utf8_names_its_file(self):
        name = os.path.join(os.fsencode(self.directory), b"h\xff")
        try:
            os.rename(self.path("hosts"), name)
        except OSError as reason:
            self.skipTest(f"this file system takes no such name: {reason}")
        self.assert_outcome(self.run_tool("look-up", "db", "--file", b"h\xff"), stdout=b"192.0.2.9\n")

    def test_an_unknown_command_line_of_many_arguments_is_named_whole(self):
        words = [f"word{i}" for i in range(3000)]
        rendered = "[" + ", ".join(f'"{word}"' for word in words) + "]"
        self.assert_outcome(self.run_tool(*words), 64, rendered.encode() + UNKNOWN + HELP)


class List(HostsTest):
    def test_the_entries_come_in_the_order_of_the_file(self):
        expected = (
            b"127.0.0.1   localhost\n"
            b"192.0.2.10  Web.example web\n"
            b"192.0.2.9   db.example db\n"
            b"::1         localhost ip6-localhost\n"
        )
        self.assert_outcome(self.run_tool("list", "--file", "hosts"), stdout=expected)

    def test_sorted_by_name_case_does_not_count_and_equal_names_keep_their_order(self):
        expected = (
            b"192.0.2.9   db.example db\n"
            b"127.0.0.1   localhost\n"
            b"::1         localhost ip6-localhost\n"
            b"192.0.2.10  Web.example web\n"
        )
        self.assert_outcome(self.run_tool("list", "-s", "name", "-f", "hosts"), stdout=expected)

    def test_sorted_by_address_numbers_count_and_ipv4_comes_first(self):
        self.write("hosts", b"fe80::1%lo0 d\n::1 c\n192.0.2.10 b\n192.0.2.9 a\n")
        expected = b"192.0.2.9    a\n192.0.2.10   b\n::1          c\nfe80::1%lo0  d\n"
        self.assert_outcome(self.run_tool("list", "--sort", "address", "-f", "hosts"), stdout=expected)

    def test_many_entries_that_are_equal_keep_their_order(self):
        content = "".join(f"{'::1' if i % 2 else '::2'}  a n{i}\n" for i in range(100))
        self.write("hosts", content.encode())
        self.assert_outcome(self.run_tool("list", "-s", "name", "-f", "hosts"), stdout=content.encode())
        sorted_content = "".join(sorted(content.splitlines(True), key=lambda line: line[:3]))
        outcome = self.run_tool("list", "-s", "address", "-f", "hosts")
        self.assert_outcome(outcome, stdout=sorted_content.encode())

    def test_a_limit_cuts_the_sorted_list(self):
        outcome = self.run_tool("list", "-l", "2", "-s", "name", "-f", "hosts")
        self.assert_outcome(outcome, stdout=b"192.0.2.9  db.example db\n127.0.0.1  localhost\n")

    def test_a_limit_above_the_number_of_entries_cuts_nothing(self):
        self.write("hosts", b"::1 a\n")
        self.assert_outcome(self.run_tool("list", "-l", "10000", "-f", "hosts"), stdout=b"::1  a\n")

    def test_the_first_of_two_limits_counts(self):
        outcome = self.run_tool("list", "-l", "1", "-l", "3", "-f", "hosts")
        self.assert_outcome(outcome, stdout=b"127.0.0.1  localhost\n")

    def test_a_limit_out_of_bounds_or_unreadable_is_refused(self):
        for limit in ["0", "10001", "-1", "three", "1 ", "", "99999999999999999999"]:
            with self.subTest(limit=limit):
                outcome = self.run_tool("list", "--limit", limit, "--file", "hosts")
                expected = b"The count must be a number from 1 to 10000\n"
                self.assert_outcome(outcome, 64, stderr=expected)

    def test_an_unknown_order_is_refused_with_the_choices(self):
        expected = b"Validation of parameter -s failed : Item Name is not a valid option. It must be one of: address, name\n"
        outcome = self.run_tool("list", "--sort", "Name", "--file", "hosts")
        self.assert_outcome(outcome, 64, expected + HELP)

    def test_an_empty_file_has_no_entries(self):
        self.write("hosts", b"")
        self.assert_outcome(self.run_tool("list", "--file", "hosts"))

    def test_without_a_path_the_hosts_file_of_the_system_is_read(self):
        if not os.access("/etc/hosts", os.R_OK):
            self.skipTest("this system has no readable /etc/hosts")
        outcome = self.run_tool("list")
        self.assertEqual(outcome, self.run_tool("list", "--file", "/etc/hosts"))
        self.assertEqual(outcome.status, 0)

    def test_a_full_standard_output_is_an_error(self):
        if not os.path.exists("/dev/full"):
            self.skipTest("this system has no /dev/full")
        with open("/dev/full", "wb") as full:
            outcome = self.run_tool("list", "--file", "hosts", stdout=full)
        self.assert_outcome(outcome, 1, None, b"Cannot write to standard output\n")

    def test_a_directory_in_place_of_the_file_is_an_error(self):
        os.mkdir(self.path("directory"))
        outcome = self.run_tool("list", "--file", "directory")
        self.assert_outcome(outcome, 1, stderr=self.error("read", "directory", errno.EISDIR))

    def test_a_file_that_may_not_be_read_is_an_error(self):
        self.open_directory_to_others()
        os.chmod(self.path("hosts"), 0)
        outcome = self.run_as_ordinary_user("list", "--file", "hosts")
        self.assert_outcome(outcome, 1, stderr=self.error("read", "hosts", errno.EACCES))


class LookUp(HostsTest):
    def test_every_address_of_the_name_is_shown(self):
        outcome = self.run_tool("look-up", "localhost", "--file", "hosts")
        self.assert_outcome(outcome, stdout=b"127.0.0.1\n::1\n")

    def test_case_does_not_count(self):
        outcome = self.run_tool("look-up", "WEB.Example", "--file", "hosts")
        self.assert_outcome(outcome, stdout=b"192.0.2.10\n")

    def test_a_part_of_a_name_is_not_found(self):
        outcome = self.run_tool("look-up", "local", "--file", "hosts")
        self.assert_outcome(outcome, 1, stderr=f"local is not in {self.path('hosts')}\n".encode())

    def test_a_word_of_a_comment_is_not_found(self):
        outcome = self.run_tool("look-up", "front", "--file", "hosts")
        self.assert_outcome(outcome, 1, stderr=f"front is not in {self.path('hosts')}\n".encode())


class Add(HostsTest):
    def test_an_entry_is_appended_and_the_rest_stays(self):
        outcome = self.run_tool("add", "2001:db8::7", "-n", "mail.example", "--name", "mail", "-f", "hosts")
        self.assert_outcome(outcome)
        self.assert_files(hosts=CONTENT + b"2001:db8::7\tmail.example mail\n")

    def test_a_last_line_without_end_gets_one(self):
        self.write("hosts", b"::1 a")
        self.assert_outcome(self.run_tool("add", "::2", "-n", "b", "-f", "hosts"))
        self.assert_files(hosts=b"::1 a\n::2\tb\n")

    def test_an_empty_file_gets_its_first_entry(self):
        self.write("hosts", b"")
        self.assert_outcome(self.run_tool("add", "::2", "-n", "b", "-f", "hosts"))
        self.assert_files(hosts=b"::2\tb\n")

    def test_a_name_may_have_several_addresses(self):
        self.assert_outcome(self.run_tool("add", "::9", "-n", "db", "-f", "hosts"))
        self.assert_files(hosts=CONTENT + b"::9\tdb\n")

    def test_many_names_are_taken(self):
        names = [f"host{i}.example" for i in range(2000)]
        options = [text for name in names for text in ("-n", name)]
        self.assert_outcome(self.run_tool("add", "192.0.2.1", *options, "-f", "hosts"))
        self.assert_files(hosts=CONTENT + f"192.0.2.1\t{' '.join(names)}\n".encode())

    def test_what_is_there_already_is_refused_however_it_is_written(self):
        outcome = self.run_tool("add", "0:0::1", "-n", "LocalHost", "-f", "hosts")
        self.assert_outcome(outcome, 1, stderr=b"0:0::1 has the name LocalHost already\n")
        self.assert_files(hosts=CONTENT)

    def test_another_zone_is_another_address(self):
        self.write("hosts", b"fe80::1%lo0 a\n")
        self.assert_outcome(self.run_tool("add", "fe80::1%en0", "-n", "a", "-f", "hosts"))
        self.assert_files(hosts=b"fe80::1%lo0 a\nfe80::1%en0\ta\n")

    def test_a_missing_name_is_refused(self):
        outcome = self.run_tool("add", "::1", "-f", "hosts")
        self.assert_outcome(outcome, 64, stderr=b"An address needs a --name\n")
        self.assert_files(hosts=CONTENT)

    def test_a_wrong_address_is_refused(self):
        for address in ["", "a", "256.0.0.1", "127.1", "::1::", "::1%", "127.0.0.1%lo0", " ::1"]:
            with self.subTest(address=address):
                outcome = self.run_tool("add", address, "-n", "a", "-f", "hosts")
                self.assert_outcome(outcome, 64, stderr=f"{address} is not an address\n".encode())
        self.assert_files(hosts=CONTENT)

    def test_a_wrong_name_is_refused(self):
        too_long = ".".join(["a" * 63] * 4)
        for name in ["", ".", "a..b", "a.", "-a", "a-", "a b", "a#", "a\n", "\u00e4", "a" * 64, too_long]:
            with self.subTest(name=name):
                outcome = self.run_tool("add", "::1", "-n", name, "-f", "hosts")
                self.assert_outcome(outcome, 64, stderr=f"{name} is not a host name\n".encode())
        self.assert_files(hosts=CONTENT)

    def test_a_directory_in_place_of_the_file_is_an_error(self):
        os.mkdir(self.path("directory"))
        outcome = self.run_tool("add", "::1", "-n", "a", "--file", "directory")
        self.assert_outcome(outcome, 1, stderr=self.error("read", "directory", errno.EISDIR))


class Remove(HostsTest):
    def test_a_name_leaves_its_line_and_the_rest_stays(self):
        self.assert_outcome(self.run_tool("remove", "WEB", "--file", "hosts"))
        self.assert_files(hosts=CONTENT.replace(b" web\t#", b"\t#"))

    def test_an_entry_without_names_leaves_the_file(self):
        self.assert_outcome(self.run_tool("remove", "localhost", "--file", "hosts"))
        expected = CONTENT.replace(b"127.0.0.1\tlocalhost\n", b"").replace(b"localhost ip6", b"ip6")
        self.assert_files(hosts=expected)

    def test_a_name_that_stands_twice_in_a_line_leaves_it_twice(self):
        self.write("hosts", b"::1 a b\ta c # a\n")
        self.assert_outcome(self.run_tool("remove", "a", "--file", "hosts"))
        self.assert_files(hosts=b"::1 b\tc # a\n")

    def test_foreign_line_ends_are_kept(self):
        self.write("hosts", b"::1 a b\r\n::2 c\r\n")
        self.assert_outcome(self.run_tool("remove", "b", "--file", "hosts"))
        self.assert_files(hosts=b"::1 a\r\n::2 c\r\n")

    def test_an_unknown_name_is_refused(self):
        outcome = self.run_tool("remove", "line", "--file", "hosts")
        self.assert_outcome(outcome, 1, stderr=f"line is not in {self.path('hosts')}\n".encode())
        self.assert_files(hosts=CONTENT)


class Export(HostsTest):
    def test_the_copy_has_the_same_bytes(self):
        self.write("hosts", CONTENT + b"\r\n\xff\0# no end")
        self.assert_outcome(self.run_tool("export", "copy", "--file", "hosts"))
        self.assert_files(hosts=CONTENT + b"\r\n\xff\0# no end", copy=CONTENT + b"\r\n\xff\0# no end")

    def test_an_existing_file_is_refused(self):
        self.write("copy", b"old")
        expected = b"Validation of parameter export failed : copy must not exist\n" + HELP
        self.assert_outcome(self.run_tool("export", "copy", "--file", "hosts"), 64, expected)
        self.assert_files(hosts=CONTENT, copy=b"old")

    def test_a_missing_directory_is_an_error(self):
        outcome = self.run_tool("export", "none/copy", "--file", "hosts")
        self.assert_outcome(outcome, 1, stderr=self.error("write", "none/copy", errno.ENOENT))

    def test_a_link_into_the_void_is_not_followed(self):
        os.symlink("elsewhere", self.path("copy"))
        outcome = self.run_tool("export", "copy", "--file", "hosts")
        self.assert_outcome(outcome, 1, stderr=self.error("write", "copy", errno.EEXIST))
        self.assertFalse(os.path.exists(self.path("elsewhere")))

    def test_an_unfinished_copy_is_taken_away(self):
        outcome = self.run_tool("export", "copy", "--file", "hosts", preexec_fn=forbid_long_files)
        self.assert_outcome(outcome, 1, stderr=self.error("write", "copy", errno.EFBIG))
        self.assert_files(hosts=CONTENT)


def forbid_long_files():
    """Makes every write that lets a file grow above 16 bytes fail, as a full disk does."""
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    resource.setrlimit(resource.RLIMIT_FSIZE, (16, 16))


class Saving(HostsTest):
    def test_the_mode_is_kept(self):
        for mode in [0o600, 0o644, 0o666]:
            with self.subTest(mode=oct(mode)):
                os.chmod(self.path("hosts"), mode)
                self.assert_outcome(self.run_tool("add", "::1", "-n", f"a{mode}", "-f", "hosts"))
                self.assertEqual(stat.S_IMODE(os.stat(self.path("hosts")).st_mode), mode)

    @unittest.skipUnless(IS_ROOT, "only root can give a file to somebody else")
    def test_owner_and_group_are_kept(self):
        os.chown(self.path("hosts"), 4321, 1234)
        os.chmod(self.path("hosts"), 0o6640)
        self.assert_outcome(self.run_tool("add", "::1", "-n", "a", "-f", "hosts"))
        now = os.stat(self.path("hosts"))
        self.assertEqual((now.st_uid, now.st_gid, stat.S_IMODE(now.st_mode)), (4321, 1234, 0o6640))

    @unittest.skipUnless(IS_ROOT, "only root can give a file to somebody else")
    def test_an_owner_that_cannot_be_kept_is_an_error(self):
        self.open_directory_to_others(0o777)
        outcome = self.run_as_ordinary_user("add", "::1", "-n", "a", "-f", "hosts")
        expected = self.error("keep owner and mode of", "hosts", errno.EPERM)
        self.assert_outcome(outcome, 1, stderr=expected)
        self.assert_files(hosts=CONTENT)

    def test_a_symbolic_link_stays_and_its_file_is_replaced(self):
        os.mkdir(self.path("real"))
        os.rename(self.path("hosts"), self.path("real/hosts"))
        os.symlink("real/hosts", self.path("middle"))
        os.symlink(self.path("middle"), self.path("hosts"))
        self.assert_outcome(self.run_tool("add", "::1", "-n", "a", "-f", "hosts"))
        self.assertEqual(os.readlink(self.path("hosts")), self.path("middle"))
        self.assertEqual(os.readlink(self.path("middle")), "real/hosts")
        self.assertEqual(self.read("real/hosts"), CONTENT + b"::1\ta\n")
        self.assertEqual(sorted(os.listdir(self.directory)), ["hosts", "middle", "real"])
        self.assertEqual(os.listdir(self.path("real")), ["hosts"])

    def test_the_file_is_replaced_and_not_written_over(self):
        os.link(self.path("hosts"), self.path("old"))
        self.assert_outcome(self.run_tool("remove", "ip6-localhost", "-f", "hosts"))
        self.assert_files(hosts=CONTENT.replace(b" ip6-localhost", b""), old=CONTENT)

    def test_a_disk_that_fills_up_leaves_the_file_and_nothing_else(self):
        outcome = self.run_tool("add", "::1", "-n", "a", "-f", "hosts", preexec_fn=forbid_long_files)
        self.assert_outcome(outcome, 1, stderr=self.error("replace", "hosts", errno.EFBIG))
        self.assert_files(hosts=CONTENT)

    def test_a_directory_that_may_not_be_written_is_an_error(self):
        os.chmod(self.path("hosts"), 0o666)
        self.open_directory_to_others(0o555)
        self.addCleanup(self.open_directory_to_others)
        outcome = self.run_as_ordinary_user("add", "::1", "-n", "a", "-f", "hosts")
        expected = f"Cannot write in {self.directory}: {os.strerror(errno.EACCES)}\n".encode()
        self.assert_outcome(outcome, 1, stderr=expected)
        self.assert_files(hosts=CONTENT)

    def test_what_is_no_regular_file_is_not_replaced(self):
        # A pipe of the test's own: a device would be lost for the machine if the tool replaced it.
        os.mkfifo(self.path("pipe"))
        outcome = self.run_tool_that_reads("pipe", b"::1 b\n", "add", "::9", "-n", "a", "--file", "pipe")
        expected = f"Cannot replace {self.path('pipe')}: it is not a regular file\n".encode()
        self.assert_outcome(outcome, 1, stderr=expected)
        self.assertTrue(stat.S_ISFIFO(os.stat(self.path("pipe")).st_mode))
        self.assertEqual(sorted(os.listdir(self.directory)), ["hosts", "pipe"])

    def test_what_somebody_else_wrote_meanwhile_is_not_undone(self):
        # The tool reads a pipe through a link. While it waits, the link is moved to another file.
        os.mkfifo(self.path("pipe"))
        os.symlink("pipe", self.path("link"))
        os.symlink("hosts", self.path("next"))
        outcome = self.run_tool_that_reads(
            "pipe",
            b"::1 b\n",
            *("add", "::9", "-n", "a", "--file", "link"),
            meanwhile=lambda: os.replace(self.path("next"), self.path("link")),
        )
        expected = f"Cannot replace {self.path('link')}: it has been changed meanwhile\n".encode()
        self.assert_outcome(outcome, 1, stderr=expected)
        self.assertEqual(self.read("hosts"), CONTENT)
        self.assertEqual(sorted(os.listdir(self.directory)), ["hosts", "link", "pipe"])

    def run_tool_that_reads(self, name, content, *arguments, meanwhile=lambda: None):
        """Feeds the pipe `name` to the tool, and does `meanwhile` while the tool waits for it."""
        with subprocess.Popen(
            [TOOL, *arguments],
            cwd=self.directory,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
        ) as tool:
            try:
                pipe = self.open_when_read(name, tool)
                meanwhile()
                os.write(pipe, content)
                os.close(pipe)
                stdout, stderr = tool.communicate(timeout=TIMEOUT)
            finally:
                tool.kill()
        return Outcome(tool.returncode, stdout, stderr)

    def open_when_read(self, name, reader):
        deadline = time.monotonic() + TIMEOUT
        while time.monotonic() < deadline and reader.poll() is None:
            try:
                return os.open(self.path(name), os.O_WRONLY | os.O_NONBLOCK)
            except OSError as error:
                if error.errno != errno.ENXIO:
                    raise
                time.sleep(0.01)
        self.fail("the tool does not read the pipe")


class Install(HostsTest):
    def require_root_rights(self):
        if 0 not in groups_of_user(os.getuid()):
            self.skipTest("the user is not a member of group 0")

    def test_a_prepared_file_replaces_the_hosts_file(self):
        self.require_root_rights()
        os.chmod(self.path("hosts"), 0o604)
        self.write("prepared", b"# new\n::1 a")
        expected = f"Installed {self.path('prepared')}\n{self.path('hosts')} has 1 entries now\n"
        outcome = self.run_tool("install", "prepared", "--file", "hosts")
        self.assert_outcome(outcome, stdout=expected.encode())
        self.assert_files(hosts=b"# new\n::1 a", prepared=b"# new\n::1 a")
        self.assertEqual(stat.S_IMODE(os.stat(self.path("hosts")).st_mode), 0o604)

    def test_a_prepared_file_with_mistakes_is_refused(self):
        self.require_root_rights()
        self.write("prepared", b"::1 a\n1.2.3 b\n::2\n::3 c _- # d\n")
        prepared = self.path("prepared")
        expected = f"Nothing was installed:\n{prepared}:2: 1.2.3 is not an address\n"
        outcome = self.run_tool("install", "prepared", "--file", "hosts")
        self.assert_outcome(outcome, 1, stderr=expected.encode())
        self.assert_files(hosts=CONTENT, prepared=b"::1 a\n1.2.3 b\n::2\n::3 c _- # d\n")

    def test_a_missing_prepared_file_is_refused_before_rights_are_looked_at(self):
        expected = b"Validation of parameter install failed : none does not exist\n" + HELP
        self.assert_outcome(self.run_tool("install", "none", "--file", "hosts"), 64, expected)

    def test_an_ordinary_user_is_told_to_use_sudo(self):
        groups = groups_of_user(NOBODY if IS_ROOT else os.getuid())
        if groups & {0, 80}:
            self.skipTest("the user may become root")
        self.open_directory_to_others()
        self.write("prepared", b"::1 a\n")
        outcome = self.run_as_ordinary_user("install", "prepared", "--file", "hosts")
        expected = b"Requested command line must be run as root. Try using sudo.\n" + HELP
        self.assert_outcome(outcome, 64, expected)
        self.assert_files(hosts=CONTENT, prepared=b"::1 a\n")


class Check(HostsTest):
    def test_the_command_works_though_no_help_shows_it(self):
        self.write("hosts", CONTENT.replace(b"  this", b"# this"))
        self.assertNotIn(b"check", self.run_tool("help").stdout)
        self.assert_outcome(self.run_tool("check", "--file", "hosts"))

    def test_every_mistake_is_named_with_its_place(self):
        expected = f"{self.path('hosts')}:7: this is not an address\n".encode()
        self.assert_outcome(self.run_tool("check", "--file", "hosts"), 1, stderr=expected)


if __name__ == "__main__":
    if len(sys.argv) > 1 and not sys.argv[1].startswith("-"):
        TOOL = sys.argv.pop(1)
    TOOL = os.path.abspath(TOOL) if TOOL else ""
    if not os.access(TOOL, os.X_OK):
        sys.exit(f"hosts_test.py: no tool to run at {TOOL!r}")
    unittest.main(verbosity=2)  # so that the reason of every skipped test is seen
