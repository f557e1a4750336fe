"""How the benchmark measures: instructions and calls by callgrind, heap by counters, time in rounds."""

import functools
import os
import pathlib
import re
import shutil
import statistics
import subprocess
import sys
import time
import unicodedata

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build" / "bench"
FILE = "/etc/passwd"  # exists everywhere

# A region is what runs between entering and leaving a function; one that is named within another is
# left out of it. A thread has regions of its own.
# From argv to the five values in the tool's hands: matching and validation on the caller's thread, and
# fetching on the worker's. The worker itself is left out, and what the tool then does.
MATCH = ["runCommandLine", "Optrella::Platform::runOnWorker*", "fetchValues", "takeCommand"]
MATCH_ITEMS = [*MATCH[:-1], "takeItems"]
PARSE = ["runCommandLine", "takeCommand"]
PARSE_ITEMS = ["runCommandLine", "takeItems"]
HELP = ["printHelp"]
WHOLE = []
EMPTY = ["declareCommands"]

# Nothing of the caller's surroundings: the C library reads them.
SURROUNDINGS = {"PATH": "/usr/bin:/bin", "LC_ALL": "C"}


def run(command, **options):
    """The standard output of a command that must end with status 0."""
    done = subprocess.run(command, capture_output=True, text=True, **options)
    if done.returncode != 0:
        line = " ".join(map(str, command))
        sys.exit(f"{line[:200]}\nended with {done.returncode}\n{done.stdout}{done.stderr}")
    return done.stdout


def build(*targets):
    if shutil.which("valgrind") is None:
        sys.exit("valgrind is missing, which counts the instructions. On Debian: apt install valgrind")
    print("building; the first time takes some minutes", flush=True)
    configured = run(["cmake", "-S", ROOT / "Benchmarks", "-B", BUILD, "-DCMAKE_BUILD_TYPE=Release"])
    for line in configured.splitlines():
        if "not installed" in line.lower():
            print(line.removeprefix("-- "))
    run(["cmake", "--build", BUILD, *(["--target", *targets] if targets else [])])


def is_built(tool):
    return (BUILD / tool).exists()


# ---- The workload ----

def command_line(commands, parser="optrella"):
    """The arguments of the command in the middle: its word and all five options."""
    lines = (BUILD / f"{commands}.inc").read_text().splitlines()
    number = len(lines) // 2
    word = lines[number].split('"')[1]
    if parser in ("gflags", "abseil"):
        values = {"name": "some", "count": "42", "mode": "full", "file": FILE, "verbose": "true"}
        return [word, *(f"--command{number}_{name}={value}" for name, value in values.items())]
    return [word, "-n", "some", "-c", "42", "-m", "full", "-f", FILE, "-v"]


def decomposed(arguments):
    return [unicodedata.normalize("NFD", each) for each in arguments]


def check_answers(tools):
    """Every tool understands the command line, or its figures mean nothing."""
    for tool in tools:
        parser, commands = tool.split("-", 1)
        arguments = command_line(commands, parser)
        answer = run([BUILD / tool, *arguments])
        if answer != f"{arguments[0]} some 42 full {FILE} 1\n":
            sys.exit(f"{tool} answered: {answer}")


def check_help():
    """What is printed by hand is the same listing."""
    for by_hand in ("getopt-plain-100", "pasted-plain-100"):
        if run([BUILD / "optrella-plain-100", "help"]) != run([BUILD / by_hand, "help"]):
            sys.exit(f"The listing that {by_hand} prints is another one.")


# ---- Instructions ----

@functools.cache
def symbols(tool):
    return run(["nm", "-C", BUILD / tool])


def must_have(tool, functions):
    """A function that was renamed would measure nothing."""
    for function in functions:
        name = function.removesuffix("*")
        if name not in symbols(tool):
            sys.exit(f"{tool} has no function {name}: a region of the benchmark has lost its name")


@functools.cache
def callgrind(tool, regions, arguments):
    must_have(tool, regions)
    profile = BUILD / "callgrind.out"
    # Region by region the dynamic linker's work is left out; it is part of whole processes only.
    surroundings = SURROUNDINGS | ({"LD_BIND_NOW": "1"} if regions else {})
    run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={profile}",
         *(f"--toggle-collect={region}" for region in regions), f"./{tool}", *arguments],
        cwd=BUILD, env=surroundings)
    return profile.read_text(errors="replace")


def instructions(tool, regions, arguments=()):
    profile = callgrind(tool, tuple(regions), tuple(arguments))
    return int(re.search(r"^totals: (\d+)", profile, re.MULTILINE)[1])


def declaring(parser, count, how="plain"):
    """What declaring adds to a process that does nothing more: also what the loader does for constants,
    and what becomes of the declarations at the exit."""
    many, none = (instructions(f"{parser}-{how}-{each}", WHOLE) for each in (count, 0))
    return many - none


# ---- Heap and threads ----

def counted(tool, arguments):
    """Heap calls and bytes of declaring and of running, and the threads that were started."""
    # Under one name: the library keeps the arguments of the start, and a longer one is no command's.
    done = subprocess.run(["counted", *arguments], executable=BUILD / f"counted-{tool}",
                          capture_output=True, text=True, env=SURROUNDINGS)
    found = re.fullmatch(r"declare (\d+) (\d+)\nrun (\d+) (\d+) (\d+)\n", done.stderr)
    if not found:
        sys.exit(f"counted-{tool} said: {done.stderr}")
    declare_calls, declare_bytes, run_calls, run_bytes, threads = map(int, found.groups())
    return {"declare calls": declare_calls, "declare bytes": declare_bytes,
            "calls": run_calls, "bytes": run_bytes, "threads": threads}


# ---- Time ----

def spent(command):
    """Wall and processor seconds of one process."""
    begin = time.perf_counter()
    silent = [(os.POSIX_SPAWN_OPEN, 1, os.devnull, os.O_WRONLY, 0)]
    process = os.posix_spawnp(command[0], command, SURROUNDINGS, file_actions=silent)
    _, status, usage = os.wait4(process, 0)
    wall = time.perf_counter() - begin
    if status != 0:
        sys.exit(f"{' '.join(command)} ended with status {status}")
    return wall, usage.ru_utime + usage.ru_stime


def in_rounds(commands, rounds):
    """Medians of wall and processor seconds: each round runs every command once, so that all meet
    the same machine."""
    samples = {name: [] for name in commands}
    for _ in range(rounds):
        for name, command in commands.items():
            samples[name].append(spent([str(part) for part in command]))
    return {name: tuple(map(statistics.median, zip(*runs))) for name, runs in samples.items()}
