"""Runs a test in namespaces of its own, so that nothing that it changes is seen on the machine.

    namespaces.run(prepare, main)

starts the calling script again, twice: first inside the namespaces with the right to mount, where
`prepare` is called, then for `main`. Its first argument says with which rights:

    --root   as root
    --user   as an ordinary user without rights, 7001, who may do this without any help from root

Where the machine does not allow it, the script ends with status 77 and says why. Everything that
is started inside ends with the script, even when the script is killed.
"""

import ctypes
import hashlib
import os
import re
import shutil
import stat
import subprocess
import sys

SKIPPED = 77
USER = 7001
NOBODY = 65534
NAMESPACES = ["unshare", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc", "--uts",
              "--ipc", "--propagation", "private"]
AS_USER = ["--user", f"--map-user={USER}", f"--map-group={USER}", "--keep-caps"]
AS_NOBODY = ["setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups"]
WITHOUT_RIGHTS = ["setpriv", "--inh-caps=-all", "--ambient-caps=-all", "--bounding-set=-all"]
# A directory of the namespaces' own, empty at first.
DIRECTORY = "/run"
# What makes the entries of accounts, on one system or another.
CRYPT = ("libcrypt.so.1", "libcrypt.so.2")


def skip(reason):
    print("skipped:", reason, flush=True)
    sys.exit(SKIPPED)


def run(prepare, main):
    kind, arguments = sys.argv[1], sys.argv[2:]
    if arguments[0] == "--prepare":
        arguments = arguments[1:]
        mount("-t", "tmpfs", "-o", "mode=0755", "none", DIRECTORY)
        prepare()
        prefix = WITHOUT_RIGHTS if kind == "--user" else []
        execute(prefix + again(kind, "--main", *arguments))
    elif arguments[0] == "--main":
        main(kind == "--root", arguments[1:])
    else:
        enter(kind, arguments)


def enter(kind, arguments):
    interpreter = sys.executable
    if kind == "--root":
        if os.geteuid() != 0:
            skip("needs root")
        prefix = NAMESPACES
    else:
        prefix = NAMESPACES[:1] + AS_USER + NAMESPACES[1:]
        if os.geteuid() == 0:
            interpreter = interpreter_for_all(arguments)
            prefix = AS_NOBODY + prefix
    for tool in ("unshare", "setpriv", "mount"):
        if shutil.which(tool) is None:
            skip(f"no {tool} here")
    probe = subprocess.run(prefix + ["mount", "-t", "tmpfs", "none", DIRECTORY],
                           stdin=subprocess.DEVNULL, capture_output=True, text=True)
    if probe.returncode != 0:
        skip(f"no namespaces here: {probe.stderr.strip()}")
    execute(prefix + again(kind, "--prepare", *arguments, interpreter=interpreter))


def again(*arguments, interpreter=sys.executable):
    return [interpreter, "-B", os.path.abspath(sys.argv[0]), *arguments]


def execute(command):
    sys.stdout.flush()
    os.execvp(command[0], command)


def interpreter_for_all(arguments):
    """A Python that an ordinary user may run, as well as this script and its arguments."""
    for path in [os.path.abspath(sys.argv[0]), *map(os.path.abspath, arguments)]:
        if not is_open_to_all(path):
            skip(f"an ordinary user cannot reach {path}")
    for path in (sys.executable, "/usr/bin/python3"):
        if is_open_to_all(os.path.realpath(path)):
            return path
    skip("no Python that an ordinary user can run")


def is_open_to_all(path):
    needed = 0o004
    while os.path.exists(path):
        if os.stat(path).st_mode & needed == 0:
            return False
        if path == "/":
            return True
        path, needed = os.path.dirname(path), 0o001
    return False


def mount(*arguments):
    subprocess.run(["mount", *arguments], check=True, stdin=subprocess.DEVNULL)


def keep(path):
    """Opens a directory of the machine for the tests to look at when another one lies over it."""
    directory = os.open(path, os.O_PATH | os.O_DIRECTORY)
    os.set_inheritable(directory, True)
    os.environ["KEPT_DIRECTORY"] = str(directory)


def kept():
    return int(os.environ["KEPT_DIRECTORY"])


