"""A shell with one job: job.py foreground|background|orphan COMMAND...

Leads the session of its terminal; the job has a process group of its own. Each stop of the job is
told in a line on standard output, and a line on standard input says how it goes on: fg or bg. An
orphan is a job in the background that nobody could continue.
"""

import os
import signal
import sys


def execute(command):
    signal.signal(signal.SIGTTOU, signal.SIG_DFL)
    signal.signal(signal.SIGPIPE, signal.SIG_DFL)
    os.execv(command[0], command)


def run(terminal, is_foreground, command):
    job = os.fork()
    if job == 0:
        os.setpgid(0, 0)
        if is_foreground:
            os.tcsetpgrp(terminal, os.getpid())
        execute(command)
    while os.WIFSTOPPED(status := os.waitpid(job, os.WUNTRACED)[1]):
        os.tcsetpgrp(terminal, os.getpgrp())
        print("stopped", os.WSTOPSIG(status), flush=True)
        if sys.stdin.readline() == "fg\n":
            os.tcsetpgrp(terminal, job)
        os.killpg(job, signal.SIGCONT)
    os.tcsetpgrp(terminal, os.getpgrp())
    print("ended", os.waitstatus_to_exitcode(status), flush=True)


def run_orphan(command):
    end, held_by_orphan = os.pipe()
    os.set_inheritable(held_by_orphan, True)
    parent = os.fork()
    if parent == 0:
        parent = os.getpid()
        if os.fork() == 0:
            os.setpgid(0, 0)
            while os.getppid() == parent:
                pass
            execute(command)
        os._exit(0)
    os.waitpid(parent, 0)
    os.close(held_by_orphan)
    os.read(end, 1)


def main(kind, *command):
    signal.signal(signal.SIGTTOU, signal.SIG_IGN)
    if kind == "orphan":
        run_orphan(command)
    else:
        run(os.open("/dev/tty", os.O_RDWR), kind == "foreground", command)


if __name__ == "__main__":
    main(*sys.argv[1:])
