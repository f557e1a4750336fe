"""A system with sudo for tests of its own: accounts, services, terminals and rules, in namespaces.

The script that imports this is started by namespaces.py with --root or --user. As root the sudo is
the real one; without rights one that plays a script stands in its place.
"""

import fcntl
import os
import re
import resource
import shutil
import signal
import stat
import subprocess
import sys
import termios
import time
import unittest

TESTS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")
sys.path[:0] = [os.path.join(TESTS, "Platform"), os.path.join(TESTS, "Terminal")]

import namespaces  # noqa: E402
import pseudoterminal  # noqa: E402
from pseudoterminal import PATIENCE  # noqa: E402

IS_ROOT = sys.argv[1:2] == ["--root"]
SUDO = "/usr/bin/sudo"
TOOLS = namespaces.DIRECTORY + "/tools"
PROBE, FAKE_SUDO, SETPRIV = (f"{TOOLS}/{name}" for name in ("probe", "sudo", "setpriv"))
DIRECTORY = namespaces.DIRECTORY + "/elevation"
WORK = DIRECTORY + "/work"
SCRIPT = DIRECTORY + "/script"
RECORD = DIRECTORY + "/record"
SUDO_LOG = DIRECTORY + "/sudo.log"
MACHINES_FILES = ("passwd", "shadow", "group", "gshadow", "nsswitch.conf", "pam.conf", "pam.d",
                  "security", "sudoers", "sudoers.d", "sudo.conf", "hosts", "subuid", "subgid")

# The group whose members are asked has the number 80; only tadmin is in it.
USERS = {"tadmin": namespaces.USER, "tplain": 7002, "tgzero": 7003}
GROUPS = "root:x:0:tgzero\noptadmin:x:80:tadmin\n"
# As Debian has them, with nothing after them that is not needed.
STACK = """auth [success=1 default=ignore] pam_unix.so nullok
auth requisite pam_deny.so
auth required pam_permit.so
account required pam_unix.so
session required pam_permit.so
"""
RULES = f"""Defaults env_reset, use_pty, lecture = never, logfile = {SUDO_LOG}
Defaults secure_path = "/usr/sbin:/usr/bin:/sbin:/bin"
root ALL=(ALL:ALL) ALL
"""
ADMINISTRATORS = "%optadmin ALL=(ALL:ALL) ALL\n"

RIGHT = b"right pass 7d0f3a91c2"


# ---- The system of the tests ----

def prepare(*names):
    """The script's last arguments are programs, which get these names among the tools."""
    os.environ["MACHINES_SUDO"] = str(os.path.exists(SUDO))
    namespaces.own_etc(*MACHINES_FILES)
    namespaces.own_devices(has_terminals=True)
    os.mkdir(DIRECTORY)
    os.mkdir(TOOLS)
    tools = [*map(os.path.abspath, sys.argv[-len(names):]), shutil.which("setpriv")]
    for source, copy in zip(tools, (*(f"{TOOLS}/{name}" for name in names), SETPRIV)):
        shutil.copy(source, copy)
        os.chmod(copy, 0o755)
    if IS_ROOT:
        prepare_real_sudo()
    elif os.path.exists(SUDO):
        namespaces.mount("--bind", FAKE_SUDO, SUDO)


def prepare_real_sudo():
    """What it remembers stays in the namespace."""
    os.mkdir(namespaces.DIRECTORY + "/sudo", 0o711)
    for directory in ("/var/lib/sudo", "/var/db/sudo"):
        if os.path.isdir(directory):
            namespaces.mount("-t", "tmpfs", "-o", "mode=0700", "none", directory)


def write(path, text, mode=0o644, group=-1):
    if os.path.exists(path):
        os.unlink(path)
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)
    os.chmod(path, mode)
    if IS_ROOT:
        os.chown(path, 0, group)


