"""Root commands in the hands of sudo: HandToSudoTests.py --root|--user PROBE FAKE_SUDO

As root, with the real sudo: whatever is set up and whatever happens, the tool's user meets what
`sudo /path/of/tool` meets that is typed by hand, which runs beside it. Without rights, with a sudo
that plays a script: what it is given, and what happens without it.
"""

import collections
import fcntl
import hashlib
import os
import pickle
import re
import select
import shutil
import signal
import subprocess
import sys
import time
import traceback
import unittest

import sudosystem
from sudosystem import (ADMINISTRATORS, DIRECTORY, FAKE_SUDO, IS_ROOT, PROBE, RECORD, RIGHT, SCRIPT,
                        STACK, SUDO, SUDO_LOG, TOOLS, WORK, await_that, contents,
                        set_up_accounts, set_up_rules, set_up_services, steps, told, write)
import namespaces
import pseudoterminal
from pseudoterminal import PATIENCE

NO_MATCHING_LINE = 77  # the probe's status for it
WITHOUT_PASSWORD = "%optadmin ALL=(ALL:ALL) NOPASSWD: ALL\n"
ROOTS = b"root's own 11"
ASKED = re.compile(rb"\[sudo\] password for \w+: \Z")
BY_HAND = [SUDO, "-u", "#0", "--"]


WHOLE = WORK + "/whole"  # a name of the probe's: it calls runTool
OF_THE_WHOLE = ("the right password", "three wrong passwords", "NOPASSWD")


def refusal(why):
    return b"This command must be run as root, and " + why + b".\n"


UNKNOWN = refusal(b"sudo cannot be told which program that is: use sudo yourself")
ANOTHER_USER = refusal(b"sudo has run it as another user")


# ---- What is set up, and what happens: every pair is tried ----

Situation = collections.namedtuple(
    "Situation", "name defaults administrators user answers has_terminal has_ticket lets_in",
    defaults=("", ADMINISTRATORS, "tadmin", [RIGHT + b"\n"], True, False, True))

SITUATIONS = [
    Situation("the right password"),
    Situation("a wrong password and the right one", answers=[b"wrong\n", RIGHT + b"\n"]),
    Situation("three wrong passwords", answers=[b"wrong\n"] * 3, lets_in=False),
    Situation("no password", answers=[b"\x04"], lets_in=False),
    Situation("NOPASSWD", administrators=WITHOUT_PASSWORD, answers=[]),
    Situation("a ticket", has_ticket=True),
    Situation("not in sudoers", user="tplain", lets_in=False),
    Situation("another command alone", administrators="tadmin ALL=(ALL:ALL) /bin/true\n",
              lets_in=False),
    Situation("another user alone", administrators="tadmin ALL=(tplain) ALL\n", lets_in=False),
    Situation("no terminal", has_terminal=False, answers=[], lets_in=False),
    Situation("no terminal, NOPASSWD", administrators=WITHOUT_PASSWORD, has_terminal=False,
              answers=[]),
    Situation("requiretty", "requiretty"),
    Situation("requiretty, no terminal, NOPASSWD", "requiretty", WITHOUT_PASSWORD,
              has_terminal=False, answers=[], lets_in=False),
    Situation("!use_pty", "!use_pty"),
    Situation("a lecture", f"lecture = always, lecture_file = {DIRECTORY}/lecture"),
    Situation("runas_default", "runas_default = tplain"),
    Situation("rootpw", "rootpw", answers=[ROOTS + b"\n"]),
    Situation("noexec", "noexec"),
]

# `line` is what the shell runs; its streams 7, 5 and 6 are those of the test. The command writes
# the file "here" when its user may go on, and some wait for the file "go" then.
Ending = collections.namedtuple(
    "Ending", "name steps line needs status keys answers input refused",
    defaults=(("pid here", "say done", "write"), '"$@" <&7 >&5 2>&6', "nothing", 0, None, None,
              None, 1))
WAITS = ("pid here", "await go", "say done", "write", "exit 5")

