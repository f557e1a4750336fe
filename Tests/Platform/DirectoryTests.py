"""Group membership, as the user database says: DirectoryTests.py --root|--user DirectoryProbe

In namespaces of its own, where /etc holds nothing but a user database of these tests.
"""

import os
import signal
import subprocess
import sys
import unittest

import namespaces

USER = namespaces.USER
MACHINES_FILES = ("passwd", "shadow", "group", "gshadow", "nsswitch.conf")
IS_ROOT = False
PROBE = ""

ROOT = "root:x:0:0:::"
TADMIN = f"tadmin:x:{USER}:{USER}:::"
GROUPS = ["root:x:0:", f"tadmin:x:{USER}:", "optadmin:x:80:"]


def prepare():
    namespaces.own_etc(*MACHINES_FILES)


def needs_root(test):
    def tried(self):
        if not IS_ROOT:
            self.skipTest("needs root, who may become another user")
        test(self)
    return tried


class Membership(unittest.TestCase):
    def setUp(self):
        self.database([ROOT, TADMIN], GROUPS)

    def database(self, users, groups, services="passwd: files\ngroup: files\n"):
        for name, text in (("passwd", "\n".join(users) + "\n"), ("group", "\n".join(groups) + "\n"),
                           ("nsswitch.conf", services)):
            with open("/etc/" + name, "w", encoding="utf-8") as file:
                file.write(text)

    def start(self, identity=None, **environment):
        """Starts the probe: as the user, in none of the groups, unless told otherwise."""
        if identity is None:
            identity = [f"--reuid={USER}", f"--regid={USER}", "--clear-groups"]
        become = ["setpriv", *identity] if IS_ROOT else []
        return subprocess.Popen([*become, PROBE], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, env={**os.environ, **environment},
                                text=True)

    def ask(self, *groups, identity=None, **environment):
        probe = self.start(identity, **environment)
        output, error = namespaces.communicate(probe, "\n".join(map(str, groups)) + "\n")
        self.assertEqual((probe.returncode, error), (0, ""))
        answers = output.splitlines()
        self.assertEqual(len(answers), len(groups))
        return [answer == "true" for answer in answers]

    # Who is a member.

    def test_of_an_ordinary_user(self):
        self.assertEqual(self.ask(0, 80, USER), [False, False, True])

    @needs_root
    def test_of_root(self):
        as_root = ["--reuid=0", "--regid=0", "--clear-groups"]
        self.assertEqual(self.ask(0, 80, identity=as_root), [True, False])

    @needs_root
    def test_of_a_root_outside_of_roots_group(self):
        self.database(["root:x:0:80:::"], GROUPS)
        as_root = ["--reuid=0", "--regid=0", "--clear-groups"]
        self.assertEqual(self.ask(0, 80, identity=as_root), [False, True])

    def test_by_being_listed(self):
        self.database([ROOT, TADMIN], [*GROUPS[:2], "optadmin:x:80:other,tadmin"])
        self.assertEqual(self.ask(0, 80), [False, True])

    def test_in_roots_group_of_one_who_is_not_root(self):
        self.database([ROOT, TADMIN], ["root:x:0:tadmin", *GROUPS[1:]])
        self.assertEqual(self.ask(0, 80), [True, False])

    def test_by_the_primary_group_alone(self):
        self.database([ROOT, f"tadmin:x:{USER}:80:::"], GROUPS)
        self.assertEqual(self.ask(80, USER), [True, False])

    def test_by_any_of_two_names_of_a_group(self):
        for groups in (["optadmin:x:80:", "second:x:80:tadmin"],
                       ["second:x:80:tadmin", "optadmin:x:80:"]):
            self.database([ROOT, TADMIN], [*GROUPS[:2], *groups])
            self.assertEqual(self.ask(80), [True])

    def test_is_not_that_of_a_longer_name(self):
        self.database([ROOT, TADMIN], [*GROUPS[:2], "optadmin:x:80:tadmin2,xtadmin,TADMIN"])
        self.assertEqual(self.ask(80), [False])

    # What is missing in the database.

    def test_of_a_user_without_an_entry(self):
        self.database([ROOT], [f"root:x:0:tadmin,{USER}", f"tadmin:x:{USER}:tadmin,{USER}"])
        self.assertEqual(self.ask(0, USER), [False, False])

    def test_of_a_primary_group_without_an_entry(self):
        self.database([ROOT, f"tadmin:x:{USER}:81:::"], [*GROUPS[:2], "optadmin:x:80:tadmin"])
        self.assertEqual(self.ask(81, 80), [False, True])

    def test_without_any_group(self):
        self.database([ROOT, TADMIN], [])
        self.assertEqual(self.ask(0, 80, USER), [False, False, False])

    def test_without_a_file_of_groups(self):
        os.unlink("/etc/group")
        self.assertEqual(self.ask(0, USER), [False, False])

    def test_without_a_file_of_users(self):
        os.unlink("/etc/passwd")
        self.assertEqual(self.ask(0, USER), [False, False])

    def test_without_the_service_for_groups(self):
        for service in ("nosuch", "", "nosuch [UNAVAIL=return] files"):
            self.database([ROOT, TADMIN], GROUPS, f"passwd: files\ngroup: {service}\n")
            self.assertEqual(self.ask(0, USER), [False, False])

    def test_without_the_service_for_users(self):
        self.database([ROOT, TADMIN], GROUPS, "passwd: nosuch\ngroup: files\n")
        self.assertEqual(self.ask(0, USER), [False, False])

    def test_with_another_service_that_answers(self):
        self.database([ROOT, TADMIN], GROUPS, "passwd: nosuch files\ngroup: nosuch files\n")
        self.assertEqual(self.ask(0, USER), [False, True])

    # Many and long entries.

    def test_in_many_groups(self):
        for count in (63, 64, 65, 128, 129, 5000):
            others = [f"other{i}:x:{10000 + i}:tadmin" for i in range(count)]
            self.database([ROOT, TADMIN], [*GROUPS[:2], *others, "optadmin:x:80:tadmin"])
            self.assertEqual(self.ask(80, 10000, 10000 + count - 1, 0), [True, True, True, False])

    def test_in_a_group_with_many_members(self):
        members = ",".join(f"member{i}" for i in range(20000))
        self.database([ROOT, TADMIN], [*GROUPS[:2], f"optadmin:x:80:{members},tadmin"])
        self.assertEqual(self.ask(80), [True])

    def test_of_a_user_with_a_long_entry(self):
        self.database([ROOT, f"tadmin:x:{USER}:{USER}:{'x' * 100000}::"],
                      [*GROUPS[:2], "optadmin:x:80:tadmin"])
        self.assertEqual(self.ask(80, 0), [True, False])

    # Who decides.

    def test_is_the_databases_where_the_process_lacks_the_group(self):
        self.database([ROOT, TADMIN], ["root:x:0:tadmin", *GROUPS[1:2], "optadmin:x:80:tadmin"])
        self.assertEqual(self.ask(80, 0), [True, True])

    @needs_root
    def test_is_the_databases_where_the_process_has_the_group(self):
        identity = [f"--reuid={USER}", "--regid=80", "--groups=0,80"]
        self.assertEqual(self.ask(0, 80, identity=identity), [False, False])

    def test_is_what_the_database_says_now(self):
        probe = self.start()
        answers = []
        for member in ("", "tadmin", ""):
            self.database([ROOT, TADMIN], [*GROUPS[:2], f"optadmin:x:80:{member}"])
            probe.stdin.write("80\n")
            probe.stdin.flush()
            answers.append(probe.stdout.readline())
        self.assertEqual(answers, ["false\n", "true\n", "false\n"])
        self.assertEqual(namespaces.communicate(probe), ("", ""))

    def test_is_not_the_environments(self):
        names = ("LOGNAME", "USER", "USERNAME", "SUDO_USER")
        self.assertEqual(self.ask(0, USER, **dict.fromkeys(names, "root"), SUDO_UID="0",
                                  SUDO_GID="0", HOME="/root"), [False, True])
        self.assertEqual(self.ask(USER, **dict.fromkeys(names, "nobody-of-that-name")), [True])

    @needs_root
    def test_of_root_is_not_the_environments(self):
        as_root = ["--reuid=0", "--regid=0", "--clear-groups"]
        self.assertEqual(self.ask(0, USER, identity=as_root, LOGNAME="tadmin", USER="tadmin",
                                  SUDO_USER="tadmin", SUDO_UID=str(USER)), [True, False])

    @needs_root
    def test_is_that_of_the_real_user(self):
        for real, effective, answers in ((USER, 0, [False, True]), (0, USER, [True, False])):
            identity = [f"--ruid={real}", f"--euid={effective}", "--clear-groups"]
            self.assertEqual(self.ask(0, USER, identity=identity), answers)

    # Numbers.

    def test_in_the_largest_group_numbers(self):
        numbers = (2147483647, 2147483648, 4294967294)
        self.database([ROOT, TADMIN], [*GROUPS, *(f"g{i}:x:{i}:tadmin" for i in numbers)])
        self.assertEqual(self.ask(*numbers, 4294967293), [True, True, True, False])

    def test_in_the_group_that_stands_for_none(self):
        self.assertEqual(self.ask(4294967295), [False])

    def test_in_what_is_no_group_number_stops_the_process_silently(self):
        for group in (-1, 4294967296, -2 ** 63, 2 ** 63 - 1, 4294967296 + 80):
            probe = self.start()
            output, error = namespaces.communicate(probe, f"{group}\n{USER}\n")
            self.assertIn(probe.returncode, (-signal.SIGILL, -signal.SIGTRAP), group)
            self.assertEqual((output, error), ("", ""), group)


def tearDownModule():
    namespaces.expect_untouched(*MACHINES_FILES)


def main(is_root, arguments):
    global IS_ROOT, PROBE
    IS_ROOT, PROBE = is_root, os.path.abspath(arguments[0])
    program = unittest.main(argv=sys.argv[:1], verbosity=2, exit=False)
    sys.exit(0 if program.result.wasSuccessful() else 1)


if __name__ == "__main__":
    namespaces.run(prepare, main)
