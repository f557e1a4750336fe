"""Root commands from the prompt to the end: ElevationTests.py --root|--user PROBE HOSTS FAKE_SUDO

In namespaces of its own, with accounts, services, terminals and rules for sudo that are of these
tests. As root, with the real sudo; without rights, with one that plays a script in its place.
"""

import os
import shutil
import signal
import subprocess
import time
import unittest

import sudosystem
from sudosystem import (ADMINISTRATORS, DIRECTORY, FAKE_SUDO, IS_ROOT, PROBE, RECORD, RIGHT,
                        SCRIPT, SUDO, SUDO_LOG, TOOLS, USERS, WORK, await_file, await_that,
                        contents, is_running, of_process, processes, set_up_accounts, set_up_rules,
                        steps, told, write)
import namespaces
from pseudoterminal import PROMPT

HOSTS = TOOLS + "/hosts"
SORRY = b"Sorry, try again.\n"
REFUSED = b"Requested command line must be run as root. Try using sudo.\n"
NO_MATCHING_LINE = 64  # the tools' status for it
# What shares its line with the prompt of sudo, and is lost with it.
FIRST = "say first"
FATAL = (-signal.SIGILL, -signal.SIGTRAP)  # as the processor has it
MARK = b"a mark that can be found"
LARGEST_MAPPING = 1 << 30


# ---- The memory and the pipes of other processes ----

def held(pid, *needles):
    """Which of these stand in the memory of another process."""
    found = set()
    with open(f"/proc/{pid}/maps", encoding="utf-8") as maps, \
            open(f"/proc/{pid}/mem", "rb", buffering=0) as memory:
        for line in maps:
            begin, end = (int(text, 16) for text in line.split()[0].split("-"))
            if end - begin > LARGEST_MAPPING:
                raise unittest.SkipTest("a sanitizer's memory is too large to be looked at")
            if line.split()[1][0] == "r" and "[v" not in line:  # not what the kernel lends
                part = read_memory(memory, begin, end)
                found |= {needle for needle in needles if needle in part}
    return found


def is_open_to(user, pid):
    """Whether a process of the user can open what another process has open."""
    thief = f"import os; os.close(os.open('/proc/{pid}/fd/0', os.O_RDONLY | os.O_NONBLOCK))"
    done = subprocess.run(["/usr/bin/python3", "-c", thief], user=USERS[user], group=USERS[user],
                          extra_groups=[], stderr=subprocess.PIPE, check=False)
    if done.returncode != 0 and b"PermissionError" not in done.stderr:
        raise AssertionError(done.stderr.decode())
    return done.returncode == 0


def read_memory(memory, begin, end):
    memory.seek(begin)
    part = b""
    while begin + len(part) < end:
        part += memory.read(end - begin - len(part))
    return part


class ElevationTest(sudosystem.SystemTest):
    def run_elevated(self, *command, output=b"", **how):
        """Types the password once."""
        tool = self.start(*command, **how)
        self.assertEqual(tool.answer(RIGHT + b"\n"), PROMPT)
        self.expect_end(tool, output, shown=b"\r\n")

    def expect_refusal(self, tool, *typed, output, shown):
        for number, line in enumerate(typed):
            before = b"\r\n" if number > 0 else b""
            self.assertEqual(tool.answer(line), before + PROMPT)
        self.expect_end(tool, output, NO_MATCHING_LINE, shown)


# ---- Who is asked, and how often; sudo is never reached ----

