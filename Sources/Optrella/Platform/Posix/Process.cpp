#include "Optrella/Platform/Process.hpp"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace Optrella::Platform {

namespace {

sigset_t maskOfStart;

// Before the tool can change it.
[[gnu::constructor(101)]] void keepMask() { ::pthread_sigmask(SIG_SETMASK, nullptr, &maskOfStart); }

}  // namespace

std::optional<std::string> takeVariable(const char* name) {
    const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe)
    if (value == nullptr) return std::nullopt;
    std::string taken = value;
    ::unsetenv(name);  // NOLINT(concurrency-mt-unsafe)
    return taken;
}

bool hasRightsOfRoot() noexcept { return ::geteuid() == 0; }

int replaceProcess(const char* program, std::span<const std::string> arguments) {
    std::vector<char*> words;
    for (const std::string& argument : arguments) {
        // It would end there for the other program.
        if (argument.find('\0') != std::string::npos) return EINVAL;
        words.push_back(const_cast<char*>(argument.c_str()));
    }
    words.push_back(nullptr);
    static_cast<void>(std::fflush(stdout));
    sigset_t mask;
    ::pthread_sigmask(SIG_SETMASK, &maskOfStart, &mask);
    ::execve(program, words.data(), environment());
    const int error = errno;
    ::pthread_sigmask(SIG_SETMASK, &mask, nullptr);
    return error;
}

}  // namespace Optrella::Platform
