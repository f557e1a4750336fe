"""The reader of passwords, with a user at its terminal: TerminalTests.py TerminalProbe"""

import array
import fcntl
import os
import resource
import signal
import subprocess
import sys
import tempfile
import termios
import time
import unittest

from pseudoterminal import Job, Program, PROMPT, Terminal

PROBE = ""
END_OF_INPUT = b"\x04"
ANSWERED = PROMPT + b"\r\n"  # as the terminal shows it: the password is not there
PROMPTLY = 2  # seconds; a reader that is not woken waits for ever
on_linux = unittest.skipUnless(sys.platform == "linux", "it is Linux's terminals, or its /proc")


def text(typed):
    return "text " + typed.hex()


def word(signal_number):
    return str(int(signal_number))


class TerminalTest(unittest.TestCase):
    def setUp(self):
        self.terminal = Terminal()
        self.addCleanup(self.terminal.close)
        self.settings = self.terminal.settings()

    def run_probe(self, *words, **streams):
        program = Program(self.terminal, [PROBE], *words, **streams)
        self.addCleanup(program.close)
        return program

    def run_job(self, kind, *words):
        job = Job(self.terminal, kind, [PROBE], *words)
        self.addCleanup(job.close)
        return job

    def expect_end(self, program, status, lines):
        self.assertEqual(program.finish(), status)
        self.assertEqual(program.lines, lines)
        self.assertEqual(program.errors, b"")
        self.assertEqual(self.terminal.settings(), self.settings)

    def expect_read(self, typed, line):
        """One prompt, these keys: this is reported, and nothing but the prompt was shown."""
        program = self.run_probe("read")
        self.assertEqual(program.answer(typed), PROMPT)
        self.expect_end(program, 0, [line])
        self.assertEqual(program.output, b"")
        self.assertEqual(self.terminal.take_shown(), b"\r\n")


class Line(TerminalTest):
    def test_is_read_without_its_end(self):
        self.expect_read(b"right\n", text(b"right"))

    def test_keeps_its_spaces(self):
        self.expect_read(b"  a \t b  \n", text(b"  a \t b  "))

    def test_may_be_empty(self):
        self.expect_read(b"\n", text(b""))

    def test_may_end_with_the_return_key(self):
        self.expect_read(b"right\r", text(b"right"))

    def test_ends_at_a_return_that_is_not_translated(self):
        settings = self.terminal.settings()
        settings[0] &= ~termios.ICRNL
        settings[3] &= ~termios.ICANON
        termios.tcsetattr(self.terminal.slave, termios.TCSANOW, settings)
        self.settings = self.terminal.settings()
        self.expect_read(b"right\rwrong\n", text(b"right"))

    def test_arrives_in_pieces_where_the_terminal_hands_out_bytes(self):
        self.terminal.change_local_modes(cleared=termios.ICANON)
        self.settings = self.terminal.settings()
        program = self.run_probe("read")
        for key in b"right\n":
            program.prompts()
            time.sleep(0.002)
            self.terminal.type(bytes([key]))
        self.expect_end(program, 0, [text(b"right")])

    def test_can_be_corrected(self):
        self.expect_read(b"wrong\x15righd\x7ft\n", text(b"right"))

    def test_ends_at_a_nul_byte(self):
        self.expect_read(b"ab\0cd\n", text(b"ab"))

    def test_of_a_nul_byte_is_empty(self):
        self.expect_read(b"\0\n", text(b""))

    def test_keeps_bytes_that_are_not_utf8(self):
        self.expect_read(b"\xff\xfe\x80a\n", text(b"\xff\xfe\x80a"))

    def test_ends_at_a_nul_byte_also_when_it_was_pushed_in_pieces(self):
        program = self.run_probe("read")
        program.answer(b"ab\0cd" + END_OF_INPUT)
        time.sleep(0.05)  # a line of its own
        self.terminal.type(b"ef\n")
        self.expect_end(program, 0, [text(b"ab")])

    @on_linux
    def test_of_4095_bytes_is_whole(self):
        line = bytes(97 + i % 26 for i in range(4095))
        self.expect_read(line + b"\n", text(line))

    @on_linux
    def test_of_6000_bytes_is_cut_by_the_terminal(self):
        line = bytes(97 + i % 26 for i in range(6000))
        self.expect_read(line + b"\n", text(line[:4095]))

    @on_linux
    def test_that_was_pushed_in_pieces_is_cut_after_4096_bytes(self):
        program = self.run_probe("read")
        line = bytes(97 + i % 26 for i in range(6000))
        program.answer(line[:4000] + END_OF_INPUT)
        time.sleep(0.05)  # its own line has to be read before more fits in
        self.terminal.type(line[4000:] + b"\n")
        self.expect_end(program, 0, [text(line[:4096])])

    def test_typed_before_the_prompt_is_dropped(self):
        self.terminal.type(b"early\nand more")
        self.terminal.wait_for(b"and more")  # by its echo
        self.terminal.take_shown()
        program = self.run_probe("read")
        self.assertEqual(program.answer(b"late\n"), PROMPT)
        self.expect_end(program, 0, [text(b"late")])

    def test_typed_after_it_is_dropped(self):
        program = self.run_probe("read", "read")
        program.answer(b"one\ntwo\n")
        self.assertEqual(program.answer(b"three\n"), b"\r\n" + PROMPT)
        self.expect_end(program, 0, [text(b"one"), text(b"three")])