class Refusal(ElevationTest):
    COMMAND = steps(f"pid {WORK}/ran")

    def tearDown(self):
        self.assertFalse(os.path.exists(RECORD))
        self.assertFalse(os.path.exists(SUDO_LOG))

    def become(self, user):
        if not IS_ROOT:
            set_up_accounts(user)
        return user

    def expect_refusal(self, tool, *typed, output, shown):
        super().expect_refusal(tool, *typed, output=output, shown=shown)
        self.assertFalse(os.path.exists(WORK + "/ran"))

    def test_follows_three_wrong_passwords_promptly(self):
        begin = time.monotonic()
        tool = self.start(*self.COMMAND)
        self.expect_refusal(tool, b"wrong\n", b"wrong\n", RIGHT[:-1] + b"\n",
                            output=SORRY * 3 + REFUSED, shown=b"\r\n")
        self.assertLess(time.monotonic() - begin, 1.5)

    def test_follows_three_empty_lines(self):
        tool = self.start(*self.COMMAND)
        self.expect_refusal(tool, b"\n", b"\n", b"\n", output=SORRY * 3 + REFUSED, shown=b"\r\n")

    def test_follows_three_ends_of_input_without_another_word(self):
        tool = self.start(*self.COMMAND)
        self.expect_refusal(tool, b"\x04", b"\x04", b"\x04", output=REFUSED, shown=b"\r\n")

    def test_goes_to_the_output_and_the_prompt_to_the_terminal(self):
        with open(WORK + "/output", "wb") as output:
            tool = self.start(*self.COMMAND, stdout=output)
        for shown in (PROMPT, b"\r\n" + PROMPT, b"\r\n" + PROMPT):
            self.assertEqual(tool.answer(b"wrong\n"), shown)
        self.expect_end(tool, None, NO_MATCHING_LINE, b"\r\n")
        self.assertEqual(contents(WORK + "/output"), SORRY * 3 + REFUSED)

    def test_stands_among_the_prompts_on_a_terminal(self):
        tool = self.start(*self.COMMAND, stdout=self.terminal.slave)
        sorry = b"\r\n" + SORRY.replace(b"\n", b"\r\n")
        for shown in (PROMPT, sorry + PROMPT, sorry + PROMPT):
            self.assertEqual(tool.answer(b"wrong\n"), shown)
        self.expect_end(tool, None, NO_MATCHING_LINE, sorry + REFUSED.replace(b"\n", b"\r\n"))

    def test_meets_a_user_outside_the_administrators_group_without_a_prompt(self):
        tool = self.start(*self.COMMAND, user=self.become("tplain"))
        self.expect_refusal(tool, output=REFUSED, shown=b"")

    def test_comes_without_a_prompt_where_there_is_no_terminal(self):
        lines = (RIGHT + b"\n") * 3
        unread, written = os.pipe()
        self.addCleanup(os.close, unread)
        os.write(written, lines)
        os.close(written)
        tool = self.start(*self.COMMAND, has_terminal=False, stdin=unread)
        self.expect_refusal(tool, output=REFUSED, shown=b"")
        self.assertEqual(os.read(unread, 4096), lines)

    def test_of_a_value_comes_before_any_prompt(self):
        tool = self.start(HOSTS, "install", WORK + "/absent")
        self.assertEqual((tool.finish(), tool.errors), (NO_MATCHING_LINE, b""))
        lines = tool.output.splitlines(keepends=True)
        self.assertEqual(lines[0], b"Validation of parameter install failed : "
                                   b"%s/absent does not exist\n" % WORK.encode())
        self.assertNotIn(REFUSED, lines)
        self.expect_shown(b"")

    def test_does_not_meet_a_member_of_roots_group_who_runs_it_with_his_own_rights(self):
        user = self.become("tgzero")
        tool = self.start(*steps("say mine", "user", "write"), user=user)
        number = USERS[user] if IS_ROOT else namespaces.USER
        self.expect_end(tool, b"mine\nuser %d %d\n" % (number, number))

    def test_does_not_meet_a_command_for_everybody(self):
        for user in ("tadmin", "tplain"):
            tool = self.start(*steps("say mine", "write", command="user"), user=self.become(user))
            self.expect_end(tool, b"mine\n")

    def test_does_not_meet_root(self):
        if not IS_ROOT:
            self.skipTest("needs root")
        tool = self.start(*steps("say mine", "user", "write"), user="root")
        self.expect_end(tool, b"mine\nuser 0 0\n")


# ---- With the real sudo ----

