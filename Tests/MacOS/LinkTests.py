"""What Scripts/macos-link has linked is for macOS 12, and asks the system for nothing that it does not have:

    LinkTests.py DIRECTORY PROCESSOR...
"""

import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
FRAMEWORKS = ("CoreFoundation", "CoreServices", "OpenDirectory")
TESTS = {"author-tests", "child-process-tests", "file-tests", "password-tests", "policy-tests",
         "screen-tests", "standard-streams-tests", "start-arguments-tests", "terminal-probe", "tool-tests",
         "value-tests", "worker-tests"}
EXAMPLES = {"greet", "hosts", "listen", "notice", "sessions", "shelf", "volumes"}
OLDEST = {"platform": "macos", "minos": "12.0"}
DIRECTORY, PROCESSORS = pathlib.Path(), []

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
    "what only a newer macOS has":
        "#include <os/availability.h>\nvoid newer() API_AVAILABLE(macos(13.0));\nvoid f() { newer(); }",
}


def run(*command):
    return subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, check=False)


def otool(option, file):
    return run("llvm-otool-14", option, file).stdout


def build_version(program):
    """What the program says of the system that it is for."""
    told = otool("-l", program).partition("cmd LC_BUILD_VERSION\n")[2].partition("Load command")[0]
    return dict(line.split()[:2] for line in told.splitlines())


def version():
    return re.search(r"^project\(Optrella VERSION (\d+\.\d+)\.", (ROOT / "CMakeLists.txt").read_text(),
                     re.MULTILINE).group(1)


class Linked(unittest.TestCase):
    maxDiff = None

    def each(self):
        for processor in PROCESSORS:
            yield processor, DIRECTORY / processor

    def programs(self, directory):
        tests = {directory / "library" / "Tests" / name for name in TESTS}
        return tests | {directory / "library" / "Examples" / name for name in EXAMPLES}

    def test_every_program_is_for_the_processor_and_macos_12(self):
        for processor, directory in self.each():
            for program in self.programs(directory):
                self.assertEqual(run("llvm-lipo-14", "-archs", program).stdout.split(), [processor], program)
                told = build_version(program)
                self.assertEqual({each: told.get(each) for each in OLDEST}, OLDEST, program)

    def test_every_program_asks_for_the_system_and_its_frameworks_alone(self):
        allowed = {f"/System/Library/Frameworks/{name}.framework/Versions/A/{name}" for name in FRAMEWORKS}
        for _, directory in self.each():
            for program in self.programs(directory):
                asked = {line.split()[0] for line in otool("-L", program).splitlines()[1:]}
                self.assertIn("/usr/lib/libSystem.B.dylib", asked, program)
                self.assertEqual(asked - allowed - {"/usr/lib/libSystem.B.dylib"}, set(), program)
            greet = otool("-L", directory / "library" / "Examples" / "greet")
            for framework in allowed:
                self.assertIn(framework, greet)

    def test_the_shared_library_is_found_by_the_run_path(self):
        name = f"@rpath/liboptrella.{version()}.dylib"
        for _, directory in self.each():
            library = directory / "installed-ON" / "lib" / "liboptrella.dylib"
            self.assertEqual(otool("-D", library).splitlines()[1:], [name])
            greet = directory / "installed-ON" / "greet"
            self.assertIn(name, otool("-L", greet))
            self.assertRegex(otool("-l", greet), r"cmd LC_RPATH\n +cmdsize \d+\n +path .*/Sources/Optrella ")

    def test_the_installed_package_names_the_frameworks(self):
        named = " ".join(f"-framework {name}" for name in FRAMEWORKS)
        for _, directory in self.each():
            package = directory / "installed-OFF" / "lib" / "cmake" / "Optrella" / "OptrellaStatic.cmake"
            self.assertIn(named, package.read_text())

    def test_an_archive_for_both_processors_holds_both(self):
        if len(PROCESSORS) < 2:
            self.skipTest("Scripts/macos-link arm64 x86_64 makes one")
        archives = [DIRECTORY / each / "installed-OFF" / "lib" / "liboptrella.a" for each in PROCESSORS]
        both = DIRECTORY / "liboptrella.a"
        self.assertEqual(run("llvm-lipo-14", "-create", *archives, "-output", both).stdout, "")
        self.assertEqual(set(run("llvm-lipo-14", "-archs", both).stdout.split()), set(PROCESSORS))


class Compiler(unittest.TestCase):
    def compile(self, processor, text):
        with tempfile.TemporaryDirectory() as directory:
            source = pathlib.Path(directory) / "source.cpp"
            source.write_text(text)
            return run(DIRECTORY / processor / "tools" / "CXX", "-std=c++20", "-Wall", "-Werror", "-c", source,
                       "-o", pathlib.Path(directory) / "object.o")

    def test_takes_what_macos_has(self):
        for processor in PROCESSORS:
            result = self.compile(processor, "#include <unistd.h>\nint f(int* ends) { return ::pipe(ends); }")
            self.assertEqual((result.returncode, result.stdout), (0, ""))

    def test_refuses_what_macos_does_not_have(self):
        for name, text in FAULTS.items():
            for processor in PROCESSORS:
                with self.subTest(name, processor=processor):
                    result = self.compile(processor, text)
                    self.assertEqual(result.returncode, 1, result.stdout)
                    self.assertIn("error:", result.stdout)

    def test_an_older_macos_is_refused(self):
        with tempfile.TemporaryDirectory() as build:
            result = run("cmake", "-S", ROOT, "-B", build, "-DCMAKE_OSX_DEPLOYMENT_TARGET=11.0",
                         f"-DCMAKE_TOOLCHAIN_FILE={ROOT}/Tests/MacOS/Link/toolchain.cmake",
                         f"-DOPTRELLA_CROSS_PROCESSOR={PROCESSORS[0]}",
                         f"-DOPTRELLA_CROSS_TOOLS={DIRECTORY}/{PROCESSORS[0]}/tools")
        self.assertEqual(result.returncode, 1)
        self.assertIn("Optrella needs macOS 12 or newer, not 11.0", result.stdout)


if __name__ == "__main__":
    DIRECTORY, PROCESSORS = pathlib.Path(sys.argv[1]), sys.argv[2:]
    unittest.main(argv=sys.argv[:1], verbosity=2)