class EndOfInput(TerminalTest):
    def test_is_nothing_each_time(self):
        program = self.run_probe("read", "read", "read")
        self.assertEqual(program.answer(END_OF_INPUT), PROMPT)
        self.assertEqual(program.answer(END_OF_INPUT), b"\r\n" + PROMPT)
        self.assertEqual(program.answer(END_OF_INPUT), b"\r\n" + PROMPT)
        self.expect_end(program, 0, ["none"] * 3)
        self.assertEqual(self.terminal.take_shown(), b"\r\n")

    def test_completes_what_was_typed(self):
        self.expect_read(b"ab" + END_OF_INPUT + END_OF_INPUT, text(b"ab"))

    def test_once_after_text_only_hands_it_over(self):
        self.expect_read(b"ab" + END_OF_INPUT + b"cd\n", text(b"abcd"))

    def test_completes_a_text_of_a_nul_byte(self):
        self.expect_read(b"\0" + END_OF_INPUT + END_OF_INPUT, text(b""))


class Echo(TerminalTest):
    def test_is_off_from_the_prompt_to_the_end(self):
        program = self.run_probe("read")
        program.prompts()
        self.assertFalse(self.terminal.is_echoing())
        program.answer(b"right\n")
        self.expect_end(program, 0, [text(b"right")])
        self.assertTrue(self.terminal.is_echoing())

    def test_of_line_ends_alone_is_off_too(self):
        self.terminal.change_local_modes(added=termios.ECHONL)
        self.settings = self.terminal.settings()
        self.expect_read(b"right\n", text(b"right"))

    def test_is_all_that_changes(self):
        program = self.run_probe("read")
        program.prompts()
        expected = self.settings
        expected[3] &= ~termios.ECHO
        self.assertEqual(self.terminal.settings(), expected)

    def test_stays_off_where_it_was(self):
        self.terminal.change_local_modes(cleared=termios.ECHO)
        self.settings = self.terminal.settings()
        self.expect_read(b"right\n", text(b"right"))


