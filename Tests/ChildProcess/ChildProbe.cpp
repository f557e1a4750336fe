// A child that does what its arguments say, word by word, for ChildProcessTests.cpp.
//
//   write HEX         writes the bytes and waits until they have been read
//   error HEX         the same on standard error
//   numbers COUNT     writes the lines "0", "1", ... like this, one by one
//   fill COUNT        writes so many bytes 'x' at once, without waiting
//   stream COUNT      writes so many bytes of a pattern, 100 000 at a time, and waits in the end
//   capacity COUNT    gives the pipe of standard output room for so many bytes, on Linux
//   input             writes standard input, to its end, in hex
//   arguments         writes all arguments in hex, a line for each, and ends
//   file PATH         writes the file
//   descriptors       writes the numbers of the open descriptors
//   nonblocking       writes how many of the descriptors 0 to 2 do not block
//   signals           writes which signals are blocked and ignored
//   relations         writes parent, process group and session
//   place             writes working directory and umask
//   environment       writes the environment, a NUL after each entry
//   sleep COUNT       sleeps so many milliseconds
//   heir              leaves a process running that holds the pipes until nobody reads them
//   flood             leaves a process running that writes until nobody reads
//   stop              stops and is woken a little later
//   abandon           closes descriptors 0 to 2
//   kill SIGNAL       dies of the signal
//   exit CODE         ends

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <thread>

#include "Support/Probe.hpp"

// macOS declares it in no header.
extern "C" char** environ;

namespace {

using namespace Tests;
using namespace std::chrono_literals;

void writeBlock(int descriptor, std::string_view bytes) {
    writeAll(descriptor, bytes);
    awaitDrained(descriptor);
}

std::string contents(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string descriptors() {
    std::string text;
    for (int number = 0; number < 1024; ++number) {
        if (::fcntl(number, F_GETFD) >= 0) text += std::to_string(number) + '\n';
    }
    return text;
}

std::string nonblocking() {
    int count = 0;
    for (int number = 0; number < 3; ++number) {
        if ((::fcntl(number, F_GETFL) & O_NONBLOCK) != 0) ++count;
    }
    return std::to_string(count) + '\n';
}

// Those that the C library keeps for itself are not told. None is handled yet, unless a sanitizer
// does it.
std::string signals() {
    sigset_t blocked;
    ::sigprocmask(SIG_SETMASK, nullptr, &blocked);
    std::string text;
    for (int signal = 1; signal < NSIG; ++signal) {
        struct sigaction action {};
        if (::sigaction(signal, nullptr, &action) != 0) continue;
        if (action.sa_handler == SIG_IGN) text += std::to_string(signal) + " ignored\n";
        if (sigismember(&blocked, signal) == 1) text += std::to_string(signal) + " blocked\n";
    }
    return text;
}

std::string relations() {
    return std::to_string(::getppid()) + ' ' + std::to_string(::getpgrp()) + ' ' +
           std::to_string(::getsid(0)) + '\n';
}

std::string place() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return std::filesystem::current_path().string() + ' ' + std::to_string(mask) + '\n';
}

std::string environment() {
    std::string text;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        text.append(*entry, std::strlen(*entry) + 1);
    }
    return text;
}

// Both processes that are left running end when nobody reads any more, or after ten seconds.

void leaveHeir() {
    if (::fork() != 0) return;
    pollfd output{STDOUT_FILENO, 0, 0};
    ::poll(&output, 1, 10'000);
    ::_exit(0);
}

void leaveFlood() {
    if (::fork() != 0) return;
    ::alarm(10);
    for (;;) writeAll(STDOUT_FILENO, "flood");
}

void stop() {
    const pid_t self = ::getpid();
    const pid_t waker = ::fork();
    if (waker == 0) {
        std::this_thread::sleep_for(100ms);
        ::kill(self, SIGCONT);
        ::_exit(0);
    }
    ::raise(SIGSTOP);
    ::waitpid(waker, nullptr, 0);
}

bool does(std::string_view word) {
    if (word == "input") {
        writeBlock(STDOUT_FILENO, hex(standardInput()) + '\n');
    } else if (word == "descriptors") {
        writeBlock(STDOUT_FILENO, descriptors());
    } else if (word == "nonblocking") {
        writeBlock(STDOUT_FILENO, nonblocking());
    } else if (word == "signals") {
        writeBlock(STDOUT_FILENO, signals());
    } else if (word == "relations") {
        writeBlock(STDOUT_FILENO, relations());
    } else if (word == "place") {
        writeBlock(STDOUT_FILENO, place());
    } else if (word == "environment") {
        writeBlock(STDOUT_FILENO, environment());
    } else if (word == "heir") {
        leaveHeir();
    } else if (word == "flood") {
        leaveFlood();
    } else if (word == "stop") {
        stop();
    } else if (word == "abandon") {
        for (const int standard : {0, 1, 2}) ::close(standard);
    } else {
        return false;
    }
    return true;
}

bool does(std::string_view word, const char* argument) {
    const std::size_t count = std::strtoul(argument, nullptr, 10);
    if (word == "write") {
        writeBlock(STDOUT_FILENO, bytesOf(argument));
    } else if (word == "error") {
        writeBlock(STDERR_FILENO, bytesOf(argument));
    } else if (word == "numbers") {
        for (std::size_t i = 0; i < count; ++i) writeBlock(STDOUT_FILENO, std::to_string(i) + '\n');
    } else if (word == "fill") {
        writeAll(STDOUT_FILENO, std::string(count, 'x'));
    } else if (word == "stream") {
        std::string text(count, '\0');
        std::generate(text.begin(), text.end(), [n = 0u]() mutable {
            n = n * 1664525u + 1013904223u;
            return static_cast<char>(n >> 24);
        });
        for (std::size_t i = 0; i < count; i += 100'000) {
            writeAll(STDOUT_FILENO, std::string_view(text).substr(i, 100'000));
        }
        awaitDrained(STDOUT_FILENO);
#ifdef F_SETPIPE_SZ
    } else if (word == "capacity") {
        if (::fcntl(STDOUT_FILENO, F_SETPIPE_SZ, static_cast<int>(count)) < 0) giveUp();
#endif
    } else if (word == "file") {
        writeBlock(STDOUT_FILENO, contents(argument));
    } else if (word == "sleep") {
        std::this_thread::sleep_for(std::chrono::milliseconds(count));
    } else if (word == "kill") {
        ::raise(static_cast<int>(count));
    } else if (word == "exit") {
        ::_exit(static_cast<int>(count));
    } else {
        return false;
    }
    return true;
}

void writeArguments(int argc, char* argv[]) {
    std::string text;
    for (int i = 0; i < argc; ++i) text += hex(argv[i]) + '\n';
    writeAll(STDOUT_FILENO, text);
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc > 1 && std::string_view(argv[1]) == "arguments") {
        writeArguments(argc, argv);
        return 0;
    }
    for (int i = 1; i < argc; ++i) {
        if (does(argv[i])) continue;
        if (i + 1 == argc || !does(argv[i], argv[i + 1])) return 64;
        ++i;
    }
    return 0;
}