ENDINGS = [
    Ending("status 0"),
    Ending("status 3", ("pid here", "exit 3"), needs="command", status=3),
    Ending("SIGKILL", ("pid here", "kill 9"), needs="command", status=128 + 9),
    Ending("SIGTERM", ("pid here", "kill 15"), needs="command", status=128 + 15),
    Ending("both streams", ("pid here", "say out", "write", "say err", "error", "say more", "write"),
           needs="command"),
    Ending("10 MB", ("pid here", "fill 10000000", "write"), needs="command"),
    Ending("all on the terminal", ("pid here", "say out", "write", "say err", "error"),
           line='"$@" </dev/tty >/dev/tty 2>&1', needs="terminal"),
    Ending("piped input", ("pid here", "input", "write"), input=b"one\ntwo\xff\n"),
    Ending("another program", ("execute /bin/true", "write"), needs="command"),
    Ending("^C at the prompt", answers=[b"\x03"], needs="prompt"),
    Ending("^Z at the prompt, and fg", answers=[b"\x1a"], needs="prompt"),
    Ending("^C in the command", WAITS, needs="command terminal", keys=b"\x03", status=128 + 2),
    Ending("^Z in the command, and fg", WAITS, needs="command terminal", keys=b"\x1a", status=5),
    Ending("tool | head", ("pid here", "fill 1000000", "write"),
           line='"$@" <&7 2>&6 | head -c 10 >&5', needs="command", status=128 + 13),
    # It may not end what is root's; the command ends by itself.
    Ending("timeout 1 tool", ("pid here", "sleep 1300", "exit 6"), needs="command",
           line='timeout 1 "$@" <&7 >&5 2>&6', status=124),
    Ending("SIGCHLD ignored", line='env --ignore-signal=CHLD "$@" <&7 >&5 2>&6'),
    Ending("closed input", line='"$@" <&- >&5 2>&6'),
    Ending("closed output", ("pid here", "exit 7"), line='"$@" <&7 >&- 2>&6', status=7),
    Ending("closed errors", line='"$@" <&7 >&5 2>&-'),
    Ending("all streams closed", ("pid here", "exit 7"), line='"$@" <&- >&- 2>&-', status=7),
]


def impossible(situation, ending):
    """Why a pair cannot be tried; nothing when it can."""
    if "terminal" in ending.needs and not situation.has_terminal:
        return "no terminal"
    if "command" in ending.needs and not situation.lets_in:
        return "no command"
    if "prompt" in ending.needs and (not situation.answers or situation.has_ticket):
        return "no prompt"
    if situation.defaults == "noexec" and namespaces.preloads(PROBE):
        return "sudo loads a library before that of the sanitizer, which refuses to run"
    return None


# The user's shell, with one job: it tells each stop and the end, and waits for a line to go on. It
# looks for its terminal in standard error, when it starts.
SHELL = r"""
exec 3>&"$1" 4<&"$2" 5>&1 6>&"$3" 7<&0
eval "exec $1>&- $2<&- $3>&-"
exec </dev/null >/dev/null 2>&1
trap : INT
mark=$4
shift 4
FIRST
LINE 3>&- 4>&- 5>&- 6>&- 7>&-
status=$?
while [ -n "$(jobs -s)" ]; do
    echo stopped $status >&3
    read -r <&4
    fg
    status=$?
done
[ -z "$mark" ] || printf %s "$mark" >/dev/tty
echo ended $status >&3
"""
MARK = b"<the end>"


