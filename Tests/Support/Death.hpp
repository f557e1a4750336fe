// Death.hpp - misuse stops the process at once and without a word.

#ifndef OPTRELLA_TESTS_SUPPORT_DEATH_HPP
#define OPTRELLA_TESTS_SUPPORT_DEATH_HPP

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

namespace Tests {

// The signal of a trap instruction: SIGILL on x86, SIGTRAP on ARM.
inline bool isTrap(int status) {
    return testing::KilledBySignal(SIGILL)(status) || testing::KilledBySignal(SIGTRAP)(status);
}

// Sends what goes to standard output to standard error, at once.
inline void joinStreams() {
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
}

}  // namespace Tests

// Passes when the statement ends the process by a trap and neither stream has got a byte.
#define EXPECT_SILENT_STOP(...)             \
    EXPECT_EXIT(                            \
        {                                   \
            ::Tests::joinStreams();         \
            static_cast<void>(__VA_ARGS__); \
        },                                  \
        ::Tests::isTrap, testing::Eq(""))

#endif