class Elevation(ElevationTest):
    def setUp(self):
        if not IS_ROOT:
            self.skipTest("needs root: sudo has no rights here")
        super().setUp()
        set_up_rules()

    def expect_not_run(self):
        self.assertFalse(os.path.exists(WORK + "/ran"))

    def expect_refusal_by_sudo(self, reason, *command, administrators=ADMINISTRATORS, attempts=1, **how):
        """With a lecture before its prompt, the first line is not that with the reason."""
        write(DIRECTORY + "/lecture", "Behold:\nthis is root.\n")
        set_up_rules(f"lecture = always, lecture_file = {DIRECTORY}/lecture", administrators)
        for _ in range(attempts):
            tool = self.start(*(command or steps(f"pid {WORK}/ran")), **how)
            self.assertEqual(tool.answer(RIGHT + b"\n"), PROMPT)
            self.assertEqual((tool.finish(), tool.errors), (0, b""))
            self.expect_shown(b"\r\n")
            self.expect_not_run()
            if tool.output:
                break
        # It writes a line in pieces, each of which may be a block and get a line end.
        self.assertIn(reason, tool.output.replace(b"\n", b""))

    def test_installs_the_hosts_file_that_the_user_has_prepared(self):
        write(WORK + "/hosts", "127.0.0.1 localhost\n")
        write(WORK + "/prepared", "127.0.0.1 localhost\n192.0.2.7 example.test\n")
        self.run_elevated(HOSTS, "install", WORK + "/prepared", "--file", WORK + "/hosts",
                          output=f"{WORK}/hosts has 2 entries now\n\n".encode())
        self.assertEqual(contents(WORK + "/hosts"), contents(WORK + "/prepared"))
        found = os.stat(WORK + "/hosts")
        self.assertEqual((found.st_uid, found.st_mode & 0o777), (0, 0o644))

    def test_shows_why_nothing_was_installed(self):
        write(WORK + "/hosts", "127.0.0.1 localhost\n")
        write(WORK + "/prepared", "192.0.2.700 example.test\n")
        # The message and its line end are two writes: they come as one block or as two.
        reason = f"{WORK}/prepared:1: 192.0.2.700 is not an address\n".encode()
        tool = self.start(HOSTS, "install", WORK + "/prepared", "--file", WORK + "/hosts")
        self.assertEqual(tool.answer(RIGHT + b"\n"), PROMPT)
        self.assertEqual(tool.finish(), 0)
        self.assertIn(tool.output, (reason + b"\n", reason + b"\n\n"))
        self.assertEqual(contents(WORK + "/hosts"), b"127.0.0.1 localhost\n")

    def test_runs_the_command_as_root(self):
        self.run_elevated(*steps(FIRST, "user", "write"), output=b"user 0 0\n\n")

    def test_follows_a_wrong_password_and_the_right_one(self):
        tool = self.start(*steps(FIRST, "user", "write"))
        self.assertEqual(tool.answer(b"wrong\n"), PROMPT)
        self.assertEqual(tool.answer(RIGHT + b"\n"), b"\r\n" + PROMPT)
        self.expect_end(tool, SORRY + b"user 0 0\n\n", shown=b"\r\n")

    def test_happens_once_for_each_run_of_the_tool(self):
        self.run_elevated(*steps(FIRST, "say a", "write"), output=b"a\n\n")
        self.assertEqual(contents(SUDO_LOG).count(b"COMMAND="), 1)

    # Whom sudo does not let in, or does not ask.

    def test_is_refused_by_sudo_to_one_whom_its_rules_do_not_know(self):
        self.expect_refusal_by_sudo(b"tadmin is not in the sudoers file", administrators="")

    def test_is_refused_by_sudo_to_an_account_that_has_expired(self):
        set_up_accounts(expires="1")
        self.expect_refusal_by_sudo(b"sudo: Account expired")

    def test_shows_nothing_of_a_refusal_by_sudo_that_is_one_line(self):
        set_up_rules(administrators="")
        self.run_elevated(*steps(f"pid {WORK}/ran"))
        self.expect_not_run()
        self.assertIn(b"user NOT in sudoers", contents(SUDO_LOG))

    def test_hands_the_password_to_the_command_where_sudo_remembers_it(self):
        twice = ["sh", "-c", 'for i in 1 2; do "$@"; echo status $?; done', "sh"]
        tool = self.start(*twice, *steps(FIRST, "input", "write"))
        self.assertEqual(tool.answer(RIGHT + b"\n"), PROMPT)
        self.assertEqual(tool.answer(RIGHT + b"\n"), b"\r\n" + PROMPT)
        line = (RIGHT + b"\n").hex().encode()
        self.expect_end(tool, b"input \n\nstatus 0\ninput " + line + b"\n\nstatus 0\n",
                        shown=b"\r\n")

    def test_hands_the_password_to_the_command_where_sudo_needs_none(self):
        set_up_rules(administrators="%optadmin ALL=(ALL:ALL) NOPASSWD: ALL\n")
        line = (RIGHT + b"\n").hex().encode()
        self.run_elevated(*steps(FIRST, "input", "write"), output=b"input " + line + b"\n\n")

    # How sudo is set up.

    def test_shows_the_lecture_without_its_first_line(self):
        write(DIRECTORY + "/lecture", "Behold:\nthis is root.\n")
        set_up_rules(f"lecture = always, lecture_file = {DIRECTORY}/lecture")
        tool = self.start(*steps(FIRST, "user", "write"))
        self.assertEqual(tool.answer(RIGHT + b"\n"), PROMPT)
        self.assertEqual((tool.finish(), tool.errors), (0, b""))
        # Right after it sudo writes its prompt, which may be a block of its own.
        self.assertRegex(tool.output, rb"\Athis is root\.\n\n?\[sudo\] password for tadmin: \n?"
                                      rb"first\nuser 0 0\n\n\Z")

    def test_needs_a_terminal_where_sudo_does_and_has_it(self):
        set_up_rules("requiretty")
        self.run_elevated(*steps(FIRST, "user", "write"), output=b"user 0 0\n\n")

    def test_is_the_same_without_a_terminal_between_sudo_and_the_command(self):
        set_up_rules("!use_pty")
        self.run_elevated(*steps(FIRST, "input", "user", "write"), output=b"input \nuser 0 0\n\n")

    # What is started.

    def test_looks_for_a_name_without_a_slash_where_sudo_looks(self):
        self.expect_refusal_by_sudo(b"sudo: probe: command not found",
                                    *steps(f"pid {WORK}/ran", tool="probe"), executable=PROBE)

    def test_may_start_another_tool_by_a_name_without_a_slash(self):
        other = WORK + "/sbin"
        os.mkdir(other)
        shutil.copy(PROBE, other + "/probe")
        set_up_rules(f"secure_path = {other}")
        self.run_elevated(*steps(FIRST, "program", "write", tool="probe"), executable=PROBE,
                          output=b"program %s/probe\n\n" % other.encode())

    def test_starts_a_relative_name_with_a_slash_from_the_same_directory(self):
        os.symlink(TOOLS, WORK + "/tools")
        self.run_elevated(*steps(FIRST, "program", "write", tool="work/tools/probe"),
                          output=b"program %s\n\n" % PROBE.encode())

    def test_starts_nothing_where_the_name_is_an_option_to_sudo(self):
        # On a busy machine each of its many lines may be a block of its own: then none is shown.
        self.expect_refusal_by_sudo(b"usage: sudo", *steps(f"pid {WORK}/ran", tool="-x"),
                                    executable=PROBE, attempts=10)

    def test_starts_nothing_where_the_name_is_a_setting_to_sudo(self):
        self.expect_refusal_by_sudo(b"sudo: root: command not found",
                                    *steps(f"pid {WORK}/ran", tool="a=b"), executable=PROBE)

    def test_starts_with_the_arguments_of_the_start_though_main_has_changed_them(self):
        command = steps(FIRST, "arguments", "write")
        self.run_elevated(*command, output=told(command) + b"\n",
                          environment={"OVERWRITES_ARGUMENTS": "yes"})

    # How it ends.

    def test_ends_with_0_whatever_the_commands_status(self):
        self.run_elevated(*steps(FIRST, "say a", "write", "exit 3"), output=b"a\n\n")

    def test_ends_with_0_when_the_command_is_killed(self):
        self.run_elevated(*steps(FIRST, "say a", "write", f"kill {signal.SIGKILL:d}"),
                          output=b"a\n\n")

    # What is shown.

    def test_shows_the_errors_of_the_command_as_output(self):
        self.run_elevated(*steps(FIRST, "say a", "error"), output=b"a\n\n")

    def test_shows_nothing_of_lines_that_come_one_by_one(self):
        lines = [word for name in ("one", "two", "three")
                 for word in ("say " + name, "write", "sleep 100")]
        self.run_elevated(*steps(*lines))

    # Signals.

    def start_long_command(self, *words, leader=(), **how):
        """Returns the tool and the number of its process as root, which waits for the file go."""
        tool = self.start(*leader, *steps(f"pid {WORK}/child", f"await {WORK}/go", *words), **how)
        self.assertEqual(tool.answer(RIGHT + b"\n"), PROMPT)
        child = int(await_file(WORK + "/child"))
        self.assertTrue(is_running(child))
        return tool, child

    # A shell that outlives the tool: with it, all others would lose the terminal.
    SHELL = ["sh", "-c", 'trap : INT; "$@"; echo $? >"$0"; read line', WORK + "/status"]

    def expect_end_in_shell(self, shell, number):
        await_that(lambda: contents(WORK + "/status") if os.path.exists(WORK + "/status") else b"",
                   "the tool does not end")
        self.assertEqual(contents(WORK + "/status"), b"%d\n" % (128 + number))
        self.assertTrue(is_running(shell.pid))

    def end_shell(self, shell):
        self.terminal.type(b"\n")
        shell.finish()

    def test_dies_of_an_interruption_as_the_command_does(self):
        for how in ("use_pty", "!use_pty"):
            with self.subTest(how):
                self.setUp()
                set_up_rules(how)
                shell, child = self.start_long_command(f"pid {WORK}/ran", leader=self.SHELL)
                self.terminal.type(b"\x03")
                self.expect_end_in_shell(shell, signal.SIGINT)
                await_that(lambda: not is_running(child), "the command goes on")
                self.end_shell(shell)
                self.expect_not_run()

    def test_dies_of_a_hang_up_as_the_command_does(self):
        for how in ("use_pty", "!use_pty"):
            with self.subTest(how):
                self.setUp()
                set_up_rules(how)
                tool, child = self.start_long_command(f"pid {WORK}/ran")
                self.terminal.hang_up()
                self.assertEqual(tool.finish(), -signal.SIGHUP)
                await_that(lambda: not is_running(child), "the command goes on")
                self.expect_not_run()

    def test_leaves_the_command_to_its_end_when_the_tool_is_killed(self):
        for how in ("use_pty", "!use_pty"):
            with self.subTest(how):
                self.setUp()
                set_up_rules(how)
                shell, child = self.start_long_command(f"pid {WORK}/ran", leader=self.SHELL)
                [tool] = [pid for pid in processes()
                          if pid != child and os.readlink(f"/proc/{pid}/exe") == PROBE]
                os.kill(tool, signal.SIGKILL)
                self.expect_end_in_shell(shell, signal.SIGKILL)
                self.assertTrue(is_running(child))
                write(WORK + "/go", "")
                self.assertEqual(int(await_file(WORK + "/ran")), child)
                await_that(lambda: not is_running(child), "the command does not end")
                self.end_shell(shell)

    # The password.

    def test_shows_the_password_to_nobody(self):
        tool, _ = self.start_long_command(FIRST, "environment", "write",
                                          environment={"MARK": MARK.decode()})
        everybody = processes()
        self.assertGreaterEqual(len(everybody), 3)  # the tool, sudo and the tool again
        for pid in everybody:
            for name in ("cmdline", "environ"):
                self.assertNotIn(RIGHT, of_process(pid, name))
        self.assertIn(MARK, of_process(tool.pid, "environ"))  # as it would be found
        write(WORK + "/go", "")
        self.assertEqual((tool.finish(), tool.errors), (0, b""))
        variables = [bytes.fromhex(line.split()[1].decode())
                     for line in tool.output.splitlines() if line.startswith(b"variable ")]
        self.assertIn(b"SUDO_USER=tadmin", variables)
        self.assertEqual([each for each in variables if RIGHT in each], [])

    def test_lets_no_other_process_of_the_user_in(self):
        tool = self.start(*steps(f"pid {WORK}/child", f"await {WORK}/go"))
        self.assertTrue(tool.prompts())
        self.assertFalse(is_open_to("tadmin", tool.pid))
        self.assertEqual(tool.answer(RIGHT + b"\n"), PROMPT)
        await_file(WORK + "/child")
        self.assertFalse(is_open_to("tadmin", tool.pid))
        number = USERS["tadmin"]
        with subprocess.Popen(["sleep", "60"], user=number, group=number, extra_groups=[]) as other:
            self.assertTrue(is_open_to("tadmin", other.pid))  # as another process of the user is
            other.kill()
        write(WORK + "/go", "")
        self.expect_end(tool, b"", shown=b"\r\n")

    def test_keeps_no_password_in_memory_while_the_command_runs(self):
        tool, _ = self.start_long_command(environment={"MARK": MARK.decode()})
        self.assertEqual(held(tool.pid, RIGHT, MARK), {MARK})
        write(WORK + "/go", "")
        self.expect_end(tool, b"", shown=b"\r\n")

    def test_keeps_no_wrong_password_in_memory_either(self):
        wrong = b"Nobody else says this: 5521"
        tool = self.start(*steps("say a"), environment={"MARK": MARK.decode()})
        tool.answer(wrong + b"\n")
        self.assertTrue(tool.prompts())
        self.assertEqual(held(tool.pid, wrong, MARK), {MARK})
        self.assertEqual(tool.answer(RIGHT + b"\n"), b"\r\n" + PROMPT)
        self.expect_end(tool, SORRY, shown=b"\r\n")


