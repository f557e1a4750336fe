// Writes the arguments that it was started with, a NUL after each, after it has done to them what
// the variable OPTRELLA_TEST says, for StartArgumentsTests.cpp.
//
//   pointers      main points the array elsewhere
//   bytes         main overwrites the arguments themselves
//   removal       main removes the first argument after its name, as option parsers do
//   constructor   a constructor of the program overwrites the arguments themselves
//   early         before everything else the environment is moved and the array pointed elsewhere
//   chroot        before everything else /proc is put out of reach
//   early chroot  both

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "Optrella/Platform/StartArguments.hpp"

// macOS declares it in no header.
extern "C" char** environ;

namespace {

char elsewhere[] = "elsewhere";

std::string_view wish() {
    const char* value = std::getenv("OPTRELLA_TEST");
    return value != nullptr ? value : "";
}

void pointElsewhere(int argc, char* argv[]) {
    for (int i = 0; i < argc; ++i) argv[i] = elsewhere;
}

// Before the library's own constructor, where they have an order: of equal ones, the program's run
// before an archive's.
[[gnu::constructor(101)]] void changeEarly(int argc, char* argv[], char**) {
    const std::string_view wished = wish();
    if (wished.starts_with("early")) {
        static std::vector<char*> moved;
        for (char** entry = environ; *entry != nullptr; ++entry) moved.push_back(*entry);
        moved.push_back(nullptr);
        environ = moved.data();
        pointElsewhere(argc, argv);
    }
    if (wished.ends_with("chroot") && (::chroot("/dev") != 0 || ::chdir("/") != 0)) ::_exit(77);
}

void overwrite(int argc, char* argv[]) {
    for (int i = 0; i < argc; ++i) std::memset(argv[i], '#', std::strlen(argv[i]));
}

// As early as a constructor can run in a program that leaves the first place to the library.
[[gnu::constructor(102)]] void change(int argc, char* argv[], char**) {
    if (wish() == "constructor") overwrite(argc, argv);
}

}  // namespace

int main(int argc, char* argv[]) {
    if (wish() == "pointers") {
        pointElsewhere(argc, argv);
    } else if (wish() == "bytes") {
        overwrite(argc, argv);
    } else if (wish() == "removal" && argc > 1) {
        for (int i = 1; i < argc; ++i) argv[i] = argv[i + 1];
    }
    std::string output;
    for (const std::string& each : Optrella::Platform::startArguments()) {
        output.append(each.c_str(), each.size() + 1);
    }
    for (std::string_view rest = output; !rest.empty();) {
        const ssize_t written = ::write(STDOUT_FILENO, rest.data(), rest.size());
        if (written <= 0) return 1;
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
    ::_exit(0);  // a sanitizer that looks for leaks would need /proc
}