class Run:
    """A command that its user starts from a shell, and all that the user sees of it."""

    def __init__(self, situation, ending, command, directory):
        self.situation, self.ending, self.directory = situation, ending, directory
        for name in os.listdir(directory):
            os.unlink(f"{directory}/{name}")
        self.answers = list(situation.answers)
        if ending.answers:
            stops = ending.answers[0] == b"\x1a"
            self.answers = ending.answers + (self.answers if stops else [])
        self.terminal = pseudoterminal.Terminal()
        self.usual = self.terminal.settings()
        self.reports, report = self.pipe()
        order, self.orders = self.pipe()
        self.errors, error = self.pipe()
        stdin = None
        if ending.input is not None:
            stdin, written = os.pipe()
            os.write(written, ending.input)
            os.close(written)
        first = f"{SUDO} -v 2>&6" if situation.has_ticket else ""
        script = directory + "/script"  # bash -c would end with a command that ^C ends
        write(script, SHELL.replace("FIRST", first).replace("LINE", ending.line))
        mark = MARK.decode() if situation.has_terminal else ""
        self.shell = sudosystem.Tool(
            self.terminal if situation.has_terminal else None,
            ["/bin/bash", "--norc", "--noprofile", "-m", "-o", "pipefail", script,
             str(report), str(order), str(error), mark, *command], situation.user, stdin=stdin,
            stderr=self.terminal.slave if situation.has_terminal else subprocess.DEVNULL,
            cwd=directory, pass_fds=[report, order, error])
        for descriptor in (report, order, error, *([] if stdin is None else [stdin])):
            os.close(descriptor)
        self.output = self.shell.process.stdout.fileno()
        self.streams = {each: b"" for each in (self.terminal.master, self.reports, self.output,
                                               self.errors)}
        self.open = set(self.streams)
        self.seen = 0  # of what the terminal has shown: up to the last answer
        self.orders_given = 0
        self.has_typed = False
        self.states = []  # of the terminal, whenever the user looks

    def pipe(self):
        """Above the numbers that the shell uses."""
        ends = os.pipe()
        high = [fcntl.fcntl(each, fcntl.F_DUPFD_CLOEXEC, 20) for each in ends]
        for each in ends:
            os.close(each)
        return high

    def play(self):
        latest = time.monotonic() + PATIENCE
        try:
            while not self.has_ended():
                if time.monotonic() > latest:
                    raise AssertionError(f"does not end: {self.streams}")
                self.receive()
                self.answer()
                self.interfere()
                self.go_on()
            self.look()
            return self.result()
        finally:
            self.shell.close()
            self.terminal.close()
            for each in (self.reports, self.orders, self.errors):
                os.close(each)

    def receive(self):
        for descriptor in select.select(self.open, [], [], 0.005)[0]:
            part = os.read(descriptor, 1 << 20)
            self.streams[descriptor] += part
            if not part:
                self.open.remove(descriptor)

    def shown(self):
        return self.streams[self.terminal.master]

    def lines(self):
        return self.streams[self.reports].decode().splitlines()

    def look(self):
        self.states.append(self.terminal.settings() == self.usual or self.terminal.settings())

    def has_ended(self):
        has_all = self.open <= {self.terminal.master}
        return has_all and (not self.situation.has_terminal or self.shown().endswith(MARK))

    def answer(self):
        if ASKED.search(self.shown(), self.seen) and not self.terminal.is_echoing():
            self.look()
            self.seen = len(self.shown())
            key = self.answers.pop(0)
            if key in (b"\x03", b"\x1a"):  # sudo misses a signal just before it reads
                await_that(self.is_asleep, "sudo does not read")
            self.terminal.type(key)

    def interfere(self):
        if self.ending.keys and not self.has_typed and os.path.exists(self.directory + "/here"):
            await_that(self.is_asleep, "the command does not wait")
            self.has_typed = True
            self.look()
            self.terminal.type(self.ending.keys)

    def is_asleep(self):
        """Twice: one may wake another."""
        for _ in range(2):
            time.sleep(0.01)
            if set(states_of_family(self.shell.pid)) != {"S"}:
                return False
        return True

    def go_on(self):
        stops = sum(line.startswith("stopped") for line in self.lines())
        if stops > 3:
            raise AssertionError(f"stops again and again: {self.lines()}")
        if stops > self.orders_given:
            self.orders_given += 1
            self.look()
            os.write(self.orders, b"go on\n")
            write(self.directory + "/go", "")

    def result(self):
        output, errors = (short(self.streams[each]) for each in (self.output, self.errors))
        ran = [name for name in os.listdir(self.directory) if name == "here"]
        return {"status": self.lines(), "output": output, "errors": errors, "shown": self.shown(),
                "terminal": self.states, "unasked": self.answers,
                "ran": [os.stat(f"{self.directory}/{name}").st_uid for name in ran]}


def short(text):
    return text if len(text) < 10_000 else (len(text), hashlib.sha256(text).hexdigest())


