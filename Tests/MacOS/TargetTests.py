"""Every file of the library for macOS compiles for both of its processors, with every warning of ours:

    TargetTests.py COMPILER HEADERS UTF8PROC OPTION...

COMPILER and HEADERS are the Swift toolchain's, whose Core Foundation and queues are the system's own; the
C library is Tests/Support/MacOS/libc, the services are Tests/Support/MacOS/include, the C++ library is the
machine's own one.
"""

import concurrent.futures
import glob
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
SUPPORT = ROOT / "Tests/Support/MacOS"
TARGETS = ("arm64-apple-macos12", "x86_64-apple-macos12")
COMPILER, HEADERS, UTF8PROC, OPTIONS = "", "", "", []

# What a file of Linux may use, but one that macOS shares may not.
FAULTS = {
    "a call that Linux alone has": "#include <unistd.h>\nint f(int* ends) { return ::pipe2(ends, 0); }",
    "a signal set's function where macOS has a macro":
        "#include <csignal>\nvoid f(sigset_t* set) { ::sigemptyset(set); }",
    "the variable that a shared library does not have":
        "#include <unistd.h>\nchar** f() { return environ; }",
    "a type that is another one there":
        "#include <cstdint>\nvoid f(long*);\nvoid g(std::int64_t* number) { f(number); }",
    "a header of Linux": "#include <sys/prctl.h>",
}


def cpp_headers():
    """The folders of the C++ library that the machine's compiler uses."""
    result = subprocess.run(["c++", "-std=c++20", "-E", "-v", "-xc++", os.devnull], capture_output=True,
                            text=True, check=True)
    listed = result.stderr.split("#include <...> search starts here:")[1].splitlines()
    return [os.path.realpath(line.strip()) for line in listed if "/c++/" in line]


def command(target, folder):
    folders = [*cpp_headers(), SUPPORT / "include", SUPPORT / "libc", HEADERS, folder]
    return [COMPILER, "-target", target, "-std=c++20", "-fblocks", "-fsyntax-only", *OPTIONS,
            # A function that C++ has deprecated is deprecated in the C++ library's own headers too.
            "-Wno-deprecated-declarations", "-nostdinc++", "-nostdlibinc", f"-I{ROOT}/Sources",
            *(word for each in folders for word in ("-isystem", str(each)))]


def sources():
    files = sorted(glob.glob(f"{ROOT}/Sources/Optrella/**/*.cpp", recursive=True))
    return [file for file in files if "/Platform/Linux/" not in file]


class Target(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        os.symlink(UTF8PROC, os.path.join(folder.name, "utf8proc.h"))
        cls.commands = {target: command(target, folder.name) for target in TARGETS}

    def compile_all(self, target):
        def compile_one(file):
            return file, subprocess.run([*self.commands[target], file], capture_output=True, text=True,
                                        check=False)
        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            results = list(pool.map(compile_one, sources()))
        self.assertGreater(len(results), 20)
        failed = [f"{file}:\n{result.stderr}" for file, result in results
                  if result.returncode != 0 or result.stderr]
        self.assertEqual(failed, [], "\n".join(failed))

    def test_every_file_compiles_for_arm64(self):
        self.compile_all(TARGETS[0])

    def test_every_file_compiles_for_x86_64(self):
        self.compile_all(TARGETS[1])

    def test_what_macos_does_not_have_does_not_compile(self):
        for name, text in FAULTS.items():
            for target in TARGETS:
                with self.subTest(name, target=target):
                    result = subprocess.run([*self.commands[target], "-xc++", "-"], input=text,
                                            capture_output=True, text=True, check=False)
                    self.assertEqual(result.returncode, 1, result.stderr)
                    self.assertIn("error:", result.stderr)

    def test_the_stand_ins_agree_with_one_another(self):
        headers = [*SUPPORT.glob("include/**/*.h"), *SUPPORT.glob("libc/**/*.h")]
        text = "".join(f'#include "{header}"\n' for header in sorted(headers))
        for target in TARGETS:
            result = subprocess.run([*self.commands[target], "-w", "-xc++", "-"], input=text,
                                    capture_output=True, text=True, check=False)
            self.assertEqual((result.returncode, result.stderr), (0, ""))


if __name__ == "__main__":
    COMPILER, HEADERS, UTF8PROC, *OPTIONS = filter(None, sys.argv[1:])
    unittest.main(argv=sys.argv[:1], verbosity=2)
