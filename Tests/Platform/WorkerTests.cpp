// The worker on the real system, alone and beneath parse.

#include "Optrella/Platform/Worker.hpp"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/time.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iterator>
#include <numeric>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "Child.hpp"
#include "Optrella/CommandLine.hpp"
#include "Optrella/PromptForPassword.hpp"
#include "Support/Capture.hpp"
#include "Support/Death.hpp"

namespace {

std::atomic<int> threadsStarted{0};

using StartThread = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);

}  // namespace

// A sanitizer that is linked into the program has its own, which must be the next in line.
extern "C" int __attribute__((weak))
__interceptor_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);

// Stands before the C library's own, to count.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*start)(void*), void* argument) noexcept {
    static const StartThread next =
        __interceptor_pthread_create != nullptr
            ? __interceptor_pthread_create
            : reinterpret_cast<StartThread>(::dlsym(RTLD_NEXT, "pthread_create"));
    ++threadsStarted;
    return next(thread, attributes, start, argument);
}

namespace {

using namespace Optrella;
using Platform::runOnWorker;
using namespace std::chrono_literals;

// Kills the whole test program when the time is over: a wake-up that was lost never comes.
class TimeLimit {
public:
    explicit TimeLimit(unsigned seconds) { ::alarm(seconds); }
    TimeLimit(const TimeLimit&) = delete;
    TimeLimit& operator=(const TimeLimit&) = delete;
    ~TimeLimit() { ::alarm(0); }
};

bool runOnWorker(std::function<void()> work) {
    return runOnWorker([](void* context) { (*static_cast<std::function<void()>*>(context))(); },
                       &work);
}

int ownNice() { return ::getpriority(PRIO_PROCESS, 0); }

CommandLinePossibility go(Internal::Action action) {
    return {false, {ParameterNone{{"go"}, ""}}, {}, "", false, std::move(action)};
}

std::ptrdiff_t entriesOf(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder),
                         std::filesystem::directory_iterator());
}

// A thread that was joined may still be listed for a moment.
bool comesDownTo(std::ptrdiff_t count, const char* folder) {
    for (int attempt = 0; attempt < 1000; ++attempt) {
        if (entriesOf(folder) == count) return true;
        std::this_thread::sleep_for(1ms);
    }
    return false;
}

// Makes every further start of a thread fail. False where that cannot be had.
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

TEST(Worker, RunsTheWorkOnAnotherThread) {
    const pthread_t caller = ::pthread_self();
    bool isCaller = true;
    EXPECT_TRUE(runOnWorker([&] { isCaller = ::pthread_equal(caller, ::pthread_self()) != 0; }));
    EXPECT_FALSE(isCaller);
}

TEST(Worker, RunsTheWorkOnceOnOneThread) {
    const int before = threadsStarted;
    int calls = 0;
    EXPECT_TRUE(runOnWorker([&] { ++calls; }));
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(threadsStarted - before, 1);
}

TEST(Worker, HasANiceValueOfFiveMore) {
    const int own = ownNice();
    int nice = 0;
    EXPECT_TRUE(runOnWorker([&] { nice = ownNice(); }));
    EXPECT_EQ(nice, std::min(own + 5, 19));
    EXPECT_EQ(ownNice(), own);
}

TEST(Worker, HasTheLowestPriorityAtMost) {
    EXPECT_EQ(Tests::exitCodeOf([] {
                  if (::setpriority(PRIO_PROCESS, 0, std::max(ownNice(), 17)) != 0) return -1;
                  int nice = 0;
                  return runOnWorker([&] { nice = ownNice(); }) ? nice : -1;
              }),
              19);
}

TEST(Worker, KeepsTheSchedulingPolicyOfTheCaller) {
    int policy = -1;
    EXPECT_TRUE(runOnWorker([&] { policy = ::sched_getscheduler(0); }));
    EXPECT_EQ(policy, ::sched_getscheduler(0));
}

TEST(Worker, KeepsASchedulingPolicyThatTheCallerChose) {
    EXPECT_EQ(Tests::exitCodeOf([] {
                  const sched_param priority{};
                  if (::sched_setscheduler(0, SCHED_BATCH, &priority) != 0) return -1;
                  int policy = -1;
                  return runOnWorker([&] { policy = ::sched_getscheduler(0); }) ? policy : -1;
              }),
              SCHED_BATCH);
}