class Signal(TerminalTest):
    def expect_death(self, program, number):
        self.assertEqual(program.finish(), -number)
        self.assertEqual(program.lines, [])
        self.assertEqual(self.terminal.settings(), self.settings)
        self.assertEqual(self.terminal.take_shown(), b"\r\n")

    def expect_death_by_key(self, key, number, how="read"):
        # The line has been typed in part, the end of the line never comes.
        program = self.run_probe(how)
        program.answer(b"typ" + key)
        self.expect_death(program, number)

    def test_of_the_interrupt_key_kills(self):
        self.expect_death_by_key(b"\x03", signal.SIGINT)

    def test_of_the_quit_key_kills(self):
        self.expect_death_by_key(b"\x1c", signal.SIGQUIT)

    def test_of_the_interrupt_key_kills_at_once_on_another_thread(self):
        begin = time.monotonic()
        self.expect_death_by_key(b"\x03", signal.SIGINT, "thread")
        self.assertLess(time.monotonic() - begin, PROMPTLY)

    def test_of_the_interrupt_key_kills_at_once_on_a_thread_that_blocks_it(self):
        begin = time.monotonic()
        self.expect_death_by_key(b"\x03", signal.SIGINT, "blocked-thread")
        self.assertLess(time.monotonic() - begin, PROMPTLY)

    def test_from_elsewhere_kills(self):
        for number in (signal.SIGALRM, signal.SIGHUP, signal.SIGINT, signal.SIGPIPE,
                       signal.SIGQUIT, signal.SIGTERM):
            for how in ("read", "thread", "blocked-thread"):
                with self.subTest(number=number, how=how):
                    program = self.run_probe(how)
                    program.answer(b"typ")
                    os.kill(program.pid, number)
                    self.expect_death(program, number)

    def test_leaves_nothing_of_the_password_for_the_next_reader(self):
        program = self.run_probe("read")
        program.answer(b"typ")
        time.sleep(0.05)  # until it has come to the other side
        os.kill(program.pid, signal.SIGTERM)
        self.expect_death(program, signal.SIGTERM)
        waiting = array.array("i", [0])
        self.terminal.change_local_modes(cleared=termios.ICANON)
        fcntl.ioctl(self.terminal.slave, termios.FIONREAD, waiting)
        self.assertEqual(waiting[0], 0)

    def test_that_is_ignored_stays_so(self):
        for way in ("ignore", "ignore-info"):
            with self.subTest(way):
                program = self.run_probe(way, word(signal.SIGINT), "read", "handling")
                program.answer(b"ab\x03cd\n")  # the key drops the line, as on every terminal
                self.expect_end(program, 0, [text(b"cd"), "handling: 2 ignored"])

    def test_with_a_handler_that_returns_ends_the_reading(self):
        number = word(signal.SIGINT)
        program = self.run_probe("handle", number, "read", "handled", "handling")
        program.answer(b"typ\x03")
        # Once, and the terminal echoed again when it ran.
        self.expect_end(program, 0, ["none", "1 on", "handling: 2 own"])
        self.assertEqual(self.terminal.take_shown(), b"\r\n")

    def test_with_a_handler_that_returns_ends_the_reading_on_another_thread(self):
        for how in ("thread", "blocked-thread"):
            with self.subTest(how=how):
                program = self.run_probe("handle", word(signal.SIGTERM), how, "handled")
                program.answer(b"typ")
                os.kill(program.pid, signal.SIGTERM)
                self.expect_end(program, 0, ["none", "1 on"])
                self.terminal.take_shown()

    def test_is_raised_on_a_thread_that_is_told_of_it_at_once(self):
        # The worker of a queue, which may read, is not on every system.
        for how in ("read", "thread"):
            with self.subTest(how=how):
                program = self.run_probe("handle", word(signal.SIGINT), how, "handler-thread")
                program.answer(b"typ\x03")
                self.expect_end(program, 0, ["none", "other"])

    def test_with_a_handler_lets_the_next_reading_begin(self):
        program = self.run_probe("handle", word(signal.SIGINT), "read", "read", "handled")
        program.answer(b"\x03")
        program.answer(b"right\n")
        self.expect_end(program, 0, ["none", text(b"right"), "1 on"])

    def test_leaves_every_handling_as_it_was(self):
        words = []
        for number in (signal.SIGALRM, signal.SIGHUP, signal.SIGPIPE, signal.SIGTERM):
            words += ["count", word(number)]
        for number in (signal.SIGQUIT, signal.SIGTSTP):
            words += ["ignore", word(number)]
        program = self.run_probe(*words, "handling", "read", "handling")
        program.answer(b"right\n")
        expected = f"handling: 1 own 3 ignored 13 own 14 own 15 own {int(signal.SIGTSTP)} ignored"
        self.expect_end(program, 0, [expected, text(b"right"), expected])

    def expect_undisturbed(self, number, how):
        program = self.run_probe("count", word(number), how, "handled")
        program.prompts()
        for key in b"right":
            for _ in range(40):
                os.kill(program.pid, number)
            self.terminal.type(bytes([key]))
        self.terminal.type(b"\n")
        self.assertEqual(program.finish(), 0)
        self.assertEqual(program.lines[0], text(b"right"))
        runs = int(program.lines[1].split()[0])
        self.assertGreater(runs, 0)
        self.assertEqual(self.terminal.take_shown(), ANSWERED)

    def test_of_a_window_that_is_resized_does_not_disturb(self):
        self.expect_undisturbed(signal.SIGWINCH, "read")

    def test_of_children_that_end_does_not_disturb(self):
        self.expect_undisturbed(signal.SIGCHLD, "read")

    def test_that_interrupts_does_not_disturb_another_thread(self):
        self.expect_undisturbed(signal.SIGWINCH, "thread")

    def test_of_a_new_size_of_the_terminal_itself_does_not_disturb(self):
        program = self.run_probe("count", word(signal.SIGWINCH), "read", "handled")
        program.prompts()
        for rows in range(20, 30):
            fcntl.ioctl(self.terminal.master, termios.TIOCSWINSZ,
                        array.array("H", [rows, 80, 0, 0]))
        program.answer(b"right\n")
        self.assertEqual(program.finish(), 0)
        self.assertEqual(program.lines[0], text(b"right"))