def states_of_family(pid):
    """The states of all who descend from a process."""
    parents, states = {}, {}
    for name in filter(str.isdigit, os.listdir("/proc")):
        try:
            number, rest = contents(f"/proc/{name}/stat").decode(errors="replace").split(" (", 1)
        except (FileNotFoundError, ProcessLookupError):
            continue
        states[int(number)], parents[int(number)] = rest.rpartition(") ")[2].split()[:2]
    found = []
    for each, state in states.items():
        up = each
        while up and up != pid:
            up = int(parents.get(up, 0))
        if up == pid and each != pid:
            found.append(state)
    return found


def in_parallel(function, items, count=6):
    """What the function returns for each, or how it failed; in so many processes."""
    items = list(items)
    found = [None] * len(items)

    def work(first):
        for index in range(first, len(items), count):
            try:
                found[index] = function(items[index])
            except Exception:  # pylint: disable=broad-except
                found[index] = traceback.format_exc()
        with open(f"{DIRECTORY}/found{first}", "wb") as file:
            pickle.dump(found[first::count], file)

    children = {}
    sys.stdout.flush()
    for first in range(count):
        children[first] = os.fork()
        if children[first] == 0:
            try:
                work(first)
            finally:
                os._exit(0)
    for first, child in children.items():
        os.waitpid(child, 0)
        with open(f"{DIRECTORY}/found{first}", "rb") as file:
            found[first::count] = pickle.load(file)
        os.unlink(f"{DIRECTORY}/found{first}")
    return found


def logged(directory):
    """What sudo has logged of commands that were started there, without time and terminal."""
    if not os.path.exists(SUDO_LOG):
        return []
    return [re.sub(rb"^.*? : | ?TTY=\S+ ;", b"", line) for line in contents(SUDO_LOG).splitlines()
            if b"PWD=%s " % directory.encode() in line]


class ByHand(sudosystem.SystemTest):
    """Every pair of a situation and an ending: ours, and what is typed by hand."""

    def setUp(self):
        if not IS_ROOT:
            self.skipTest("needs root: sudo has no rights here")
        super().setUp()
        write(DIRECTORY + "/lecture", "Behold:\nthis is root.\n")

    def set_up(self, situation):
        set_up_accounts(roots_password=ROOTS)
        set_up_services(STACK.replace("nullok", "nullok nodelay"))
        set_up_rules(", ".join(filter(None, ["loglinelen = 0", situation.defaults])),
                     situation.administrators)

    def test_is_as_typed_by_hand(self):
        self.compare(SITUATIONS, PROBE)

    def test_is_as_typed_by_hand_when_the_tool_is_run_in_one_call(self):
        os.symlink(PROBE, WHOLE)
        self.compare([each for each in SITUATIONS if each.name in OF_THE_WHOLE], WHOLE)

    def compare(self, situations, tool):
        left_out = collections.Counter()
        compared = 0
        for situation in situations:
            self.set_up(situation)
            endings = []
            for ending in ENDINGS:
                reason = impossible(situation, ending)
                left_out[reason] += reason is not None
                if reason is None:
                    endings.append(ending)
                    os.makedirs(self.directory(situation, ending))
                    os.chmod(self.directory(situation, ending), 0o777)
            results = in_parallel(lambda ending: self.both(situation, ending, tool), endings)
            for ending, result in zip(endings, results):
                with self.subTest(f"{situation.name} / {ending.name}"):
                    compared += 1
                    self.judge(situation, ending, result)
        print(f"{compared} cells compared with what is typed by hand", flush=True)
        for reason, count in left_out.items():
            if reason:
                print(f"left out: {count} cells that cannot be: {reason}", flush=True)

    def directory(self, situation, ending):
        return f"{WORK}/{SITUATIONS.index(situation)}-{ENDINGS.index(ending)}"

    def both(self, situation, ending, tool):
        directory = self.directory(situation, ending)
        command = steps(*ending.steps, tool=tool)
        ours = Run(situation, ending, command, directory).play()
        ours["logged"] = logged(directory)
        by_hand = Run(situation, ending, BY_HAND + command, directory).play()
        by_hand["logged"] = logged(directory)[len(ours["logged"]):]
        return ours, by_hand

    def judge(self, situation, ending, result):
        self.assertIsInstance(result, tuple, result)
        ours, by_hand = result
        self.assertEqual(ours, by_hand)
        # Two of the same that were never started would be equal too.
        lets_in = situation.lets_in and ending.answers != [b"\x03"]
        self.assertEqual(ours["status"][-1],
                         f"ended {ending.status if lets_in else ending.refused}")
        self.assertEqual(ours["ran"], [0] if lets_in and ending.steps[0] == "pid here" else [])
        self.assertEqual(ours["terminal"][-1], True)  # as it was before
        if ending.name == "another program":
            refused = b"refused 13\n" if situation.defaults == "noexec" else b""
            self.assertEqual(ours["output"], refused)


