// Child.hpp - code that runs in a process of its own, because what it changes cannot be put back.

#ifndef OPTRELLA_TESTS_PLATFORM_CHILD_HPP
#define OPTRELLA_TESTS_PLATFORM_CHILD_HPP

#include <grp.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace Tests {

// What a child's code returns when this machine does not let it set up what is to be tested.
constexpr int notPossibleHere = 77;

// Waits for the child's end and returns its wait status; kills a child that takes too long, which
// then reads as death by SIGKILL.
inline int waited(pid_t child) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point latest = Clock::now() + std::chrono::seconds(10);
    int status = 0;
    while (::waitpid(child, &status, WNOHANG) == 0) {
        if (Clock::now() > latest) ::kill(child, SIGKILL);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return status;
}

// Starts the code in a forked child, which exits with what the code returns. A child that hangs
// ends by itself, whatever happens to the process that waits.
template <class Code>
pid_t started(Code code) {
    const pid_t child = ::fork();
    if (child == 0) {
        const rlimit seconds{10, 10};
        ::setrlimit(RLIMIT_CPU, &seconds);
        ::_exit(code());
    }
    return child;
}

template <class Code>
int statusOf(Code code) {
    return waited(started(code));
}

// The exit code of the code's child; minus the signal when one killed it.
template <class Code>
int exitCodeOf(Code code) {
    const int status = statusOf(code);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

// What a program writes to its standard output, and its exit code; minus the signal when one killed
// it.
struct Told {
    int exitCode;
    std::string output;
};

// Starts the program with these words, the first of which is its name, after the preparation.
template <class Preparation>
Told toldBy(const std::string& program, const std::vector<std::string>& words,
            Preparation prepare) {
    int ends[2];
    if (::pipe(ends) != 0) return {-1, "no pipe"};
    const pid_t child = started([&] {
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[0]);
        ::close(ends[1]);
        prepare();
        std::vector<char*> pointers;
        for (const std::string& word : words) pointers.push_back(const_cast<char*>(word.c_str()));
        pointers.push_back(nullptr);
        ::execv(program.c_str(), pointers.data());
        return 99;
    });
    ::close(ends[1]);
    std::string output;
    char buffer[4096];
    for (ssize_t size = 0; (size = ::read(ends[0], buffer, sizeof buffer)) > 0;) {
        output.append(buffer, static_cast<std::size_t>(size));
    }
    ::close(ends[0]);
    const int status = waited(child);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), output};
}

// Gives up root's rights for good, where the process has them. Returns false when it cannot.
[[nodiscard]] inline bool becomeOrdinaryUser() {
    if (::geteuid() != 0) return true;
    constexpr uid_t nobody = 65534;
    return ::setgroups(0, nullptr) == 0 && ::setgid(nobody) == 0 && ::setuid(nobody) == 0;
}

}  // namespace Tests

#endif
