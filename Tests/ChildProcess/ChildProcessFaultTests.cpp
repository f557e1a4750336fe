// What happens when calls to the system fail or come at the worst moment. The linker sends the
// calls that the library makes here first (--wrap).

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdarg>
#include <functional>
#include <mutex>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include "Optrella/Platform/ChildProcess.hpp"
#include "Secret.hpp"
#include "Traces.hpp"

namespace {

using namespace std::chrono_literals;

// Which calls fail, and what has been called.
class Calls {
public:
    // Makes `times` calls of the function fail, from the call with the number `first` on.
    void fail(std::string function, int error, int first, int times) {
        const std::lock_guard lock(mutex_);
        function_ = std::move(function);
        error_ = error;
        first_ = first;
        times_ = times;
        count_ = 0;
    }
    void start() {
        const std::lock_guard lock(mutex_);
        made_.clear();
        isOn_ = true;
    }
    // Returns the calls since start().
    std::vector<std::string> stop() {
        const std::lock_guard lock(mutex_);
        isOn_ = false;
        return made_;
    }
    [[nodiscard]] bool hasFailedSome() {
        const std::lock_guard lock(mutex_);
        return count_ >= first_;
    }
    // The error that the call of the function is to fail with; 0 when it is to be made.
    int errorOf(const char* function) {
        const std::lock_guard lock(mutex_);
        if (!isOn_) return 0;
        made_.emplace_back(function);
        if (function_ != function) return 0;
        ++count_;
        return count_ >= first_ && count_ - first_ < times_ ? error_ : 0;
    }

private:
    std::mutex mutex_;
    bool isOn_ = false;
    std::vector<std::string> made_;
    std::string function_;
    int error_ = 0;
    int first_ = 1;
    int times_ = 0;
    int count_ = 0;
} calls;

// What is done before a call is made.
std::function<void(size_t)> beforeWrite;
std::function<void()> beforeWait;
std::function<void()> beforePoll;
std::function<void(int[2])> afterPipe;
std::atomic<bool> hasChildEnded{false};

// For the functions that set errno, and for those that return the error.
template <class Call>
auto callOr(const char* function, Call call) -> decltype(call()) {
    const int error = calls.errorOf(function);
    if (error == 0) return call();
    errno = error;
    return -1;
}
template <class Call>
int callOrReturn(const char* function, Call call) {
    const int error = calls.errorOf(function);
    return error == 0 ? call() : error;
}

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the linker wants these names.
extern "C" {

int __real_pipe2(int ends[2], int flags);
int __wrap_pipe2(int ends[2], int flags) {
    const int result = callOr("pipe", [&] { return __real_pipe2(ends, flags); });
    if (result == 0 && afterPipe) afterPipe(ends);
    return result;
}

int __real_fcntl(int descriptor, int command, ...);
int __wrap_fcntl(int descriptor, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    const long argument = va_arg(arguments, long);
    va_end(arguments);
    return callOr("fcntl", [&] { return __real_fcntl(descriptor, command, argument); });
}

ssize_t __real_write(int descriptor, const void* bytes, size_t size);
ssize_t __wrap_write(int descriptor, const void* bytes, size_t size) {
    if (beforeWrite) beforeWrite(size);
    return callOr("write", [&] { return __real_write(descriptor, bytes, size); });
}

ssize_t __real_read(int descriptor, void* bytes, size_t size);
ssize_t __wrap_read(int descriptor, void* bytes, size_t size) {
    return callOr("read", [&] { return __real_read(descriptor, bytes, size); });
}

int __real_poll(pollfd* descriptors, nfds_t count, int timeout);
int __wrap_poll(pollfd* descriptors, nfds_t count, int timeout) {
    if (beforePoll) beforePoll();
    return callOr("poll", [&] { return __real_poll(descriptors, count, timeout); });
}

int __real_ioctl(int descriptor, unsigned long request, void* argument);
int __wrap_ioctl(int descriptor, unsigned long request, void* argument) {
    return callOr("ioctl", [&] { return __real_ioctl(descriptor, request, argument); });
}

pid_t __real_waitpid(pid_t child, int* status, int options);
pid_t __wrap_waitpid(pid_t child, int* status, int options) {
    if (beforeWait) beforeWait();
    const pid_t result = callOr("waitpid", [&] { return __real_waitpid(child, status, options); });
    // The tests themselves wait for any child.
    if (child > 0) hasChildEnded = true;
    return result;
}

int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*function)(void*), void* argument);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*function)(void*), void* argument) {
    return callOrReturn("pthread_create", [&] {
        return __real_pthread_create(thread, attributes, function, argument);
    });
}

