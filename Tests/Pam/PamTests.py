"""The password check against real accounts: PamTests.py --root|--user pam-probe

In namespaces of its own, where /etc holds nothing but accounts and services of these tests, and
/dev no log but theirs. As root, the check runs in an ordinary user's process all the same, unless
a test says otherwise.
"""

import os
import shutil
import signal
import socket
import subprocess
import sys
import time
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Platform"))

import namespaces  # noqa: E402
from namespaces import CRYPT, crypt, path_of_helper, path_of_library, path_of_module  # noqa: E402

LOG = "/dev/log"
USER = namespaces.USER
OTHER = 7002
MASK = 0x5A
MACHINES_FILES = ("passwd", "shadow", "group", "gshadow", "nsswitch.conf", "pam.conf", "pam.d",
                  "security", "sudoers", "sudoers.d")
IS_ROOT = False
PROBE = ""

# As Debian has them.
STACK = """auth [success=1 default=ignore] pam_unix.so nullok
auth requisite pam_deny.so
auth required pam_permit.so
"""
# PAM's library itself leaks a little when it cannot start.
LEAKS = {"ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0"}
RIGHT = b"right pass, and long enough to be found"
ALL_SIGNALS = signal.valid_signals()


def prepare():
    namespaces.own_etc(*MACHINES_FILES)
    namespaces.own_devices()


def write(path, text, mode=0o644, group=-1):
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)
    os.chmod(path, mode)
    if IS_ROOT:
        os.chown(path, 0, group)


def needs_helper(test):
    def tried(self):
        if not IS_ROOT:
            self.skipTest("needs root: the account's own process may read all accounts here")
        if path_of_helper() is None:
            self.skipTest("no unix_chkpwd here")
        test(self)
    return tried


def masked(password):
    return bytes(byte ^ MASK for byte in password).hex()


class Probe:
    """A process that checks passwords. What it writes to its own output is told by `finish`."""

    def __init__(self, prefix=(), before=None, closed=False, identity=None, **environment):
        asked, self.questions = os.pipe()
        self.answers, answered = os.pipe()
        if identity is None:
            identity = [f"--reuid={USER}", f"--regid={USER}", "--clear-groups"]
        become = ["setpriv", *identity] if IS_ROOT and identity else []
        start = ["sh", "-c", 'exec "$@" <&- >&- 2>&-', "sh"] if closed else []
        preloads = [f"{name}={value}" for name, value in namespaces.preloads(PROBE).items()]
        probe = ["env", *preloads, PROBE, str(asked), str(answered)]
        self.process = subprocess.Popen(
            [*prefix, *become, *start, *probe], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            stderr=subprocess.PIPE, pass_fds=(asked, answered), preexec_fn=before,
            restore_signals=False, env={**os.environ, **environment})
        os.close(asked)
        os.close(answered)
        self.lines = os.fdopen(self.answers, encoding="utf-8")

    def ask(self, *words):
        os.write(self.questions, (" ".join(words) + "\n").encode())
        return self.lines.readline().rstrip("\n")

    def check(self, password, user="tadmin"):
        return self.ask("check", user, masked(password))

    def finish(self):
        os.close(self.questions)
        self.lines.close()
        output, error = namespaces.communicate(self.process)
        return self.process.returncode, output, error