class Started(sudosystem.SystemTest):
    """Whatever the tool was started by and as, sudo starts that tool or nothing."""

    def setUp(self):
        if not IS_ROOT:
            self.skipTest("needs root: sudo has no rights here")
        super().setUp()
        set_up_rules(administrators=WITHOUT_PASSWORD)

    def expect_output(self, output, *command, **how):
        self.expect_end(self.start(*command, **how), output)

    def expect_refusal(self, line, *command, **how):
        tool = self.start(*command, **how)
        self.assertEqual((tool.finish(), tool.output, tool.errors), (NO_MATCHING_LINE, b"", line))
        self.assertFalse(os.path.exists(SUDO_LOG))

    def other(self, path):
        """A program that would be started in the place of the tool, and is not."""
        shutil.copy("/bin/true", path)

    STEPS = ("user", "program", "write")
    ITSELF = b"user 0 0\nprogram %s\n" % PROBE.encode()


class WhatIsStarted(Started):
    def test_is_the_tool_whatever_its_first_argument_is(self):
        for name in ("-e", "A=B", "", "-bash", "/bin/sh", "probe", "./probe", "--", "-u"):
            with self.subTest(name):
                self.expect_output(self.ITSELF, *steps(*self.STEPS, tool=name), executable=PROBE)

    def test_is_the_tool_that_the_path_has_and_not_one_that_sudo_would_find(self):
        self.other(WORK + "/probe")
        set_up_rules(f"secure_path = {WORK}", WITHOUT_PASSWORD)
        self.expect_output(self.ITSELF, "env", *steps(*self.STEPS, tool="probe"))

    def test_is_the_tool_though_it_has_gone_where_another_of_its_name_is(self):
        os.symlink(TOOLS, WORK + "/tools")
        os.makedirs(WORK + "/elsewhere/tools")
        self.other(WORK + "/elsewhere/tools/probe")
        for name in ("tools/probe", "./tools/probe"):
            self.expect_output(self.ITSELF, *steps(*self.STEPS, tool=name), cwd=WORK,
                               environment={"BEFORE": f"chdir {WORK}/elsewhere"})

    def test_is_the_tool_though_main_has_overwritten_its_arguments(self):
        command = steps("arguments", "write")
        self.expect_output(told(command), *command, environment={"BEFORE": "overwrite"})

    def test_has_the_absolute_path_as_its_name(self):
        command = steps("arguments", "write")
        self.expect_output(told(command), "env", "probe", *command[1:])

    def test_is_a_tool_of_several_names_by_the_name_that_it_was_started_by(self):
        os.symlink(PROBE, WORK + "/link")
        command = steps("arguments", "program", "write", tool=WORK + "/link")
        told_by_tool = told(command) + b"program %s\n" % PROBE.encode()
        self.expect_output(told_by_tool, *command)
        self.expect_output(told_by_tool, "./link", *command[1:], cwd=WORK)

    # Much of what the system tells of such a process is closed to itself.
    @unittest.skipIf(namespaces.preloads(sys.argv[-2]), "a sanitizer must look into the process")
    def test_is_the_tool_that_the_user_may_execute_and_not_read(self):
        shutil.copy(PROBE, WORK + "/copy")
        for mode in (0o711, 0o2755):
            os.chmod(WORK + "/copy", mode)
            self.expect_output(b"user 0 0\nprogram %s/copy\n" % WORK.encode(),
                               *steps("user", "program", "write", tool=WORK + "/copy"))

    def test_is_nothing_where_an_argument_has_a_nul(self):
        self.expect_refusal(refusal(b"/usr/bin/sudo cannot be started: Invalid argument"),
                            *steps("say a", "write"), environment={"BEFORE": "nul"})

    def test_gets_the_signals_that_it_would_get_by_hand(self):
        for how in ({}, {"restore_signals": False}):
            command = steps("signals", "write")
            by_hand = self.start(*BY_HAND, *command, **how)
            self.assertEqual(by_hand.finish(), 0)
            self.assertIn(b"blocked", by_hand.output)
            self.expect_output(by_hand.output, *command, environment={"BEFORE": "block"}, **how)

    def test_judges_the_values_that_root_alone_can_see(self):
        os.mkdir(WORK + "/closed", 0o700)
        write(WORK + "/closed/file", "")
        self.expect_output(b"user 0 0\n", *steps("user", "write"), "-f", WORK + "/closed/file")
        tool = self.start(*steps("user", "write"), "-f", WORK + "/closed/absent")
        self.assertEqual(tool.finish(), NO_MATCHING_LINE)
        self.assertTrue(tool.output.startswith(b"Validation of parameter -f failed"), tool.output)
        self.assertEqual(tool.errors, b"")

    def test_says_what_is_wrong_in_the_tools_name_when_it_is_run_in_one_call(self):
        os.symlink(PROBE, WHOLE)
        tool = self.start(WHOLE, "root", "-f", WORK + "/absent")
        self.assertEqual((tool.finish(), tool.output, tool.errors), (
            64, b"", b"whole: '-f': %s/absent does not exist\n" % WORK.encode()))
        tool = self.start(SUDO, "-u", "tplain", WHOLE, "root")
        self.assertEqual((tool.finish(), tool.output, tool.errors), (77, b"", b"whole: " + ANOTHER_USER))

    def test_comes_after_what_the_tool_has_printed(self):
        self.expect_output(b"first, second\n", *steps("say second", "write"),
                           environment={"BEFORE": "print first, "})

    def test_is_not_needed_for_a_command_for_everybody(self):
        self.expect_output(b"user 7001 7001\n", *steps("user", "write", command="user"))
        self.assertFalse(os.path.exists(SUDO_LOG))

    def test_is_not_needed_by_root(self):
        self.expect_output(b"user 0 0\n", *steps("user", "write"), user="root")
        self.assertFalse(os.path.exists(SUDO_LOG))

    def test_is_needed_by_a_member_of_roots_group(self):
        set_up_rules(administrators="tgzero ALL=(ALL) NOPASSWD: ALL\n")
        self.expect_output(b"user 0 0\n", *steps("user", "write"), user="tgzero")