class JobControl(TerminalTest):
    """The shell's events say by which signal the job was stopped."""

    def expect_stop(self, job, number):
        self.assertEqual(job.event(), f"stopped {int(number)}")

    def expect_start_over(self, number, stop, how="read"):
        job = self.run_job("foreground", how)
        self.assertEqual(job.answer(b"wro"), PROMPT)
        stop(job)
        self.expect_stop(job, number)
        self.assertEqual(self.terminal.settings(), self.settings)
        job.order("fg")
        self.assertEqual(job.answer(b"right\n"), b"\r\n" + PROMPT)
        self.expect_end(job, 0, [text(b"right")])
        self.assertEqual(self.terminal.take_shown(), b"\r\n")

    def press_stop(self, _):
        self.terminal.type(b"\x1a")

    def test_stop_key_asks_again_afterwards(self):
        self.expect_start_over(signal.SIGTSTP, self.press_stop)

    def test_stop_key_asks_again_on_another_thread(self):
        self.expect_start_over(signal.SIGTSTP, self.press_stop, "thread")

    def test_stop_key_asks_again_on_a_thread_that_blocks_it(self):
        self.expect_start_over(signal.SIGTSTP, self.press_stop, "blocked-thread")

    def test_every_signal_that_stops_asks_again_afterwards(self):
        for number in (signal.SIGTSTP, signal.SIGTTIN, signal.SIGTTOU):
            with self.subTest(number=number):
                self.expect_start_over(number, lambda job: os.killpg(self.terminal.foreground(),
                                                                     number))

    def test_a_stop_that_is_ignored_asks_no_more(self):
        job = self.run_job("foreground", "ignore", word(signal.SIGTSTP), "read")
        job.answer(b"\x1aright\n")
        self.expect_end(job, 0, [text(b"right")])

    def test_many_stops_need_as_many_continuations(self):
        job = self.run_job("foreground", "read")
        for _ in range(5):
            job.answer(b"wro\x1a")
            self.expect_stop(job, signal.SIGTSTP)
            job.order("fg")
        job.answer(b"right\n")
        self.expect_end(job, 0, [text(b"right")])

    def test_several_stops_at_once_need_one_continuation(self):
        job = self.run_job("foreground", "held", word(signal.SIGUSR1))
        self.assertEqual(job.answer(b"wro"), PROMPT)
        for number in (signal.SIGTTIN, signal.SIGTTOU, signal.SIGTSTP, signal.SIGUSR1):
            os.killpg(self.terminal.foreground(), number)
        self.expect_stop(job, signal.SIGTSTP)
        job.order("fg")
        self.assertEqual(job.answer(b"right\n"), b"\r\n" + PROMPT)
        self.expect_end(job, 0, [text(b"right")])

    def expect_stop_in_background(self, how):
        job = self.run_job("background", how)
        self.expect_stop(job, signal.SIGTTOU)
        self.assertEqual(self.terminal.take_shown(), b"")
        self.assertEqual(self.terminal.settings(), self.settings)
        job.order("bg")
        self.expect_stop(job, signal.SIGTTOU)
        self.assertEqual(self.terminal.take_shown(), b"")
        job.order("fg")
        self.assertEqual(job.answer(b"right\n"), PROMPT)
        self.expect_end(job, 0, [text(b"right")])

    def test_background_job_is_stopped(self):
        self.expect_stop_in_background("read")

    def test_background_job_is_stopped_on_another_thread(self):
        self.expect_stop_in_background("thread")

    def test_background_job_leaves_settings_that_the_foreground_changes(self):
        job = self.run_job("background", "read")
        self.expect_stop(job, signal.SIGTTOU)
        # The shell's own settings, made while the job slept, are neither lost nor taken for the
        # ones to put back.
        self.terminal.change_local_modes(cleared=termios.ECHOE)
        job.order("bg")
        self.expect_stop(job, signal.SIGTTOU)
        self.settings = self.terminal.settings()
        job.order("fg")
        job.answer(b"right\n")
        self.expect_end(job, 0, [text(b"right")])

    def expect_no_reading_after_move_to_background(self, how):
        job = self.run_job("foreground", how)
        job.answer(b"wro")
        os.killpg(self.terminal.foreground(), signal.SIGSTOP)
        self.expect_stop(job, signal.SIGSTOP)
        job.order("bg")
        # What is typed now is meant for the shell.
        time.sleep(0.05)
        self.terminal.type(b"\n")
        self.expect_stop(job, signal.SIGTTIN)
        job.order("fg")
        self.assertEqual(job.answer(b"right\n"), b"\r\n" + PROMPT)
        self.assertEqual(job.finish(), 0)
        self.assertEqual(job.lines, [text(b"right")])

    def test_job_that_is_moved_to_the_background_is_stopped(self):
        self.expect_no_reading_after_move_to_background("read")

    def test_job_that_is_moved_to_the_background_is_stopped_on_another_thread(self):
        self.expect_no_reading_after_move_to_background("thread")

    def test_orphan_in_the_background_gets_nothing(self):
        job = self.run_job("orphan", "read", "read", "thread")
        self.expect_end(job, 0, ["none"] * 3)
        self.assertEqual(self.terminal.take_shown(), b"")