int __real_posix_spawn(pid_t* child, const char* program, const posix_spawn_file_actions_t* actions,
                       const posix_spawnattr_t* attributes, char* const* arguments,
                       char* const* environment);
int __wrap_posix_spawn(pid_t* child, const char* program, const posix_spawn_file_actions_t* actions,
                       const posix_spawnattr_t* attributes, char* const* arguments,
                       char* const* environment) {
    return callOrReturn("posix_spawn", [&] {
        return __real_posix_spawn(child, program, actions, attributes, arguments, environment);
    });
}

int __real_posix_spawn_file_actions_init(posix_spawn_file_actions_t* actions);
int __wrap_posix_spawn_file_actions_init(posix_spawn_file_actions_t* actions) {
    return callOrReturn("posix_spawn_file_actions_init",
                        [&] { return __real_posix_spawn_file_actions_init(actions); });
}

int __real_posix_spawn_file_actions_adddup2(posix_spawn_file_actions_t* actions, int from, int to);
int __wrap_posix_spawn_file_actions_adddup2(posix_spawn_file_actions_t* actions, int from, int to) {
    return callOrReturn("posix_spawn_file_actions_adddup2",
                        [&] { return __real_posix_spawn_file_actions_adddup2(actions, from, to); });
}

int __real_posix_spawnattr_init(posix_spawnattr_t* attributes);
int __wrap_posix_spawnattr_init(posix_spawnattr_t* attributes) {
    return callOrReturn("posix_spawnattr_init",
                        [&] { return __real_posix_spawnattr_init(attributes); });
}

int __real_posix_spawnattr_setflags(posix_spawnattr_t* attributes, short flags);
int __wrap_posix_spawnattr_setflags(posix_spawnattr_t* attributes, short flags) {
    return callOrReturn("posix_spawnattr_setflags",
                        [&] { return __real_posix_spawnattr_setflags(attributes, flags); });
}

int __real_posix_spawnattr_setsigmask(posix_spawnattr_t* attributes, const sigset_t* signals);
int __wrap_posix_spawnattr_setsigmask(posix_spawnattr_t* attributes, const sigset_t* signals) {
    return callOrReturn("posix_spawnattr_setsigmask",
                        [&] { return __real_posix_spawnattr_setsigmask(attributes, signals); });
}

