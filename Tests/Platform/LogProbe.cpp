// A tool that does what its arguments say, word by word, for LogTests.py.
//
//   message TEXT    reports the error
//   many COUNT      reports so many errors
//   bytes COUNT     reports an error of so many bytes
//   timed TEXT      reports the error and prints the milliseconds that it took
//   openlog IDENT   names the tool's own entries
//   syslog TEXT     writes an entry of the tool's own
//   notices         wants entries down to the notice level alone
//   mask            prints which entries are wanted
//   clock SECONDS   sets the time of the library's entries
//   locale          takes over the locale of the environment, and prints its name of the month
//   sockets         prints how many sockets have been made
//   descriptors     prints how many descriptors are open
//   close NUMBER    closes a descriptor

#include <langinfo.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <syslog.h>
#include <unistd.h>

#include <chrono>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iterator>
#include <string>

#include "Optrella/CommandLineExitStatus.hpp"

namespace {

int socketsMade = 0;
std::time_t clockTime = 0;

}  // namespace

// These two replace the C library's functions.

extern "C" int socket(int domain, int type, int protocol) noexcept {
    ++socketsMade;
    return static_cast<int>(::syscall(SYS_socket, domain, type, protocol));
}

extern "C" std::time_t time(std::time_t* result) noexcept {
    std::time_t now = clockTime;
    if (now == 0) {
        now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    }
    if (result != nullptr) *result = now;
    return now;
}

namespace {

using Clock = std::chrono::steady_clock;
using Optrella::outputErrorMessage;
using Optrella::Text;

std::ptrdiff_t descriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                         std::filesystem::directory_iterator());
}

bool does(const std::string& word) {
    if (word == "notices") {
        ::setlogmask(LOG_UPTO(LOG_NOTICE));
    } else if (word == "mask") {
        std::printf("%d\n", ::setlogmask(0));
    } else if (word == "locale") {
        const bool isThere = std::setlocale(LC_ALL, "") != nullptr;
        std::printf("%s\n", isThere ? ::nl_langinfo(ABMON_3) : "none");
    } else if (word == "sockets") {
        std::printf("%d\n", socketsMade);
    } else if (word == "descriptors") {
        std::printf("%td\n", descriptors());
    } else {
        return false;
    }
    return true;
}

bool does(const std::string& word, const char* argument) {
    if (word == "message") {
        outputErrorMessage(argument);
    } else if (word == "many") {
        for (int i = std::atoi(argument); i > 0; --i) outputErrorMessage("again");
    } else if (word == "bytes") {
        outputErrorMessage(std::string(std::strtoul(argument, nullptr, 10), 'x'));
    } else if (word == "timed") {
        const Clock::time_point before = Clock::now();
        outputErrorMessage(argument);
        const std::chrono::duration<double, std::milli> taken = Clock::now() - before;
        std::printf("%f\n", taken.count());
    } else if (word == "openlog") {
        ::openlog(argument, 0, LOG_LOCAL3);
    } else if (word == "syslog") {
        ::syslog(LOG_WARNING, "%s", argument);
    } else if (word == "clock") {
        clockTime = std::atol(argument);
    } else if (word == "close") {
        ::close(std::atoi(argument));
    } else {
        return false;
    }
    return true;
}

}  // namespace

int main(int argc, char* argv[]) {
    for (int i = 1; i < argc; ++i) {
        if (does(argv[i])) continue;
        if (i + 1 == argc || !does(argv[i], argv[i + 1])) return 64;
        ++i;
    }
    return 0;
}