class HangUp(TerminalTest):
    def test_kills(self):
        program = self.run_probe("read")
        program.answer(b"typ")
        self.terminal.hang_up()
        self.assertEqual(program.finish(), -signal.SIGHUP)
        self.assertEqual(program.lines, [])

    def test_that_is_ignored_is_nothing_each_time(self):
        for how in ("read", "thread"):
            with self.subTest(how=how):
                self.setUp()
                program = self.run_probe("ignore", word(signal.SIGHUP), how, how, how)
                program.answer(b"typ")
                self.terminal.hang_up()
                self.assertEqual(program.finish(), 0)
                self.assertEqual(program.lines, ["none"] * 3)

    def test_that_is_ignored_loses_what_was_handed_over(self):
        program = self.run_probe("ignore", word(signal.SIGHUP), "read")
        program.answer(b"typed" + END_OF_INPUT)
        time.sleep(0.05)
        self.terminal.hang_up()
        self.assertEqual(program.finish(), 0)
        self.assertEqual(program.lines, ["none"])


class Streams(TerminalTest):
    def test_are_left_alone_without_a_terminal(self):
        end, pipe = os.pipe()
        self.addCleanup(os.close, end)
        os.set_blocking(pipe, False)
        content = 0
        try:
            while True:
                content += os.write(pipe, b"password\n" * 455 + b"\n")
        except BlockingIOError:
            os.close(pipe)
        program = Program(None, [PROBE], "read", "read", "read", stdin=end)
        self.addCleanup(program.close)
        self.assertEqual(program.finish(), 0)
        self.assertEqual((program.lines, program.output, program.errors), (["none"] * 3, b"", b""))
        waiting = array.array("i", [0])
        fcntl.ioctl(end, termios.FIONREAD, waiting)
        self.assertGreater(content, 0)
        self.assertEqual(waiting[0], content)

    def test_show_no_prompt(self):
        with tempfile.TemporaryFile() as file:
            program = self.run_probe("say", "Earlier.", "read", "say", "Later.", stdout=file)
            self.assertEqual(program.answer(b""), PROMPT)
            # What the tool printed before stands there already.
            self.assertEqual(content_of(file), b"Earlier.")
            self.terminal.type(b"right\n")
            self.expect_end(program, 0, [text(b"right")])
            self.assertEqual(content_of(file), b"Earlier.Later.")
        self.assertEqual(self.terminal.take_shown(), b"\r\n")

    def test_on_the_terminal_show_earlier_output_before_the_prompt(self):
        program = self.run_probe("say", "Earlier. ", "read", stdout=self.terminal.slave)
        self.assertEqual(program.answer(b"right\n"), b"Earlier. " + PROMPT)
        self.expect_end(program, 0, [text(b"right")])

    def test_may_be_closed(self):
        program = self.run_probe("close", "0", "close", "1", "close", "2", "read", "read")
        self.assertEqual(program.answer(b"right\n"), PROMPT)
        self.assertEqual(program.answer(b"again\n"), b"\r\n" + PROMPT)
        self.expect_end(program, 0, [text(b"right"), text(b"again")])

    def test_that_are_closed_bring_no_output_to_the_terminal(self):
        program = self.run_probe("close", "0", "close", "1", "say", "Earlier.", "read")
        self.assertEqual(program.answer(b"right\n"), PROMPT)
        self.expect_end(program, 0, [text(b"right")])
        self.assertEqual(self.terminal.take_shown(), b"\r\n")


