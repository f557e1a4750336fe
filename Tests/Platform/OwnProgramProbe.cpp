// Does what each of its arguments says, and writes, for OwnProgramTests.cpp.
//
//   chdir PATH       goes to another directory
//   remove PATH      removes a file
//   move OLD NEW     gives a file another name
//   copy OLD NEW     copies a file
//   block            blocks SIGUSR1 and SIGTERM
//   print TEXT       leaves a text in the buffer of standard output
//   mask             writes which signals are blocked, "mask 10 15"
//   program          writes "program PATH", or "program" when there is none
//   replace PATH [WORD]... --   puts another program in the place of this one; writes
//                    "error NUMBER" when that is not possible. NUL in a word stands for the byte.

#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "Optrella/Platform/OwnProgram.hpp"
#include "Optrella/Platform/Process.hpp"

namespace {

using Words = std::vector<std::string>;

// Past the buffer of standard output.
void write(std::string line) {
    line += '\n';
    if (::write(STDOUT_FILENO, line.data(), line.size()) < 0) ::_exit(99);
}

void block() {
    sigset_t some;
    ::sigemptyset(&some);
    ::sigaddset(&some, SIGUSR1);
    ::sigaddset(&some, SIGTERM);
    ::pthread_sigmask(SIG_SETMASK, &some, nullptr);
}

std::string mask() {
    sigset_t now;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &now);
    std::string text = "mask";
    for (int number = 1; number < NSIG; ++number) {
        if (::sigismember(&now, number) == 1) text += ' ' + std::to_string(number);
    }
    return text;
}

void replace(const std::string& program, Words words) {
    for (std::string& word : words) {
        if (const std::size_t at = word.find("NUL"); at != std::string::npos) {
            word.replace(at, 3, 1, '\0');
        }
    }
    write("error " + std::to_string(Optrella::Platform::replaceProcess(program.c_str(), words)));
}

}  // namespace

int main(int, char* argv[]) {
    namespace fs = std::filesystem;
    while (*++argv != nullptr) {
        const std::string_view wish = *argv;
        if (wish == "chdir") {
            fs::current_path(*++argv);
        } else if (wish == "remove") {
            fs::remove(*++argv);
        } else if (wish == "move") {
            fs::rename(argv[1], argv[2]);
            argv += 2;
        } else if (wish == "copy") {
            fs::copy_file(argv[1], argv[2]);
            argv += 2;
        } else if (wish == "block") {
            block();
        } else if (wish == "print") {
            std::fputs(*++argv, stdout);
        } else if (wish == "mask") {
            write(mask());
        } else if (wish == "program") {
            const auto program = Optrella::Platform::ownProgram();
            write(program ? "program " + *program : "program");
        } else if (wish == "replace") {
            const std::string program = *++argv;
            Words words;
            while (argv[1] != nullptr && std::string_view(argv[1]) != "--")
                words.emplace_back(*++argv);
            if (argv[1] != nullptr) ++argv;
            replace(program, words);
        } else {
            return 99;
        }
    }
}