# ---- With a program in the place of sudo ----

class Relay(ElevationTest):
    def setUp(self):
        if IS_ROOT:
            self.skipTest("tried without rights, with a program in the place of sudo")
        if os.environ["MACHINES_SUDO"] != "True":
            self.skipTest(f"there is no {SUDO} here whose place another program could take")
        super().setUp()
        self.addCleanup(os.chmod, FAKE_SUDO, 0o755)

    def play(self, *script, output=b"", command=None, **how):
        write(SCRIPT, "".join(step + "\n" for step in script))
        self.run_elevated(*(command or steps("say a")), output=output, **how)

    def expect_relayed(self, *blocks, output):
        self.play(*(step for block in blocks for step in ("bytes " + block.hex(), "write")),
                  output=output)

    # Blocks.

    def test_adds_a_line_end_to_every_further_block(self):
        self.expect_relayed(b"Password:\na", b"x", b"y\n", b"\n", output=b"a\nx\ny\n\n\n\n")

    def test_shows_a_block_of_64_kib_as_one(self):
        block = b"x" * 65536
        self.play("bytes " + b"Password:\na".hex(), "write", "bytes " + block.hex(), "write",
                  output=b"a\n" + block + b"\n")

    def test_shows_what_comes_right_before_the_end(self):
        for _ in range(5):
            self.play("say Password:", "say a", "write", "say b", "finish", output=b"a\n\nb\n\n")

    def test_shows_errors_as_output_in_the_order_of_writing(self):
        self.play("say Password:", "say a", "error", "say b", "write", "say c", "error",
                  output=b"a\n\nb\n\nc\n\n")

    def test_shows_everything_on_the_terminal_where_that_is_the_output(self):
        write(SCRIPT, "say Password:\nsay a\nwrite\n")
        tool = self.start(*steps("say a"), stdout=self.terminal.slave)
        self.assertEqual(tool.answer(RIGHT + b"\n"), PROMPT)
        self.expect_end(tool, None, shown=b"\r\na\r\n\r\n")

    # What sudo gets.

    def test_starts_sudo_with_one_option_and_all_arguments(self):
        texts = [b"", b" ", b"'", b'"', b"line\nfeed", b"\xff\xfe", b"--", b"-n", b"a=b"]
        command = [PROBE.encode(), b"root", *(part for text in texts for part in (b"-t", text))]
        self.play("arguments", f"record {RECORD}", command=command)
        words = [b"/usr/bin/sudo", b"-S", *command]
        self.assertEqual(contents(RECORD), told(words))

    def test_starts_sudo_with_the_programs_name_as_it_was_typed(self):
        for name in ("probe", "-x", "a=b", "./../tools/probe", ""):
            self.play("arguments", f"record {RECORD}", command=[name, "root"], executable=PROBE)
            words = ["/usr/bin/sudo", "-S", name, "root"]
            self.assertEqual(contents(RECORD), told(words))
            os.unlink(RECORD)

    def test_gives_sudo_the_password_as_a_line_and_nothing_after_it(self):
        self.play("input", f"record {RECORD}")
        self.assertEqual(contents(RECORD), b"input %s\n" % (RIGHT + b"\n").hex().encode())

    def test_gives_sudo_the_environment_directory_and_mask_of_the_tool(self):
        self.play("environment", "place", f"record {RECORD}", before=lambda: os.umask(0o027),
                  environment={"MARK": MARK.decode()})
        *variables, place = contents(RECORD).splitlines()
        self.assertEqual(place, b"place %s 027" % DIRECTORY.encode())
        found = dict(bytes.fromhex(each.split()[1].decode()).split(b"=", 1) for each in variables)
        self.assertEqual(found[b"MARK"], MARK)
        self.assertEqual(found[b"HOME"], DIRECTORY.encode())
        self.assertNotIn(RIGHT, b"".join(found.values()))

    def test_gives_sudo_no_descriptors_but_the_usual_ones(self):
        self.play("descriptors", f"record {RECORD}")
        self.assertEqual(contents(RECORD), b"descriptors 0 1 2\n")

    # How sudo ends.

    def test_ends_with_0_whatever_the_status_of_sudo(self):
        self.play("exit 77")
        self.play("say Password:", "say a", "write", "exit 1", output=b"a\n\n")

    def test_ends_with_0_when_sudo_is_killed(self):
        for number in (signal.SIGKILL, signal.SIGTERM, signal.SIGABRT):
            self.play("say Password:", "say a", "write", f"kill {number:d}", output=b"a\n\n")

    def test_ends_with_0_when_sudo_does_not_read(self):
        for _ in range(5):
            self.play("exit 1")

    def test_waits_for_sudo_and_not_for_those_who_hold_its_pipe(self):
        begin = time.monotonic()
        self.play("say Password:", "say a", "leave 1500", "write", output=b"a\n\n")
        self.assertLess(time.monotonic() - begin, 1)
        self.play("say Password:", "say a", "sleep 300", "write", output=b"a\n\n")

    def test_works_where_the_ends_of_children_are_ignored(self):
        self.play("say Password:", "say a", "write", output=b"a\n\n",
                  before=lambda: signal.signal(signal.SIGCHLD, signal.SIG_IGN),
                  restore_signals=False)

    # Where there is no sudo.

    def expect_stop(self, *command, **how):
        tool = self.start(*command, **how)
        self.assertEqual(tool.answer(RIGHT + b"\n"), PROMPT)
        self.assertIn(tool.finish(), FATAL)
        self.assertEqual((tool.output, tool.errors), (b"", b""))
        self.expect_shown(b"\r\n")

    def test_stops_silently_where_sudo_may_not_be_executed(self):
        os.chmod(FAKE_SUDO, 0o644)
        self.expect_stop(*steps("say a"))

    # Again and again.

    def test_leaves_nothing_in_the_process(self):
        self.elevate_often(lambda tool: None, count=1000)

    def test_leaves_no_password_in_memory(self):
        self.elevate_often(lambda tool: self.assertEqual(held(tool.pid, RIGHT, MARK), {MARK}))

    def elevate_often(self, look_at, count=50):
        write(SCRIPT, "say Password:\nbytes 61\ninput\nwrite\n")
        tool = self.start(*steps("descriptors", "threads", f"record {RECORD}", f"await {WORK}/go",
                                 command="again"), "-n", str(count),
                          environment={"MARK": MARK.decode()})
        before = await_file(RECORD)
        os.unlink(RECORD)
        write(WORK + "/go", "")
        self.assertEqual(tool.answer(RIGHT + b"\n"), PROMPT)
        os.unlink(WORK + "/go")
        for _ in range(count - 1):
            self.assertEqual(tool.answer(RIGHT + b"\n"), b"\r\n" + PROMPT)
        self.assertEqual(await_file(RECORD), before)
        look_at(tool)
        write(WORK + "/go", "")
        relayed = b"ainput %s\n\n" % (RIGHT + b"\n").hex().encode()
        self.expect_end(tool, relayed * count, shown=b"\r\n")


def tearDownModule():
    sudosystem.expect_untouched()


if __name__ == "__main__":
    namespaces.run(lambda: sudosystem.prepare("probe", "hosts", "sudo"), sudosystem.main)