def own_etc(*names):
    """Covers /etc, where nothing is left then; what these files of the machine's own are, is kept."""
    keep("/etc")
    os.environ["MACHINES_FILES"] = state_of_kept(*names)
    etc = DIRECTORY + "/etc"
    os.mkdir(etc)
    if os.path.exists("/etc/ld.so.cache"):
        shutil.copy("/etc/ld.so.cache", etc)
    mount("--bind", etc, "/etc")


def expect_untouched(*names):
    """The machine's own files, under those of the tests."""
    if os.environ["MACHINES_FILES"] != state_of_kept(*names):
        raise AssertionError("the machine's own files in /etc were touched")


def own_devices(has_terminals=False):
    """Covers /dev: there is no log but that of the tests, and no terminals but their own, if any."""
    device = DIRECTORY + "/dev"
    os.mkdir(device)
    mount("-t", "tmpfs", "-o", "mode=0755", "none", device)
    for name in ("null", "zero", "full", "random", "urandom", *["tty"] * has_terminals):
        open(f"{device}/{name}", "w").close()
        mount("--bind", f"/dev/{name}", f"{device}/{name}")
    os.mkdir(device + "/shm")
    if has_terminals:
        os.mkdir(device + "/pts")
        mount("-t", "devpts", "-o", "newinstance,ptmxmode=0666,mode=620", "devpts", device + "/pts")
        os.symlink("pts/ptmx", device + "/ptmx")
    mount("--rbind", device, "/dev")


def state_of_kept(*names):
    """What identifies files of the directory that is kept: their content, as far as it may be read,
    and what the file system says."""
    found = []

    def look_at(name):
        try:
            status = os.stat(name, dir_fd=kept(), follow_symlinks=False)
            found.append((name, status.st_mode, status.st_ino, status.st_size, status.st_mtime_ns,
                          status.st_ctime_ns))
            if stat.S_ISDIR(status.st_mode):
                directory = os.open(name, os.O_RDONLY, dir_fd=kept())
                for entry in sorted(os.listdir(directory)):
                    look_at(f"{name}/{entry}")
                os.close(directory)
            elif stat.S_ISREG(status.st_mode):
                with open(os.open(name, os.O_RDONLY, dir_fd=kept()), "rb") as file:
                    found.append(hashlib.sha256(file.read()).hexdigest())
        except (FileNotFoundError, PermissionError) as error:
            found.append((name, error.strerror))

    for name in names:
        look_at(name)
    return str(found)


def path_of_library(*names):
    """Where the loader finds the first of these that there is; nothing when there is none."""
    for name in names:
        try:
            ctypes.CDLL(name)
        except OSError:
            continue
        with open("/proc/self/maps", encoding="utf-8") as maps:
            return next(path for path in (line.split()[-1] for line in maps)
                        if os.path.basename(path).startswith(name))
    return None


def crypt(password, setting="$6$rounds=1000$saltofthetests"):
    """The entry for a password, as the machine itself makes it; few rounds take little time."""
    function = ctypes.CDLL(path_of_library(*CRYPT)).crypt
    function.restype = ctypes.c_char_p
    entry = function(password, setting.encode())
    if entry is None or entry.startswith(b"*"):
        raise AssertionError(f"no entry for a password of {len(password)} bytes")
    return entry.decode()


def path_of_module(name):
    directories = (os.path.dirname(path_of_library("libpam.so.0")), "/lib64", "/lib", "/usr/lib")
    return existing(f"{directory}/security/{name}" for directory in directories)


def path_of_helper():
    return existing(("/usr/sbin/unix_chkpwd", "/sbin/unix_chkpwd"))


def existing(paths):
    return next((path for path in paths if os.path.exists(path)), None)


def preloads(program):
    """A sanitizer looks for crypt() when the process starts, and finds it only if its library is
    loaded by then; otherwise the modules would call a null pointer."""
    with open(program, "rb") as file:
        runtime = re.search(rb"\blib[at]san\.so\.\d+", file.read())
    if runtime is None:
        return {}
    return {"LD_PRELOAD": f"{runtime.group().decode()} {path_of_library(*CRYPT)}"}


def communicate(probe, text=None):
    """The probe's output and what it reported; one that hangs is ended, which its status tells."""
    try:
        return probe.communicate(text, timeout=5)
    except subprocess.TimeoutExpired:
        probe.kill()
        return probe.communicate()