class WhatLinuxKnowsOfIt(Started):
    """By what /proc says of the file that runs; and nothing that the library of another system keeps open."""

    def test_gets_directory_mask_and_streams_and_no_other_descriptor(self):
        ends = os.pipe()
        for end in ends:
            self.addCleanup(os.close, end)
        self.expect_output(b"place %s 077\ndescriptors 0 1 2\n" % DIRECTORY.encode(),
                           *steps("place", "descriptors", "write"),
                           before=lambda: os.umask(0o077), pass_fds=ends)

    # Such a name leads to another file, or to none, in the process of sudo.

    def test_is_the_tool_that_has_started_itself_again(self):
        for name in ("/proc/self/exe", "/proc/../proc/thread-self/exe"):
            self.expect_output(self.ITSELF, *steps(*self.STEPS),
                               environment={"BEFORE": "again " + name})

    def test_is_the_tool_that_was_started_by_a_descriptor(self):
        def open_tool():
            os.dup2(os.open(PROBE, os.O_RDONLY), 9)

        self.expect_output(self.ITSELF, *steps(*self.STEPS), executable="/proc/self/fd/9",
                           before=open_tool, close_fds=False)

    def test_is_nothing_where_the_tool_was_deleted_or_replaced(self):
        copy = WORK + "/copy"
        for change in (lambda: os.unlink(copy), lambda: os.replace(WORK + "/other", copy)):
            shutil.copy(PROBE, copy)
            self.other(WORK + "/other")
            for name in ("here", "go"):
                if os.path.exists(f"{WORK}/{name}"):
                    os.unlink(f"{WORK}/{name}")
            tool = self.start(*steps("say a", "write", tool=copy), environment={
                "BEFORE": f"pid {WORK}/here\nawait {WORK}/go"})
            await_that(lambda: os.path.exists(WORK + "/here"), "does not start")
            change()
            write(WORK + "/go", "")
            self.assertEqual((tool.finish(), tool.output, tool.errors),
                             (NO_MATCHING_LINE, b"", UNKNOWN))
            self.assertFalse(os.path.exists(SUDO_LOG))

    def test_is_nothing_where_a_loader_was_given_the_tool(self):
        loader = namespaces.existing(("/lib64/ld-linux-x86-64.so.2", "/lib/ld-linux-aarch64.so.1"))
        if loader is None:
            self.skipTest("it is not known where the loader is on this processor")
        self.other(WORK + "/root")
        command = steps("say a", "write")
        self.expect_refusal(UNKNOWN, loader, *command, cwd=WORK)
        self.expect_refusal(UNKNOWN, loader, "--argv0", PROBE, *command, cwd=WORK)


