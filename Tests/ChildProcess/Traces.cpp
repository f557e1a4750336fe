#include "Traces.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <thread>

namespace Tests {

namespace {

using namespace std::chrono_literals;

// Whoever started the tests may ignore SIGCHLD; then no end of a child would be seen.
class SeenChildren : public testing::Environment {
    void SetUp() override { ::signal(SIGCHLD, SIG_DFL); }
};
const testing::Environment* const seenChildren =
    testing::AddGlobalTestEnvironment(new SeenChildren);

}  // namespace

std::string programBeside(const char* name) {
    const std::string self = ownPath();
    return self.substr(0, self.rfind('/') + 1) + name;
}

std::vector<int> descriptors() {
    constexpr int most = 4096;  // more than any test opens
    std::vector<int> numbers;
    for (int number = 0; number < most; ++number) {
        if (::fcntl(number, F_GETFD) >= 0) numbers.push_back(number);
    }
    return numbers;
}

std::vector<int> inheritableDescriptors() {
    std::vector<int> numbers = descriptors();
    std::erase_if(numbers, [](int each) { return (::fcntl(each, F_GETFD) & FD_CLOEXEC) != 0; });
    return numbers;
}

bool hasUsualThreads() {
    static const std::size_t usual = [] {
        // With the first thread comes a sanitizer's own.
        std::thread([] {}).join();
        std::this_thread::sleep_for(20ms);
        return countThreads();
    }();
    for (int i = 0; i < 1000; ++i) {
        if (countThreads() == usual) return true;
        std::this_thread::sleep_for(1ms);
    }
    return false;
}

bool hasChildren() {
    bool hasSome = false;
    while (::waitpid(-1, nullptr, 0) > 0 || errno == EINTR) hasSome = true;
    return hasSome;
}

}  // namespace Tests