def set_up_accounts(user="tadmin", expires="", roots_password=None):
    """Without rights, there is one user, who has the name that is wanted."""
    users = USERS if IS_ROOT else {user: namespaces.USER}
    helper = namespaces.path_of_helper()
    entry = namespaces.crypt(RIGHT)
    write("/etc/passwd", "root:x:0:0::/:/bin/sh\n" + "".join(
        f"{name}:x:{number}:{number}::{DIRECTORY}:/bin/sh\n" for name, number in users.items()))
    write("/etc/group", GROUPS + "".join(f"{name}:x:{n}:\n" for name, n in users.items()))
    roots_entry = "*" if roots_password is None else namespaces.crypt(roots_password)
    write("/etc/shadow", f"root:{roots_entry}:19000:0:99999:7:::\n" + "".join(
        f"{name}:{entry}:19000:0:99999:7::{expires}:\n" for name in users),
        0o640, os.stat(helper).st_gid if helper else 0)


def set_up_services(stack=STACK):
    write("/etc/nsswitch.conf", "passwd: files\ngroup: files\nshadow: files\nhosts: files\n")
    write("/etc/hosts", f"127.0.0.1 localhost {os.uname().nodename}\n")
    os.makedirs("/etc/pam.d", exist_ok=True)
    write("/etc/pam.d/sudo", stack)


def set_up_rules(defaults="", administrators=ADMINISTRATORS):
    text = RULES + "".join(f"Defaults {each}\n" for each in defaults.split(", ") if each)
    write("/etc/sudoers", text + administrators, 0o440)
    for directory in os.listdir(namespaces.DIRECTORY + "/sudo"):
        shutil.rmtree(f"{namespaces.DIRECTORY}/sudo/{directory}")


def contents(path):
    with open(path, "rb") as file:
        return file.read()


def await_file(path):
    await_that(lambda: os.path.exists(path), f"{path} did not appear")
    return contents(path)


def await_that(condition, complaint):
    latest = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > latest:
            raise AssertionError(complaint)
        time.sleep(0.005)


def is_running(pid):
    try:
        return b") Z " not in contents(f"/proc/{pid}/stat")
    except (FileNotFoundError, ProcessLookupError):
        return False


def processes():
    """All in the namespace but this one."""
    numbers = (int(name) for name in os.listdir("/proc") if name.isdigit())
    return [number for number in numbers if number != os.getpid() and is_running(number)]


def of_process(pid, name):
    try:
        return contents(f"/proc/{pid}/{name}")
    except (FileNotFoundError, ProcessLookupError):
        return b""


# ---- Tools, and their user ----

def take_no_core():
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


class Tool(pseudoterminal.Program):
    """A tool that its user has started; it leads the session of the terminal, if there is one."""

    def __init__(self, terminal, command, user, before=None, stdin=None, stdout=subprocess.PIPE,
                 stderr=subprocess.PIPE, environment=None, cwd=DIRECTORY, **how):
        def get_ready():
            take_no_core()
            if terminal is not None:
                fcntl.ioctl(terminal.slave, termios.TIOCSCTTY, 0)
            if before is not None:
                before()

        if IS_ROOT and user != "root":
            number = USERS[user]
            groups = [80] if user == "tadmin" else [0] if user == "tgzero" else []
            how.update(user=number, group=number, extra_groups=[*groups, number])
        if stdin is None:
            stdin = subprocess.DEVNULL if terminal is None else terminal.slave
        options = {name: value for name, value in os.environ.items() if name.endswith("_OPTIONS")}
        preloads = {} if IS_ROOT else namespaces.preloads(PROBE)
        self.terminal = terminal
        self.process = subprocess.Popen(
            command, stdin=stdin, stdout=stdout, stderr=stderr, start_new_session=True,
            preexec_fn=get_ready, cwd=cwd, **how,
            env={"PATH": f"{TOOLS}:/usr/bin:/bin", "HOME": DIRECTORY, "LC_ALL": "C", **options,
                 **preloads, **(environment or {})})
        self.pid = self.process.pid

    def finish(self):
        """Waits for the end; returns the status, minus the signal when one ended it."""
        try:
            self.output, self.errors = self.process.communicate(timeout=PATIENCE)
        except subprocess.TimeoutExpired:
            raise AssertionError("did not come to its end") from None
        return self.process.returncode

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        for stream in (self.process.stdin, self.process.stdout, self.process.stderr):
            if stream is not None:
                stream.close()


def steps(*words, tool=PROBE, command="root"):
    return [tool, command, *(part for word in words for part in ("-d", word))]