class NoLoop(sudosystem.SystemTest):
    """What sudo has started does not hand over once more; what a shell of sudo's starts does."""

    def setUp(self):
        if not IS_ROOT:
            self.skipTest("needs root: sudo has no rights here")
        super().setUp()
        set_up_rules(administrators=WITHOUT_PASSWORD + "tplain ALL=(ALL) NOPASSWD: ALL\n")
        write("/etc/pam.d/su", "".join(f"{kind} required pam_permit.so\n"
                                       for kind in ("auth", "account", "session")))

    def expect_handed_over(self, *command):
        self.expect_end(self.start(*command), b"user 0 0\n")

    def expect_refusal(self, line, times, *command):
        tool = self.start(*command)
        self.assertEqual((tool.finish(), tool.output, tool.errors), (NO_MATCHING_LINE, b"", line))
        log = contents(SUDO_LOG) if os.path.exists(SUDO_LOG) else b""
        self.assertEqual(log.count(b"USER="), times)

    def test_meets_a_tool_that_sudo_has_started_as_another_user(self):
        self.expect_refusal(ANOTHER_USER, 1, SUDO, "-u", "tplain", *steps("say a", "write"))
        os.unlink(SUDO_LOG)
        os.symlink(PROBE, WORK + "/link")
        self.expect_refusal(ANOTHER_USER, 1, SUDO, "-u", "tplain", WORK + "/link", "root")

    @unittest.skipIf(namespaces.preloads(sys.argv[-2]), "a sanitizer must look into the process")
    def test_meets_a_tool_that_becomes_another_user_by_its_file(self):
        copy = WORK + "/copy"
        shutil.copy(PROBE, copy)
        os.chown(copy, 7002, 7002)
        os.chmod(copy, 0o4755)
        self.expect_refusal(ANOTHER_USER, 1, copy, "root")
        self.expect_refusal(ANOTHER_USER, 2, SUDO, copy, "root")

    def test_is_not_seen_in_a_shell_that_sudo_has_started(self):
        line = "'%s' root -d user -d write" % PROBE
        self.expect_handed_over(SUDO, "-u", "tplain", "sh", "-c", line + "; true")

    def test_is_not_seen_in_a_shell_of_another_user_within_sudo(self):
        line = "'%s' root -d user -d write" % PROBE
        self.expect_handed_over(SUDO, "su", "tplain", "-c", line)

    def test_is_not_seen_after_a_program_whose_name_is_longer(self):
        os.symlink("/usr/bin/env", WORK + "/toolbox")
        shutil.copy(PROBE, WORK + "/tool")
        self.expect_handed_over(SUDO, "-u", "tplain", WORK + "/toolbox", WORK + "/tool", "root", "-d",
                                "user", "-d", "write")


# ---- With a program in the place of sudo, and without any ----

