"""Programs on a terminal of their own, for tests that play its user."""

import array
import fcntl
import os
import pty
import select
import subprocess
import sys
import termios
import time

PROMPT = b"Password:"
PATIENCE = 20  # seconds, after which a test has failed


class Terminal:
    """A pseudoterminal; what the user types goes to its master."""

    def __init__(self):
        self.master, self.slave = pty.openpty()
        self.shown = b""

    def hang_up(self):
        os.close(self.master)
        self.master = None

    def close(self):
        if self.master is not None:
            self.hang_up()
        os.close(self.slave)

    def settings(self):
        return termios.tcgetattr(self.slave)

    def change_local_modes(self, cleared=0, added=0):
        settings = self.settings()
        settings[3] = settings[3] & ~cleared | added
        termios.tcsetattr(self.slave, termios.TCSANOW, settings)

    def is_echoing(self):
        return bool(self.settings()[3] & termios.ECHO)

    def foreground(self):
        """The process group that has the terminal."""
        group = array.array("i", [0])
        fcntl.ioctl(self.master, termios.TIOCGPGRP, group)
        return group[0]

    def type(self, keys):
        os.write(self.master, keys)

    def receive(self, seconds):
        """False when nothing more is shown within this time."""
        if not select.select([self.master], [], [], seconds)[0]:
            return False
        self.shown += os.read(self.master, 1 << 16)
        return True

    def wait_for(self, text):
        while not self.shown.endswith(text):
            if not self.receive(PATIENCE):
                raise AssertionError(f"{text} was not shown, but {self.shown}")

    def take_shown(self):
        """What has been shown since this was last called."""
        while self.receive(0):
            pass
        shown, self.shown = self.shown, b""
        return shown


class Program:
    """A running program, which gets the number of a pipe to report to before its words.

    It leads a session: on the terminal, or without any.
    """

    def __init__(self, terminal, command, *words, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE):
        def take_terminal():
            fcntl.ioctl(terminal.slave, termios.TIOCSCTTY, 0)

        self.terminal = terminal
        self.reports, report = os.pipe()
        self.process = subprocess.Popen(
            [*command, str(report), *words], stdin=stdin, stdout=stdout, stderr=subprocess.PIPE,
            pass_fds=[report], start_new_session=True, preexec_fn=terminal and take_terminal)
        os.close(report)
        self.pid = self.process.pid

    def reader(self):
        """The process that reads."""
        return self.pid

    def is_asleep(self):
        if sys.platform != "linux":  # the state of the busiest thread
            state = subprocess.run(["ps", "-o", "stat=", "-p", str(self.reader())],
                                   capture_output=True, text=True, check=False).stdout
            return state[:1] in ("S", "I")
        directory = f"/proc/{self.reader()}/task"
        states = []
        try:
            for thread in os.listdir(directory):
                with open(f"{directory}/{thread}/stat", encoding="utf-8") as file:
                    states.append(file.read().rpartition(") ")[2][0])
        except (FileNotFoundError, ProcessLookupError):  # a thread has just ended
            return False
        return set(states) == {"S"}

    def prompts(self):
        """Waits until the prompt is shown and keys are waited for; false when it ends without."""
        latest = time.monotonic() + PATIENCE
        while not self.terminal.shown.endswith(PROMPT):
            has_ended = self.process.poll() is not None
            if not self.terminal.receive(0.02):
                if has_ended:
                    return False
                if time.monotonic() > latest:
                    raise AssertionError(f"no prompt, but {self.terminal.shown}")
        while self.process.poll() is None and not self.is_asleep():
            if time.monotonic() > latest:
                raise AssertionError("the prompt is shown, but no keys are waited for")
            time.sleep(0.0002)
        return True

    def answer(self, keys):
        """Types at the prompt; returns what was shown up to there, the prompt included."""
        if not self.prompts():
            raise AssertionError(f"ended without a prompt: {self.terminal.shown}")
        shown = self.terminal.take_shown()
        self.terminal.type(keys)
        return shown

    def finish(self):
        """Waits for the end; returns the exit status, minus the signal when one ended it."""
        try:
            self.output, self.errors = self.process.communicate(timeout=PATIENCE)
        except subprocess.TimeoutExpired:
            raise AssertionError("did not come to its end") from None
        lines = b""
        while part := os.read(self.reports, 1 << 16):
            lines += part
        self.lines = lines.decode().splitlines()
        return self.process.returncode

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        for stream in (self.process.stdin, self.process.stdout, self.process.stderr):
            if stream is not None:
                stream.close()
        os.close(self.reports)


class Job(Program):
    """A program that is the job of a shell: "foreground", "background" or "orphan"."""

    def __init__(self, terminal, kind, command, *words):
        shell = os.path.join(os.path.dirname(os.path.abspath(__file__)), "job.py")
        super().__init__(terminal, [sys.executable, "-S", "-E", shell, kind, *command], *words,
                         stdin=subprocess.PIPE)

    def reader(self):
        return self.terminal.foreground()

    def event(self):
        """The next stop or end of the job."""
        if not select.select([self.process.stdout], [], [], PATIENCE)[0]:
            raise AssertionError("the job was not stopped")
        return self.process.stdout.readline().decode().rstrip("\n")

    def order(self, how):
        self.process.stdin.write(how.encode() + b"\n")
        self.process.stdin.flush()
