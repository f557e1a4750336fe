// The worker on Linux, where it is a thread of its own for every piece of work.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iterator>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "Child.hpp"
#include "Optrella/CommandLine.hpp"
#include "Optrella/Elevation/PromptForPassword.hpp"
#include "Optrella/Platform/Worker.hpp"
#include "Support/Capture.hpp"
#include "Support/Death.hpp"
#include "Work.hpp"

namespace {

std::atomic<int> threadsStarted{0};
// No thread with a larger stack can be started.
constexpr std::size_t anyStack = std::numeric_limits<std::size_t>::max();
std::atomic<std::size_t> largestStack{anyStack};
std::atomic<std::size_t> lastStack{0};  // asked for; a cached one that is larger may be taken

using StartThread = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);

}  // namespace

// A sanitizer that is linked into the program has its own, which must be called next.
extern "C" int __attribute__((weak))
__interceptor_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);

// Replaces the C library's function, to count the calls, and to refuse some.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*start)(void*), void* argument) noexcept {
    static const StartThread next =
        __interceptor_pthread_create != nullptr
            ? __interceptor_pthread_create
            : reinterpret_cast<StartThread>(::dlsym(RTLD_NEXT, "pthread_create"));
    std::size_t size = 0;
    if (attributes != nullptr) ::pthread_attr_getstacksize(attributes, &size);
    if (size > largestStack) return EAGAIN;
    lastStack = size;
    ++threadsStarted;
    return next(thread, attributes, start, argument);
}