class InThePlaceOfSudo(sudosystem.SystemTest):
    def setUp(self):
        if IS_ROOT:
            self.skipTest("tried without rights, with a program in the place of sudo")
        if os.environ["MACHINES_SUDO"] != "True":
            self.skipTest(f"there is no {SUDO} here whose place another program could take")
        super().setUp()
        self.addCleanup(os.chmod, FAKE_SUDO, 0o755)

    def play(self, *script, status=0, output=b"", errors=b"", command=None, **how):
        write(SCRIPT, "".join(step + "\n" for step in script))
        tool = self.start(*(command or steps("say a", "write")), **how)
        self.assertEqual((tool.finish(), tool.output, tool.errors), (status, output, errors))
        self.expect_shown(b"")

    def test_gets_these_words_and_no_more(self):
        texts = [b"", b" ", b"'", b"line\nfeed", b"\xff\xfe", b"--", b"-n", b"a=b"]
        command = [PROBE.encode(), b"root", *(part for text in texts for part in (b"-t", text))]
        self.play("arguments", "write", command=command,
                  output=told([b"sudo", b"-u", b"root", b"--", *command]))

    def test_gets_what_the_database_calls_user_0(self):
        accounts = contents("/etc/passwd").decode()
        write("/etc/passwd", accounts.replace("root:x:0:", "toor:x:0:"))
        self.play("arguments", "write", command=[PROBE, "root"],
                  output=told(["sudo", "-u", "toor", "--", PROBE, "root"]))

    def test_gets_the_streams_directory_and_mask_of_the_tool(self):
        self.play("descriptors", "place", "write", before=lambda: os.umask(0o027),
                  output=b"descriptors 0 1 2\nplace %s 027\n" % DIRECTORY.encode())

    def test_gets_the_environment_of_the_tool(self):
        self.play("environment", f"record {RECORD}", environment={"MARK": "a mark"})
        variables = [bytes.fromhex(line.split()[1].decode())
                     for line in contents(RECORD).splitlines()]
        self.assertIn(b"MARK=a mark", variables)
        self.assertIn(b"HOME=" + DIRECTORY.encode(), variables)

    def test_gets_the_signals_as_the_tool_was_started_with_them(self):
        def before():
            signal.pthread_sigmask(signal.SIG_BLOCK, [signal.SIGUSR1])
            signal.signal(signal.SIGCHLD, signal.SIG_IGN)

        self.play("signals", "write", before=before, environment={"BEFORE": "block"},
                  output=b"blocked %d ignored %d\n" % (signal.SIGUSR1, signal.SIGCHLD))

    def test_is_the_same_process(self):
        write(SCRIPT, f"pid {RECORD}\n")
        tool = self.start(*steps("say a"))
        self.assertEqual(tool.finish(), 0)
        self.assertEqual(int(contents(RECORD)), tool.pid)

    def test_ends_as_it_does(self):
        self.play("exit 127", status=127)
        self.play("say a", "write", "exit 3", output=b"a\n", status=3)
        self.play("say a", "error", "kill 9", errors=b"a\n", status=-9)

    # Where there is none.

    def expect_refusal(self, why, *command, **how):
        tool = self.start(*command, **how)
        self.assertEqual((tool.finish(), tool.output, tool.errors),
                         (NO_MATCHING_LINE, b"",
                          refusal(b"/usr/bin/sudo cannot be started: " + why)))
        self.expect_shown(b"")

    def test_may_not_be_executable(self):
        os.chmod(FAKE_SUDO, 0o644)
        self.expect_refusal(b"Permission denied", *steps("say a"))

    def test_may_be_no_program(self):
        program = contents(FAKE_SUDO)
        for bytes_, why in ((b"no program", b"Exec format error"), (b"", b"Exec format error"),
                            (b"#!/absent\n", b"No such file or directory")):
            with open(FAKE_SUDO, "wb") as file:  # the file that stands in the place stays
                file.write(bytes_)
            try:
                self.expect_refusal(why, *steps("say a"))
            finally:
                with open(FAKE_SUDO, "wb") as file:
                    file.write(program)

    def test_may_be_missing(self):
        self.expect_refusal(b"No such file or directory", *self.without_sudo(), *steps("say a"),
                            environment={"LD_PRELOAD": ""})

    def test_is_not_needed_for_a_command_for_everybody(self):
        self.play(command=steps("say mine", "write", command="user"), output=b"mine\n")


def tearDownModule():
    sudosystem.expect_untouched()


if __name__ == "__main__":
    namespaces.run(lambda: sudosystem.prepare("probe", "sudo"), sudosystem.main)