TEST(Worker, HasTheSignalMaskOfTheCaller) {
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

// ---- The wait ----

TEST(Worker, ReturnsOnlyWhenTheWorkHasEnded) {
    std::atomic<bool> hasEnded = false;
    EXPECT_TRUE(runOnWorker([&] {
        std::this_thread::sleep_for(50ms);
        hasEnded = true;
    }));
    EXPECT_TRUE(hasEnded);
}

TEST(Worker, LeavesWhatTheWorkWroteToBeRead) {
    std::vector<int> numbers(100000);
    EXPECT_TRUE(runOnWorker([&] { std::iota(numbers.begin(), numbers.end(), 0); }));
    std::vector<int> expected(100000);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(numbers, expected);
}

TEST(Worker, WorksWithinWork) {
    const TimeLimit limit(10);
    std::vector<int> depths;
    const std::function<bool(int)> descend = [&](int depth) {
        return depth > 10 || runOnWorker([&, depth] {
                   depths.push_back(depth);
                   EXPECT_TRUE(descend(depth + 1));
                   depths.push_back(-depth);
               });
    };
    EXPECT_TRUE(descend(1));
    EXPECT_EQ(depths, (std::vector<int>{1,   2,  3,  4,  5,  6,  7,  8,  9,  10,
                                        -10, -9, -8, -7, -6, -5, -4, -3, -2, -1}));
}

TEST(Worker, WorksOnEightThreadsAtOnce) {
    const TimeLimit limit(10);
    std::vector<int> runs(8);
    std::vector<std::thread> callers;
    for (int& count : runs) {
        callers.emplace_back([&count] {
            for (int i = 0; i < 100; ++i) {
                if (!runOnWorker([&count] { ++count; })) return;
            }
        });
    }
    for (std::thread& caller : callers) caller.join();
    EXPECT_EQ(runs, std::vector<int>(8, 100));
}

std::atomic<int> interruptions{0};
pthread_t interrupted;

extern "C" void countInterruption(int) {
    if (::pthread_equal(::pthread_self(), interrupted) != 0) ++interruptions;
}

TEST(Worker, WaitsOnThroughSignals) {
    const TimeLimit limit(10);
    interrupted = ::pthread_self();
    interruptions = 0;
    struct sigaction action {};
    struct sigaction before;
    action.sa_handler = countInterruption;  // without SA_RESTART: ends what can be ended
    ::sigaction(SIGVTALRM, &action, &before);

    bool hasEnded = false;
    EXPECT_TRUE(runOnWorker([&] {
        // All of them strike the thread that waits.
        while (interruptions < 100) {
            ::pthread_kill(interrupted, SIGVTALRM);
            std::this_thread::sleep_for(100us);
        }
        std::this_thread::sleep_for(1ms);
        hasEnded = true;
    }));
    EXPECT_TRUE(hasEnded);
    EXPECT_GE(interruptions, 100);
    ::sigaction(SIGVTALRM, &before, nullptr);
}

TEST(Worker, WaitsOnThroughATimerThatNeverRests) {
    EXPECT_EQ(Tests::exitCodeOf([] {
                  interrupted = ::pthread_self();
                  interruptions = 0;
                  struct sigaction action {};
                  action.sa_handler = countInterruption;
                  ::sigaction(SIGALRM, &action, nullptr);
                  const itimerval everyMillisecond{{0, 1000}, {0, 1000}};
                  ::setitimer(ITIMER_REAL, &everyMillisecond, nullptr);
                  bool hasEnded = false;
                  const bool hasRun = runOnWorker([&] {
                      sigset_t alarm;
                      ::sigemptyset(&alarm);
                      ::sigaddset(&alarm, SIGALRM);
                      ::pthread_sigmask(SIG_BLOCK, &alarm, nullptr);  // the caller gets them all
                      while (interruptions < 50) std::this_thread::sleep_for(1ms);
                      hasEnded = true;
                  });
                  return hasRun && hasEnded ? 0 : 1;
              }),
              0);
}

TEST(Worker, ReleasesTheCallerOfWorkThatEndsItsThread) {
    const TimeLimit limit(10);
    bool hasRun = false;
    EXPECT_TRUE(runOnWorker([&] {
        hasRun = true;
        ::pthread_exit(nullptr);
    }));
    EXPECT_TRUE(hasRun);
}

TEST(Worker, CallsNothingWhereNoThreadCanBeStarted) {
    if (!canRefuseThreads()) GTEST_SKIP() << "this user's number of threads cannot be limited";
    EXPECT_EQ(Tests::exitCodeOf([] {
                  if (!refuseThreads()) return Tests::notPossibleHere;
                  bool isCalled = false;
                  const bool hasRun = runOnWorker([&] { isCalled = true; });
                  return (hasRun ? 1 : 0) + (isCalled ? 2 : 0);
              }),
              0);
}

// ---- Beneath parse ----

TEST(ParseOnTheWorker, LeavesNothingBehindInTenThousandCalls) {
    const TimeLimit limit(60);
    int runs = 0;
    const CommandLinePossibility declarations[] = {go([&](const Parameters&) { ++runs; })};
    const std::vector<Text> arguments{"tool", "go"};
    const std::ptrdiff_t threads = entriesOf("/proc/self/task");
    const std::ptrdiff_t descriptors = entriesOf("/proc/self/fd");
    for (int i = 0; i < 10000; ++i) {
        ASSERT_EQ(parse(declarations, arguments), parsingError::NoError) << i;
        ASSERT_EQ(runs, i + 1);
    }
    EXPECT_TRUE(comesDownTo(threads, "/proc/self/task"));
    EXPECT_EQ(entriesOf("/proc/self/fd"), descriptors);
}

TEST(ParseOnTheWorker, WorksWithinAnAction) {
    const TimeLimit limit(10);
    std::vector<parsingError> results;
    int depth = 0;
    std::vector<CommandLinePossibility> declarations;
    declarations.push_back(go([&](const Parameters&) {
        if (++depth < 10) results.push_back(parse(declarations, {"tool", "go"}));
    }));
    EXPECT_EQ(parse(declarations, {"tool", "go"}), parsingError::NoError);
    EXPECT_EQ(depth, 10);
    EXPECT_EQ(results, std::vector<parsingError>(9, parsingError::NoError));
}

TEST(ParseOnTheWorker, WorksOnEightThreadsAtOnce) {
    const TimeLimit limit(10);
    std::atomic<int> runs = 0;
    std::atomic<int> successes = 0;
    const CommandLinePossibility declarations[] = {go([&](const Parameters&) { ++runs; })};
    std::vector<std::thread> callers;
    for (int i = 0; i < 8; ++i) {
        callers.emplace_back([&] {
            for (int call = 0; call < 50; ++call) {
                if (parse(declarations, {"tool", "go"}) == parsingError::NoError) ++successes;
            }
        });
    }
    for (std::thread& caller : callers) caller.join();
    EXPECT_EQ(runs, 400);
    EXPECT_EQ(successes, 400);
}

TEST(ParseOnTheWorker, SucceedsWhenTheActionEndsItsThread) {
    const TimeLimit limit(10);
    EXPECT_EQ(parse({go([](const Parameters&) { ::pthread_exit(nullptr); })}, {"tool", "go"}),
              parsingError::NoError);
}

void parseWithActionThatThrows() {
    try {
        (void)parse(
            {go([](const Parameters&) { throw std::runtime_error("the action's exception"); })},
            {"tool", "go"});
    } catch (const std::exception&) {
        ::_exit(1);
    }
}

TEST(ParseOnTheWorker, EndsTheProcessWhenAnExceptionLeavesTheAction) {
    EXPECT_EXIT(parseWithActionThatThrows(), testing::KilledBySignal(SIGABRT),
                "the action's exception");
}

TEST(ParseOnTheWorker, DoesNotReturnWhenTheActionEndsTheProcess) {
    EXPECT_EXIT((void)parse({go([](const Parameters&) { std::exit(5); })}, {"tool", "go"}),
                testing::ExitedWithCode(5), "^$");
}

void parseWithoutThreads() {
    if (!refuseThreads()) ::_exit(Tests::notPossibleHere);
    (void)parse({go([](const Parameters&) { ::puts("called"); })}, {"tool", "go"});
}

TEST(ParseOnTheWorker, StopsSilentlyWhereNoThreadCanBeStarted) {
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

TEST(ParseOnTheWorker, StartsAThreadForAValidatedFitAlone) {
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

TEST(ParseOnTheWorker, StartsNoThreadForAUserWithoutTheNeededRights) {
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