namespace {

using namespace Optrella;
using namespace std::chrono_literals;
using Tests::go;
using Tests::runOnWorker;
using Tests::TimeLimit;

int ownNice() { return ::getpriority(PRIO_PROCESS, 0); }

std::ptrdiff_t entriesOf(const char* directory) {
    return std::distance(std::filesystem::directory_iterator(directory),
                         std::filesystem::directory_iterator());
}

// A thread that was joined may still be listed for a moment.
bool comesDownTo(std::ptrdiff_t count, const char* directory) {
    for (int attempt = 0; attempt < 10'000; ++attempt) {
        if (entriesOf(directory) == count) return true;
        std::this_thread::sleep_for(1ms);
    }
    return false;
}

// Makes every later start of a thread fail. Returns false where that is not possible.
bool refuseThreads() {
    const rlimit none{0, 0};
    if (!Tests::becomeOrdinaryUser() || ::setrlimit(RLIMIT_NPROC, &none) != 0) return false;
    pthread_t thread;
    const bool isRefused =
        ::pthread_create(
            &thread, nullptr, [](void*) -> void* { return nullptr; }, nullptr) != 0;
    if (!isRefused) ::pthread_join(thread, nullptr);
    return isRefused;
}

bool canRefuseThreads() {
    return Tests::exitCodeOf([] { return refuseThreads() ? 0 : 1; }) == 0;
}

// ---- The thread ----

TEST(LinuxWorker, RunsTheWorkOnceOnOneThread) {
    const int before = threadsStarted;
    int calls = 0;
    EXPECT_TRUE(runOnWorker([&] { ++calls; }));
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(threadsStarted - before, 1);
}

TEST(LinuxWorker, HasANiceValueOfFiveMore) {
    const int own = ownNice();
    int nice = 0;
    EXPECT_TRUE(runOnWorker([&] { nice = ownNice(); }));
    EXPECT_EQ(nice, std::min(own + 5, 19));
    EXPECT_EQ(ownNice(), own);
}

TEST(LinuxWorker, HasTheLowestPriorityAtMost) {
    EXPECT_EQ(Tests::exitCodeOf([] {
                  if (::setpriority(PRIO_PROCESS, 0, std::max(ownNice(), 17)) != 0) return -1;
                  int nice = 0;
                  return runOnWorker([&] { nice = ownNice(); }) ? nice : -1;
              }),
              19);
}

TEST(LinuxWorker, HasANiceValueOfFiveMoreThanANegativeOne) {
    const int code = Tests::exitCodeOf([] {
        if (::setpriority(PRIO_PROCESS, 0, -10) != 0) return Tests::notPossibleHere;
        int nice = 0;
        runOnWorker([&] { nice = ownNice(); });
        return nice == -5 ? 0 : 1;
    });
    if (code == Tests::notPossibleHere) GTEST_SKIP() << "this user may not raise its priority";
    EXPECT_EQ(code, 0);
}

TEST(LinuxWorker, IsNoRealTimeThreadOfARealTimeCaller) {
    const int code = Tests::exitCodeOf([] {
        const sched_param lowest{::sched_get_priority_min(SCHED_FIFO)};
        if (::sched_setscheduler(0, SCHED_FIFO, &lowest) != 0) return Tests::notPossibleHere;
        int policy = -1;
        runOnWorker([&] { policy = ::sched_getscheduler(0); });
        return policy == SCHED_OTHER && ::sched_getscheduler(0) == SCHED_FIFO ? 0 : 1;
    });
    if (code == Tests::notPossibleHere) GTEST_SKIP() << "this user may start no real-time thread";
    EXPECT_EQ(code, 0);
}

TEST(LinuxWorker, KeepsASchedulingPolicyThatTheCallerChose) {
    EXPECT_EQ(Tests::exitCodeOf([] {
                  const sched_param priority{};
                  if (::sched_setscheduler(0, SCHED_BATCH, &priority) != 0) return -1;
                  int policy = -1;
                  return runOnWorker([&] { policy = ::sched_getscheduler(0); }) ? policy : -1;
              }),
              SCHED_BATCH);
}

TEST(LinuxWorker, HasTheSignalMaskOfTheCaller) {
    sigset_t chosen;
    sigset_t before;
    ::sigemptyset(&chosen);
    ::sigaddset(&chosen, SIGUSR1);
    ::sigaddset(&chosen, SIGTERM);
    ::pthread_sigmask(SIG_SETMASK, &chosen, &before);
    sigset_t mask;
    ::sigfillset(&mask);
    const bool hasRun = runOnWorker([&] { ::pthread_sigmask(SIG_SETMASK, nullptr, &mask); });
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    EXPECT_TRUE(hasRun);
    for (int signal = 1; signal < SIGRTMIN; ++signal) {
        EXPECT_EQ(::sigismember(&mask, signal), ::sigismember(&chosen, signal)) << signal;
    }
}

std::size_t sizeOfStack() {
    pthread_attr_t attributes;
    std::size_t size = 0;
    if (::pthread_getattr_np(::pthread_self(), &attributes) != 0) return 0;
    ::pthread_attr_getstacksize(&attributes, &size);
    ::pthread_attr_destroy(&attributes);
    return size;
}

constexpr std::size_t usualStack = std::size_t{8} << 20;

TEST(LinuxWorkersStack, HasEightMegabytesAtLeast) {
    std::size_t size = 0;
    ASSERT_TRUE(runOnWorker([&] { size = sizeOfStack(); }));
    EXPECT_GE(size, usualStack);
}

// The C library reads the limit when a program starts.
int statusWithLimit(const std::string& limit, const std::string& test) {
    const std::string self = std::filesystem::read_symlink("/proc/self/exe");
    const std::string command = "ulimit -S -s " + limit + " && exec '" + self +
                                "' --gtest_filter=LinuxWorkersStack." + test + " >/dev/null";
    return std::system(command.c_str());
}

TEST(LinuxWorkersStack, HasThemWhateverTheLimitOfTheMainThreads) {
    for (const char* limit : {"1024", "8192", "65536"}) {
        EXPECT_EQ(statusWithLimit(limit, "HasEightMegabytesAtLeast"), 0) << limit;
    }
    rlimit most{};
    ::getrlimit(RLIMIT_STACK, &most);
    if (most.rlim_max != RLIM_INFINITY) GTEST_SKIP() << "this user's stacks are limited";
    EXPECT_EQ(statusWithLimit("unlimited", "HasEightMegabytesAtLeast"), 0);
}

TEST(LinuxWorkersStack, IsSmallerWhereTheSystemHasNoRoomForThatMuch) {
    largestStack = usualStack / 4;
    EXPECT_TRUE(runOnWorker([] {}));
    EXPECT_EQ(lastStack, usualStack / 4);
    largestStack = 0;
    bool hasRun = false;
    EXPECT_FALSE(runOnWorker([&] { hasRun = true; }));
    largestStack = anyStack;
    EXPECT_FALSE(hasRun);
}

TEST(LinuxWorker, ReleasesTheCallerOfWorkThatEndsItsThread) {
    const TimeLimit limit;
    bool hasRun = false;
    EXPECT_TRUE(runOnWorker([&] {
        hasRun = true;
        ::pthread_exit(nullptr);
    }));
    EXPECT_TRUE(hasRun);
}

TEST(LinuxWorker, CallsNothingWhereNoThreadCanBeStarted) {
    if (!canRefuseThreads()) GTEST_SKIP() << "this user's number of threads cannot be limited";
    EXPECT_EQ(Tests::exitCodeOf([] {
                  if (!refuseThreads()) return Tests::notPossibleHere;
                  bool isCalled = false;
                  const bool hasRun = runOnWorker([&] { isCalled = true; });
                  return (hasRun ? 1 : 0) + (isCalled ? 2 : 0);
              }),
              0);
}

// ---- Below parse ----

TEST(ParseOnTheLinuxWorker, LeavesNoThreadInTenThousandCalls) {
    const TimeLimit limit;
    int runs = 0;
    const CommandLinePossibility declarations[] = {go([&](const Parameters&) { ++runs; })};
    const std::vector<Text> arguments{"tool", "go"};
    const std::ptrdiff_t threads = entriesOf("/proc/self/task");
    for (int i = 0; i < 10000; ++i) {
        ASSERT_EQ(parse(declarations, arguments), parsingError::NoError) << i;
        ASSERT_EQ(runs, i + 1);
    }
    EXPECT_TRUE(comesDownTo(threads, "/proc/self/task"));
}

TEST(ParseOnTheLinuxWorker, SucceedsWhenTheActionEndsItsThread) {
    const TimeLimit limit;
    EXPECT_EQ(parse({go([](const Parameters&) { ::pthread_exit(nullptr); })}, {"tool", "go"}),
              parsingError::NoError);
}

void parseWithoutThreads() {
    if (!refuseThreads()) ::_exit(Tests::notPossibleHere);
    (void)parse({go([](const Parameters&) { ::puts("called"); })}, {"tool", "go"});
}

TEST(ParseOnTheLinuxWorker, StopsSilentlyWhereNoThreadCanBeStarted) {
    if (!canRefuseThreads()) GTEST_SKIP() << "this user's number of threads cannot be limited";
    EXPECT_SILENT_STOP(parseWithoutThreads());
}

// ---- No worker in vain ----

struct Case {
    const char* name;
    std::vector<CommandLinePossibility> declarations;
    std::vector<Text> arguments;
    parsingError result;
    int threads;
};

CommandLinePossibility sorted() {
    const ParameterList order{{"--sort"}, {ParameterNone{{"name"}, ""}}, "order", ""};
    return {false, {order}, {}, "", false, [](const Parameters&) {}};
}

TEST(ParseOnTheLinuxWorker, StartsAThreadForAValidatedFitAlone) {
    const auto nothing = [](const Parameters&) {};
    const Case cases[] = {
        {"no arguments", {go(nothing)}, {"tool"}, parsingError::NoCommandLine, 0},
        {"no declaration", {}, {"tool", "go"}, parsingError::NoMatchingLine, 0},
        {"no fit", {go(nothing)}, {"tool", "stay"}, parsingError::NoMatchingLine, 0},
        {"two fits", {go(nothing), go(nothing)}, {"tool", "go"}, parsingError::NoMatchingLine, 0},
        {"value missing", {sorted()}, {"tool", "--sort"}, parsingError::NoMatchingLine, 0},
        {"value refused", {sorted()}, {"tool", "--sort", "size"}, parsingError::NoMatchingLine, 0},
        {"value accepted", {sorted()}, {"tool", "--sort", "name"}, parsingError::NoError, 1},
        {"a fit", {go(nothing)}, {"tool", "go"}, parsingError::NoError, 1},
    };
    for (const Case& each : cases) {
        const int before = threadsStarted;
        parsingError result{};
        (void)Tests::capture([&] { result = parse(each.declarations, each.arguments); });
        EXPECT_EQ(result, each.result) << each.name;
        EXPECT_EQ(threadsStarted - before, each.threads) << each.name;
    }
}

TEST(ParseOnTheLinuxWorker, StartsNoThreadForAUserWithoutTheNeededRights) {
    const int code = Tests::exitCodeOf([] {
        if (!Tests::becomeOrdinaryUser() || ::getuid() == 0) return Tests::notPossibleHere;
        // Who is in root's group, or may be asked for a password, does not serve as an example.
        if (PromptForPassword::validateGroupMembership(0)) return Tests::notPossibleHere;
        if (PromptForPassword::validateGroupMembership(80)) return Tests::notPossibleHere;
        const int before = threadsStarted;
        bool isCalled = false;
        const CommandLinePossibility declarations[] = {
            {true, {ParameterNone{{"go"}, ""}}, {}, "", false, [&](const Parameters&) {
                 isCalled = true;
             }}};
        parsingError result{};
        const Tests::Output output = Tests::capture([&] {
            result = parse(declarations, {"tool", "go"});
        });
        const char* refusal = "Requested command line must be run as root. Try using sudo.\n";
        return (result == parsingError::NoMatchingLine ? 0 : 1) + (isCalled ? 2 : 0) +
               (threadsStarted - before == 0 ? 0 : 4) + (output.standardOutput == refusal ? 0 : 8);
    });
    if (code == Tests::notPossibleHere) GTEST_SKIP() << "no user without root's group here";
    EXPECT_EQ(code, 0);
}

}  // namespace