int __real_posix_spawnattr_setsigdefault(posix_spawnattr_t* attributes, const sigset_t* signals);
int __wrap_posix_spawnattr_setsigdefault(posix_spawnattr_t* attributes, const sigset_t* signals) {
    return callOrReturn("posix_spawnattr_setsigdefault",
                        [&] { return __real_posix_spawnattr_setsigdefault(attributes, signals); });
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

using namespace Optrella::Platform;

const std::string probe = Tests::programBeside("child-probe");
constexpr int always = 1'000'000;

class ChildProcessFaults : public testing::Test {
protected:
    struct Outcome {
        bool isStarted = false;
        std::vector<std::string> blocks;
        std::string output;  // all of them
        std::vector<std::string> calls;
    };

    void SetUp() override {
        hasChildEnded = false;
        ASSERT_FALSE(Tests::hasChildren());
        ASSERT_TRUE(Tests::hasUsualThreads());
    }
    void TearDown() override {
        calls.fail("", 0, 1, 0);
        beforeWrite = nullptr;
        beforeWait = nullptr;
        beforePoll = nullptr;
        afterPipe = nullptr;
    }

    static Outcome run(const std::vector<std::string>& arguments,
                       Password input = Tests::secret()) {
        Outcome outcome;
        const auto keep = [](void* blocks, std::string_view block) {
            static_cast<std::vector<std::string>*>(blocks)->emplace_back(block);
        };
        calls.start();
        outcome.isStarted =
            runChild(probe.c_str(), arguments, std::move(input), {keep, &outcome.blocks});
        outcome.calls = calls.stop();
        for (const std::string& each : outcome.blocks) outcome.output += each;
        return outcome;
    }

    // As before, but for a child that could not be waited for.
    void expectNothingLeft() {
        EXPECT_EQ(Tests::descriptors(), descriptors_);
        EXPECT_TRUE(Tests::hasUsualThreads());
        EXPECT_EQ(Tests::secretsInMemory(), 0);
    }

    // Each call of the function in its turn fails, then all do.
    template <class Check>
    void expectOfEachFailure(const char* function, int error, Check check) {
        SCOPED_TRACE(function);
        int failures = 0;
        for (int first = 1;; ++first) {
            SCOPED_TRACE(first);
            calls.fail(function, error, first, 1);
            const Outcome outcome = run({"input", "fill", "200000"});
            if (!calls.hasFailedSome()) break;
            ++failures;
            check(outcome);
            expectNothingLeft();
            // Reading and polling go on as long as there is output.
            if (failures == 8) break;
        }
        EXPECT_GT(failures, 0);
        calls.fail(function, error, 1, always);
        check(run({"input", "fill", "200000"}));
        expectNothingLeft();
    }

private:
    const std::vector<int> descriptors_ = Tests::descriptors();
};

const std::string wholeOutput = Tests::secretInHex() + '\n' + std::string(200'000, 'x');

TEST_F(ChildProcessFaults, BeforeTheLaunchReadAsNoLaunch) {
    const std::pair<const char*, int> functions[] = {
        {"pipe", EMFILE},
        {"pthread_create", EAGAIN},
        {"posix_spawn_file_actions_init", ENOMEM},
        {"posix_spawn_file_actions_adddup2", ENOMEM},
        {"posix_spawnattr_init", ENOMEM},
        {"posix_spawnattr_setflags", EINVAL},
        {"posix_spawnattr_setsigmask", EINVAL},
        {"posix_spawnattr_setsigdefault", EINVAL},
        {"posix_spawn", ENOMEM},
    };
    for (const auto& [function, error] : functions) {
        expectOfEachFailure(function, error, [](const Outcome& outcome) {
            EXPECT_FALSE(outcome.isStarted);
            EXPECT_EQ(outcome.output, "");
            EXPECT_FALSE(Tests::hasChildren());
        });
    }
}

TEST_F(ChildProcessFaults, OfMovingADescriptorReadAsNoLaunch) {
    // Three pipes have six ends.
    for (int first = 1; first <= 6; ++first) {
        calls.fail("fcntl", EMFILE, first, 1);
        const Outcome outcome = run({"input"});
        EXPECT_FALSE(outcome.isStarted) << first;
        EXPECT_EQ(outcome.output, "") << first;
        EXPECT_FALSE(Tests::hasChildren());
        expectNothingLeft();
    }
    calls.fail("fcntl", EMFILE, 1, always);
    EXPECT_FALSE(run({"input"}).isStarted);
    expectNothingLeft();
}

TEST_F(ChildProcessFaults, OfReadingEndTheOutputAndNotTheChildsLife) {
    for (const auto& [function, error] : {std::pair("read", EIO), std::pair("poll", ENOMEM)}) {
        expectOfEachFailure(function, error, [](const Outcome& outcome) {
            EXPECT_TRUE(outcome.isStarted);
            EXPECT_TRUE(wholeOutput.starts_with(outcome.output));
            EXPECT_FALSE(Tests::hasChildren());
        });
    }
}

TEST_F(ChildProcessFaults, OfMeasuringThePipeLoseOnlyWhatStandsInIt) {
    calls.fail("ioctl", EIO, 1, always);
    const Outcome outcome = run({"input", "fill", "200000"});
    EXPECT_TRUE(outcome.isStarted);
    EXPECT_TRUE(wholeOutput.starts_with(outcome.output));
    expectNothingLeft();
}

TEST_F(ChildProcessFaults, OfWritingAreIgnored) {
    for (const int error : {EPIPE, EIO, EAGAIN}) {
        expectOfEachFailure("write", error, [](const Outcome& outcome) {
            EXPECT_TRUE(outcome.isStarted);
            // The input has come or not; the other write only wakes the reader.
            if (outcome.output != wholeOutput) {
                EXPECT_TRUE(outcome.output == '\n' + std::string(200'000, 'x'));
            }
            EXPECT_FALSE(Tests::hasChildren());
        });
    }
}

TEST_F(ChildProcessFaults, OfWritingDoNotKeepTheReaderFromBeingTold) {
    calls.fail("write", EIO, 1, always);
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(run({"heir", "fill", "3"}).output, "xxx");
    EXPECT_LT(std::chrono::steady_clock::now() - before, 1s);
    expectNothingLeft();
}

TEST_F(ChildProcessFaults, OfWaitingReadAsTheEnd) {
    for (const int error : {ECHILD, EINVAL}) {
        expectOfEachFailure("waitpid", error, [](const Outcome& outcome) {
            EXPECT_TRUE(outcome.isStarted);
            EXPECT_TRUE(wholeOutput.starts_with(outcome.output));
            // Nobody has waited for it, so it is still there; it must not hang.
            EXPECT_TRUE(Tests::hasChildren());
        });
    }
}

TEST_F(ChildProcessFaults, OfInterruptionChangeNothing) {
    for (const char* function : {"read", "poll", "write", "waitpid"}) {
        SCOPED_TRACE(function);
        calls.fail(function, EINTR, 1, 3);
        const Outcome outcome = run({"input", "fill", "200000"});
        EXPECT_TRUE(calls.hasFailedSome());
        EXPECT_TRUE(outcome.isStarted);
        EXPECT_TRUE(outcome.output == wholeOutput);
        EXPECT_FALSE(Tests::hasChildren());
        expectNothingLeft();
    }
}

// ---- Order and moments ----

TEST_F(ChildProcessFaults, DoNotOccurInTheUsualOrder) {
    std::vector<std::string> order = run({"exit", "0"}).calls;
    // These are the reader's, at moments of its own.
    std::erase_if(order, [](const std::string& each) {
        return each == "poll" || each == "read" || each == "ioctl";
    });
    const std::vector<std::string> expected{"pipe",
                                            "fcntl",
                                            "fcntl",
                                            "pipe",
                                            "fcntl",
                                            "fcntl",
                                            "pipe",
                                            "fcntl",
                                            "fcntl",
                                            "pthread_create",
                                            "posix_spawn_file_actions_init",
                                            "posix_spawnattr_init",
                                            "posix_spawn_file_actions_adddup2",
                                            "posix_spawn_file_actions_adddup2",
                                            "posix_spawn_file_actions_adddup2",
                                            "posix_spawnattr_setsigmask",
                                            "posix_spawnattr_setsigdefault",
                                            "posix_spawnattr_setflags",
                                            "posix_spawn",
                                            "fcntl",
                                            "write",
                                            "waitpid",
                                            "write"};
    EXPECT_EQ(order, expected);
}

TEST_F(ChildProcessFaults, DoNotSplitTheInput) {
    std::vector<std::size_t> sizes;
    beforeWrite = [&](std::size_t size) {
        if (!hasChildEnded) sizes.push_back(size);
    };
    Password input;
    ASSERT_TRUE(input.append(std::string(Password::capacity, 'p')));
    EXPECT_TRUE(run({"input"}, std::move(input)).isStarted);
    EXPECT_EQ(sizes, std::vector<std::size_t>{Password::capacity});
}

TEST_F(ChildProcessFaults, DoNotLeaveTheInputInMemoryWhileTheChildRuns) {
    int found = -1;
    beforeWait = [&] { found = Tests::secretsInMemory(); };
    EXPECT_TRUE(run({"input"}).isStarted);
    EXPECT_EQ(found, 0);
}

TEST_F(ChildProcessFaults, DoNotComeOfAChildThatHasEndedBeforeItsInputIsWritten) {
    ::signal(SIGPIPE, SIG_DFL);
    beforeWrite = [](std::size_t) {
        siginfo_t info;
        if (!hasChildEnded) ::waitid(P_ALL, 0, &info, WEXITED | WNOWAIT);
    };
    const Outcome outcome = run({"fill", "3"});
    EXPECT_TRUE(outcome.isStarted);
    EXPECT_EQ(outcome.output, "xxx");
    expectNothingLeft();
}

TEST_F(ChildProcessFaults, DoNotComeOfAPipeTooSmallForTheInput) {
    afterPipe = [](int ends[2]) { ::fcntl(ends[1], F_SETPIPE_SZ, 4096); };
    Password input;
    ASSERT_TRUE(input.append(std::string(Password::capacity, 'p')));
    const Outcome outcome = run({"abandon", "sleep", "50"}, std::move(input));
    EXPECT_TRUE(outcome.isStarted);
    EXPECT_EQ(outcome.output, "");
    expectNothingLeft();
}

TEST_F(ChildProcessFaults, DoNotComeOfAReaderThatFindsTheChildEnded) {
    // All of the output stands in the pipe, and the reader has been told, when it first looks.
    beforePoll = [] {
        while (!hasChildEnded) std::this_thread::sleep_for(1ms);
        std::this_thread::sleep_for(5ms);
    };
    for (int i = 0; i < 5; ++i) {
        hasChildEnded = false;
        const Outcome outcome = run({"fill", "65536"});
        EXPECT_TRUE(outcome.isStarted);
        ASSERT_EQ(outcome.blocks.size(), 1u);
        EXPECT_TRUE(outcome.output == std::string(65536, 'x')) << outcome.output.size();
        expectNothingLeft();
    }
}

TEST_F(ChildProcessFaults, DoNotComeOfAReaderThatIsToldAtOnce) {
    // An heir keeps the pipe from ending, so the reader learns of the end by being told.
    beforePoll = [] {
        while (!hasChildEnded) std::this_thread::sleep_for(1ms);
    };
    for (int i = 0; i < 20; ++i) {
        hasChildEnded = false;
        const Outcome outcome = run({"heir", "fill", "1000"});
        EXPECT_TRUE(outcome.isStarted);
        EXPECT_EQ(outcome.output, std::string(1000, 'x'));
    }
    expectNothingLeft();
}

}  // namespace
