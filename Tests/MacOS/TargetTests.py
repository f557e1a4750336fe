"""The library compiles for both processors of macOS, configured as there, with every warning of ours:

    TargetTests.py CMAKE TOOLCHAIN UTF8PROC_HEADERS

TOOLCHAIN is the directory of the Swift toolchain, whose compiler makes objects for macOS and whose Core
Foundation and queues are the system's own. The C library is Tests/Support/MacOS/libc, the services are
Tests/Support/MacOS/include, the C++ library is the machine's own one. Nothing of it can be linked or run.
"""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
SUPPORT = ROOT / "Tests/Support/MacOS"
PROCESSORS = ("arm64", "x86_64")
CMAKE, TOOLCHAIN, UTF8PROC = "", "", ""

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
# Declared, because the C++ headers of Linux need it, but not there.
NOT_THERE = {"_syscall", "_pthread_mutex_timedlock", "_pthread_mutex_clocklock", "_pthread_cond_clockwait"}
# What shows that all the parts are in the library.
THERE = {"_CFRunLoopStop", "_CSIdentityIsMemberOfGroup", "_ODRecordVerifyPassword", "_os_log_create",
         "__NSGetArgv", "__NSGetExecutablePath", "_proc_pidpath", "_dispatch_async_f", "_posix_spawn", "_select", "_utf8proc_iterate"}
FRAMEWORKS = "-framework CoreFoundation -framework CoreServices -framework OpenDirectory"


def run(*command, text=None):
    return subprocess.run([str(word) for word in command], input=text, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, check=False)


def cpp_headers():
    """The directories of the C++ library that the machine's compiler uses."""
    listed = run("c++", "-std=c++20", "-E", "-v", "-xc++", os.devnull).stdout
    lines = listed.split("#include <...> search starts here:")[1].splitlines()
    return [os.path.realpath(line.strip()) for line in lines if "/c++/" in line]


def compiler_flags(utf8proc):
    directories = [*cpp_headers(), SUPPORT / "include", SUPPORT / "libc", f"{TOOLCHAIN}/lib/swift",
                   utf8proc]
    # What C++ has deprecated is deprecated in the C++ library's own headers too.
    return ["-fblocks", "-Wno-deprecated-declarations", "-nostdinc++", "-nostdlibinc",
            *(word for each in directories for word in ("-isystem", str(each)))]


class Target(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        directory = tempfile.TemporaryDirectory()
        cls.addClassCleanup(directory.cleanup)
        cls.directory = directory.name
        utf8proc = os.path.join(directory.name, "utf8proc")
        os.mkdir(utf8proc)
        os.symlink(os.path.join(UTF8PROC, "utf8proc.h"), os.path.join(utf8proc, "utf8proc.h"))
        with open(os.path.join(utf8proc, "libutf8proc.a"), "wb"):
            pass
        cls.utf8proc = utf8proc
        cls.flags = compiler_flags(utf8proc)

    def succeed(self, *command):
        result = run(*command)
        self.assertEqual(result.returncode, 0, result.stdout)
        return result.stdout

    def compile(self, processor, text, *flags):
        return run(f"{TOOLCHAIN}/bin/clang++", "-target", f"{processor}-apple-macos12", "-std=c++20",
                   "-fsyntax-only", *self.flags, *flags, "-xc++", "-", text=text)

    def configure(self, processor, *options):
        build = os.path.join(self.directory, processor)
        return build, run(
            CMAKE, "-S", ROOT, "-B", build, "-DCMAKE_SYSTEM_NAME=Darwin", "-DCMAKE_OSX_SYSROOT=",
            f"-DCMAKE_CXX_COMPILER={TOOLCHAIN}/bin/clang++",
            f"-DCMAKE_CXX_COMPILER_TARGET={processor}-apple-macos12",
            f"-DCMAKE_OSX_ARCHITECTURES={processor}", "-DCMAKE_TRY_COMPILE_TARGET_TYPE=STATIC_LIBRARY",
            f"-DCMAKE_AR={TOOLCHAIN}/bin/llvm-ar", f"-DCMAKE_RANLIB={TOOLCHAIN}/bin/llvm-ranlib",
            f"-DCMAKE_CXX_FLAGS={' '.join(self.flags)}", f"-DUtf8proc_INCLUDE_DIR={self.utf8proc}",
            f"-DUtf8proc_LIBRARY={self.utf8proc}/libutf8proc.a",
            f"-DCMAKE_INSTALL_PREFIX={build}/prefix", "-DOPTRELLA_BUILD_TESTS=OFF",
            "-DOPTRELLA_BUILD_EXAMPLES=OFF", "-DOPTRELLA_WARNINGS_AS_ERRORS=ON", *options)

    def build(self, processor):
        build, result = self.configure(processor)
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertNotIn("warning:", self.succeed(CMAKE, "--build", build, "-j2"))
        self.succeed(CMAKE, "--install", build)
        library = f"{build}/prefix/lib/liboptrella.a"
        names = set(self.succeed(f"{TOOLCHAIN}/bin/llvm-nm", "-u", library).split())
        self.assertEqual(names & NOT_THERE, set())
        self.assertEqual(THERE - names, set())
        with open(f"{build}/prefix/lib/cmake/Optrella/OptrellaStatic.cmake", encoding="utf-8") as file:
            self.assertIn(FRAMEWORKS, file.read())

    def test_the_library_for_arm64_is_built_and_installed(self):
        self.build(PROCESSORS[0])

    def test_the_library_for_x86_64_is_built_and_installed(self):
        self.build(PROCESSORS[1])

    def test_an_older_macos_is_refused(self):
        _, result = self.configure("old", "-DCMAKE_OSX_ARCHITECTURES=arm64",
                                   "-DCMAKE_OSX_DEPLOYMENT_TARGET=11.0",
                                   "-DCMAKE_CXX_COMPILER_TARGET=arm64-apple-macos11")
        self.assertEqual(result.returncode, 1)
        self.assertIn("Optrella needs macOS 12 or newer, not 11.0", result.stdout)

    def test_what_macos_does_not_have_does_not_compile(self):
        for name, text in FAULTS.items():
            for processor in PROCESSORS:
                with self.subTest(name, processor=processor):
                    result = self.compile(processor, text)
                    self.assertEqual(result.returncode, 1, result.stdout)
                    self.assertIn("error:", result.stdout)

    def test_the_stand_ins_agree_with_one_another(self):
        headers = [*SUPPORT.glob("include/**/*.h"), *SUPPORT.glob("libc/**/*.h")]
        text = "".join(f'#include "{header}"\n' for header in sorted(headers))
        for processor in PROCESSORS:
            result = self.compile(processor, text, "-w")
            self.assertEqual((result.returncode, result.stdout), (0, ""))


if __name__ == "__main__":
    CMAKE, TOOLCHAIN, UTF8PROC = sys.argv[1:]
    unittest.main(argv=sys.argv[:1], verbosity=2)