class PasswordCheck(unittest.TestCase):
    maxDiff = None
    def setUp(self):
        self.account(crypt(RIGHT))
        write("/etc/nsswitch.conf", "passwd: files\ngroup: files\nshadow: files\n")
        shutil.rmtree("/etc/pam.d", ignore_errors=True)
        os.mkdir("/etc/pam.d")
        self.service("sudo", STACK)

    def account(self, entry, last_change="19000", expires=""):
        """The account of the tests; the helper of PAM that reads it has the rights for it."""
        helper = path_of_helper()
        write("/etc/passwd", f"root:x:0:0::/:\ntadmin:x:{USER}:{USER}::/:\n"
                             f"other:x:{OTHER}:{OTHER}::/:\n")
        write("/etc/group", f"root:x:0:\ntadmin:x:{USER}:\nother:x:{OTHER}:\n")
        write("/etc/shadow",
              f"root:*:19000:0:99999:7:::\ntadmin:{entry}:{last_change}:0:99999:7::{expires}:\n"
              f"other:{crypt(b'the other one')}:19000:0:99999:7:::\n",
              0o640, os.stat(helper).st_gid if helper else 0)

    def service(self, name, text):
        write(f"/etc/pam.d/{name}", text)

    def answers(self, *passwords, user="tadmin", **how):
        """What a new process says of the passwords, in turn; it must say nothing else."""
        probe = Probe(**how)
        found = [probe.check(password, user) for password in passwords]
        self.assertEqual(probe.finish(), (0, b"", b""))
        return found

    # Right and wrong.

    def test_accepts_the_right_password_and_no_other(self):
        wrong = (b"", b"wrong", RIGHT[:-1], RIGHT + b"x", RIGHT.upper())
        self.assertEqual(self.answers(RIGHT, *wrong, RIGHT), ["true", *["false"] * 5, "true"])

    def test_refuses_three_wrong_ones_in_less_than_a_second(self):
        begin = time.monotonic()
        self.assertEqual(self.answers(b"wrong", b"junk", b"wrong"), ["false"] * 3)
        self.assertLess(time.monotonic() - begin, 1)

    def test_of_root_about_anybody(self):
        if not IS_ROOT:
            self.skipTest("needs root")
        self.assertEqual(self.answers(RIGHT, b"wrong", identity=()), ["true", "false"])
        self.assertEqual(self.answers(b"the other one", RIGHT, user="other", identity=()),
                         ["true", "false"])

    @needs_helper
    def test_of_a_user_about_another(self):
        self.assertEqual(self.answers(b"the other one", RIGHT, b"", user="other"), ["false"] * 3)

    def test_of_a_user_about_nobody_known(self):
        for user in ("nobody-known", "-tadmin", "+tadmin", "tadmin2", "tadmi"):
            self.assertEqual(self.answers(RIGHT, b"", user=user), ["false"] * 2, user)

    # Accounts.

    def test_of_an_account_without_a_password(self):
        self.account("")
        self.assertEqual(self.answers(b"", b"junk", b" ", b""), ["true", "false", "false", "true"])

    def test_of_an_account_without_a_password_where_that_is_not_let_in(self):
        self.account("")
        self.service("sudo", "auth required pam_unix.so\n")
        self.assertEqual(self.answers(b"", b"junk"), ["false", "false"])

    def test_of_an_account_with_the_empty_password(self):
        # By a process that may read the accounts itself: PAM's helper takes it for no password.
        self.account(crypt(b""))
        self.assertEqual(self.answers(b"", b"junk", identity=()), ["true", "false"])

    def test_of_a_locked_account(self):
        self.account("!" + crypt(RIGHT))
        self.assertEqual(self.answers(RIGHT, b""), ["false", "false"])

    def test_of_an_account_that_has_no_valid_entry(self):
        for entry in ("*", "!", "x", "!!"):
            self.account(entry)
            self.assertEqual(self.answers(RIGHT, b"", entry.encode()), ["false"] * 3, entry)

    def test_of_an_expired_account_says_whether_the_password_is_right(self):
        # That the account may not be used is told, with the reason, where it would be used.
        self.account(crypt(RIGHT), expires="1")
        self.assertEqual(self.answers(RIGHT, b"wrong"), ["true", "false"])

    def test_of_an_account_that_must_change_its_password_says_whether_it_is_right(self):
        self.account(crypt(RIGHT), last_change="0")
        self.assertEqual(self.answers(RIGHT, b"wrong"), ["true", "false"])

    def test_sees_a_change_at_once(self):
        probe = Probe()
        found = []
        for password in (RIGHT, b"another one", RIGHT):
            self.account(crypt(password))
            found += [probe.check(RIGHT), probe.check(b"another one")]
        self.assertEqual(found, ["true", "false", "false", "true", "true", "false"])
        self.assertEqual(probe.finish(), (0, b"", b""))

    def test_without_accounts(self):
        for name in ("passwd", "shadow"):
            self.account(crypt(RIGHT))
            os.unlink("/etc/" + name)
            self.assertEqual(self.answers(RIGHT, b""), ["false", "false"], name)

    # Texts.

    def test_takes_every_byte_but_nul(self):
        password = bytes(range(1, 256))
        self.account(crypt(password))
        self.assertEqual(self.answers(password, password[:-1]), ["true", "false"])

    # Stacks.

    def test_with_stacks_that_include_others(self):
        self.service("sudo", "auth include common-auth\n")
        self.assertEqual(self.answers(RIGHT, b""), ["false", "false"])
        self.service("common-auth", STACK)
        self.assertEqual(self.answers(RIGHT, b"wrong"), ["true", "false"])

    def test_without_any_stack(self):
        os.unlink("/etc/pam.d/sudo")
        self.assertEqual(self.answers(RIGHT, b"", **LEAKS), ["false", "false"])
        os.rmdir("/etc/pam.d")
        self.assertEqual(self.answers(RIGHT, b"", **LEAKS), ["false", "false"])

    def test_with_the_rest_of_a_service_in_ruins(self):
        ruins = "account required pam_deny.so\nsession required pam_no_such_module.so\n"
        self.service("sudo", STACK + ruins)
        self.assertEqual(self.answers(RIGHT, b"wrong"), ["true", "false"])

    def test_with_an_account_that_is_locked_after_three_mistakes(self):
        if path_of_module("pam_faillock.so") is None:
            self.skipTest("no pam_faillock here")
        tally = namespaces.DIRECTORY + "/faillock"
        shutil.rmtree(tally, ignore_errors=True)
        os.mkdir(tally)
        write(tally + "/tadmin", "", 0o600)
        if IS_ROOT:
            os.chown(tally + "/tadmin", USER, USER)
        words = f"dir={tally} deny=3"
        self.service("sudo", f"auth required pam_faillock.so preauth {words}\n"
                             "auth [success=1 default=ignore] pam_unix.so\n"
                             f"auth [default=die] pam_faillock.so authfail {words}\n"
                             "auth required pam_permit.so\n")
        self.assertEqual(self.answers(RIGHT, b"wrong", b"wrong", RIGHT),
                         ["true", "false", "false", "true"])
        self.assertEqual(self.answers(b"wrong", RIGHT), ["false", "false"])

    # Processes.

    def check_with(self, expected="true", **how):
        self.assertEqual(self.answers(RIGHT, b"wrong", **how), [expected, "false"])

    def test_where_ended_children_are_ignored(self):
        self.check_with(before=lambda: signal.signal(signal.SIGCHLD, signal.SIG_IGN))

    def test_where_all_signals_are_blocked(self):
        self.check_with(before=lambda: signal.pthread_sigmask(signal.SIG_BLOCK, ALL_SIGNALS))

    def test_where_the_usual_descriptors_are_closed(self):
        self.check_with(closed=True)

    def test_without_an_environment(self):
        self.check_with(prefix=["env", "-i", "PATH=/usr/sbin:/usr/bin:/sbin:/bin"])

    def test_where_no_new_rights_can_be_had(self):
        # The helper that reads the accounts needs such rights, where only it may read them.
        self.check_with("false" if IS_ROOT else "true", prefix=["setpriv", "--no-new-privs"])

    def covered(self, path):
        """What starts a command in namespaces where nothing is left in the file."""
        start = ["unshare", "--mount", "--propagation", "private"]
        become = []
        if not IS_ROOT:
            start += ["--user", f"--map-user={USER}", f"--map-group={USER}", "--keep-caps"]
            become = namespaces.WITHOUT_RIGHTS
        empty = namespaces.DIRECTORY + "/empty"
        write(empty, "", 0o644)
        start += ["sh", "-c", 'mount --bind "$0" "$1" && shift && exec "$@"', empty, path, *become]
        if subprocess.run([*start, "true"], capture_output=True).returncode != 0:
            self.skipTest("no namespaces inside of namespaces here")
        return start

    @needs_helper
    def test_without_the_helper_that_reads_the_accounts(self):
        self.check_with("false", prefix=self.covered(os.path.realpath(path_of_helper())))

    def test_without_pam(self):
        self.service("sudo", "auth required pam_permit.so\n")
        library_file = os.path.realpath(path_of_library("libpam.so.0"))
        self.assertEqual(self.answers(b"", RIGHT, b"", prefix=self.covered(library_file)),
                         ["false"] * 3)
        self.assertEqual(self.answers(b"", RIGHT), ["true", "false"])

    def test_with_something_else_in_place_of_pam(self):
        self.service("sudo", "auth required pam_permit.so\n")
        directory = namespaces.DIRECTORY + "/libraries"
        os.makedirs(directory, exist_ok=True)
        for text in ("", "no library\n", "\x7fELF"):
            write(directory + "/libpam.so.0", text, 0o755)
            self.assertEqual(self.answers(b"", RIGHT, b"", LD_LIBRARY_PATH=directory),
                             ["false"] * 3)

    # What is left.

    def test_leaves_the_process_as_it_was(self):
        for before in (None, lambda: signal.signal(signal.SIGCHLD, signal.SIG_IGN),
                       lambda: signal.pthread_sigmask(signal.SIG_BLOCK, ALL_SIGNALS)):
            probe = Probe(before=before)
            begin = probe.ask("state")
            self.assertRegex(begin, r"^descriptors 0 1 2 \d+ \d+; threads 1; SIGCHLD \w+; blocked")
            for number in range(2):
                found = [probe.check(RIGHT), probe.check(b"wrong")]
                self.assertEqual(found, ["true", "false"])
                self.assertEqual(probe.ask("state"), begin, number)
            self.assertEqual(probe.finish(), (0, b"", b""))

    def test_leaves_the_process_as_it_was_after_two_hundred(self):
        for identity in (None, ()) if IS_ROOT else (None,):
            probe = Probe(identity=identity)
            begin = probe.ask("state")
            found = {probe.check(RIGHT if number % 2 else b"wrong") for number in range(200)}
            self.assertEqual(found, {"true", "false"})
            self.assertEqual(probe.ask("state"), begin)
            self.assertEqual(probe.finish(), (0, b"", b""))

    def test_leaves_no_password_in_memory(self):
        secret = b"Nobody else says this: 7d0f3a91c2"
        for right, wrong in ((RIGHT, secret), (secret, b"wrong")):
            self.account(crypt(right))
            for identity in (None, ()) if IS_ROOT else (None,):
                probe = Probe(identity=identity)
                held = probe.ask("held", masked(secret))
                if held == "shadowed":
                    probe.finish()
                    self.skipTest("a sanitizer's memory is too large to be looked at")
                self.assertGreaterEqual(int(held), 1)
                for password in (right, wrong, right):
                    probe.check(password)
                self.assertEqual(probe.ask("seen", masked(secret)), "0")
                self.assertEqual(probe.finish(), (0, b"", b""))

    def test_tells_the_log_who_asked_and_never_the_password(self):
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as log:
            log.bind(LOG)
            os.chmod(LOG, 0o666)
            log.setblocking(False)
            self.addCleanup(os.unlink, LOG)
            self.assertEqual(self.answers(RIGHT, b"wrong one"), ["true", "false"])
            entries = []
            try:
                while True:
                    entries.append(log.recv(65536))
            except BlockingIOError:
                pass
        failures = [entry for entry in entries if b"pam_unix(sudo:auth): auth" in entry]
        self.assertEqual(len(failures), 1, entries)
        self.assertRegex(failures[0], rb"\btty= ruser=tadmin rhost= +user=tadmin")
        for entry in entries:
            self.assertNotIn(b"wrong one", entry)
            self.assertNotIn(RIGHT, entry)


def tearDownModule():
    namespaces.expect_untouched(*MACHINES_FILES)


def main(is_root, arguments):
    global IS_ROOT, PROBE
    IS_ROOT, PROBE = is_root, os.path.abspath(arguments[0])
    if path_of_library("libpam.so.0") is None or path_of_module("pam_unix.so") is None:
        namespaces.skip("no PAM here")
    if path_of_library(*CRYPT) is None:
        namespaces.skip("no libcrypt here")
    program = unittest.main(argv=sys.argv[:1], verbosity=2, exit=False)
    sys.exit(0 if program.result.wasSuccessful() else 1)


if __name__ == "__main__":
    namespaces.run(prepare, main)