def content_of(file):
    return os.pread(file.fileno(), 1 << 16, 0)


class Resources(TerminalTest):
    def expect_the_same(self, what, times):
        program = self.run_probe(what, "many", str(times), what)
        for _ in range(times):
            program.answer(b"right\n")
        self.assertEqual(program.finish(), 0)
        before, texts, after = program.lines
        self.assertEqual((texts, after), (f"{times} texts", before))

    def test_are_the_same_after_a_thousand_prompts(self):
        self.expect_the_same("descriptors", 1000)

    @on_linux
    def test_leave_no_thread(self):
        self.expect_the_same("threads", 10)

    @on_linux
    def test_are_not_inherited_by_a_program_that_is_started_meanwhile(self):
        program = self.run_probe("read")
        program.prompts()
        directory = f"/proc/{program.pid}/fdinfo"
        own = [number for number in os.listdir(directory) if int(number) > 2]
        self.assertEqual(len(own), 4)  # the report, the terminal, both ends of a pipe
        for number in own:
            with open(f"{directory}/{number}", encoding="ascii") as file:
                flags = dict(line.split(":", 1) for line in file)["flags"]
            self.assertTrue(int(flags, 8) & os.O_CLOEXEC, number)

    # select() knows descriptors up to 1023; the terminal is followed by the pipe of the signals.

    def skip_without_more_files(self):
        if resource.getrlimit(resource.RLIMIT_NOFILE)[1] < 1200:
            self.skipTest("so many files may not be opened here")

    def test_that_can_just_be_waited_for_are_read(self):
        self.skip_without_more_files()
        program = self.run_probe("open", "1022", "read")
        self.assertEqual(program.answer(b"right\n"), PROMPT)
        self.expect_end(program, 0, ["opened", text(b"right")])

    def test_that_cannot_be_waited_for_are_nothing(self):
        self.skip_without_more_files()
        for terminal in ("1023", "1024", "1100"):
            with self.subTest(terminal=terminal):
                program = self.run_probe("open", terminal, "read", "thread")
                self.assertEqual(program.finish(), 0)
                self.assertEqual(program.lines, ["opened", "none", "none"])
                self.assertEqual(self.terminal.take_shown(), b"")


def main():
    global PROBE
    PROBE = os.path.abspath(sys.argv[1])
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]], failfast="GTEST_FAIL_FAST" in os.environ)


if __name__ == "__main__":
    main()