def told(arguments):
    return b"".join(b"argument %s\n" % os.fsencode(word).hex().encode() for word in arguments)


class SystemTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        set_up_accounts()
        set_up_services()
        shutil.rmtree(WORK, ignore_errors=True)
        os.mkdir(WORK)
        os.chmod(WORK, 0o777)
        for path in (RECORD, SUDO_LOG):
            if os.path.exists(path):
                os.unlink(path)
        self.addCleanup(self.expect_nobody_left)
        self.terminal = pseudoterminal.Terminal()
        self.addCleanup(self.terminal.close)

    def expect_nobody_left(self):
        """What outlives a test would disturb the next."""
        try:
            await_that(lambda: not processes(), "processes are left")
        except AssertionError:
            left = processes()
            names = [contents(f"/proc/{pid}/cmdline") for pid in left]
            for pid in left:
                os.kill(pid, signal.SIGKILL)
            raise AssertionError(f"processes are left: {names}") from None

    def start(self, *command, user="tadmin", has_terminal=True, **how):
        tool = Tool(self.terminal if has_terminal else None, command, user, **how)
        self.addCleanup(tool.close)
        return tool

    def without_sudo(self):
        """What starts a command where there is no sudo. The environment must not preload anything:
        the shell does not run with a sanitizer's library."""
        empty = DIRECTORY + "/empty"
        os.makedirs(empty, exist_ok=True)
        user = namespaces.USER
        preload = namespaces.preloads(PROBE).get("LD_PRELOAD", "")
        start = ["unshare", "--mount", "--propagation", "private", "--user", f"--map-user={user}",
                 f"--map-group={user}", "--keep-caps", "sh", "-c",
                 'mount --bind "$0" /usr/bin && LD_PRELOAD=$1 && export LD_PRELOAD && '
                 'shift && exec "$@"', empty, preload,
                 SETPRIV, *namespaces.WITHOUT_RIGHTS[1:]]
        if subprocess.run([*start, SETPRIV, "--version"], capture_output=True).returncode != 0:
            self.skipTest("no namespaces inside of namespaces here")
        return start

    def expect_end(self, tool, output, status=0, shown=b""):
        """This is all that its user has seen of it since the last answer."""
        self.assertEqual((tool.finish(), tool.output, tool.errors), (status, output, b""))
        self.expect_shown(shown)

    def expect_shown(self, shown):
        # What has been written reaches the other side of a terminal a little later.
        latest = time.monotonic() + 1
        while len(self.terminal.shown) < len(shown) and time.monotonic() < latest:
            self.terminal.receive(0.05)
        self.assertEqual(self.terminal.take_shown(), shown)


def expect_untouched():
    namespaces.expect_untouched(*MACHINES_FILES)


def needed_for_real_sudo():
    """Why the real sudo cannot be tried here; nothing when it can."""
    if os.environ["MACHINES_SUDO"] != "True":
        return f"no {SUDO} here"
    if not os.stat(SUDO).st_mode & stat.S_ISUID or b"NoNewPrivs:\t0" not in contents(
            "/proc/self/status"):
        return f"{SUDO} gets no rights here"
    version = subprocess.run([SUDO, "-V"], capture_output=True, stdin=subprocess.DEVNULL)
    if not re.match(rb"Sudo version 1\.", version.stdout):
        return f"{SUDO} is another one: {version.stdout + version.stderr}"
    if namespaces.path_of_helper() is None:
        return "no unix_chkpwd here"
    return None


def main(is_root, _):
    """Runs the tests of the script that was started."""
    if namespaces.path_of_library("libpam.so.0") is None or \
            namespaces.path_of_module("pam_unix.so") is None:
        namespaces.skip("no PAM here")
    if namespaces.path_of_library(*namespaces.CRYPT) is None:
        namespaces.skip("no libcrypt here")
    if is_root:
        set_up_accounts()
        set_up_services()
        set_up_rules()
        if reason := needed_for_real_sudo():
            namespaces.skip(reason)
    names = os.environ.get("TESTS", "").split()  # all without
    program = unittest.main(argv=[sys.argv[0], *names], verbosity=2, exit=False,
                            failfast="GTEST_FAIL_FAST" in os.environ)
    sys.exit(0 if program.result.wasSuccessful() else 1)
