// The worker, alone and below parse: what holds on every system. What holds on one alone stands
// in LinuxWorkerTests.cpp and MacOSWorkerTests.cpp.

#include "Optrella/Platform/Worker.hpp"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/time.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <numeric>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Optrella/CommandLine.hpp"
#include "Work.hpp"

namespace {

using namespace Optrella;
using namespace std::chrono_literals;
using Tests::go;
using Tests::runOnWorker;
using Tests::TimeLimit;

// Where a queue of the system's does the work, what a test forks could not use it.
class Started : public testing::Environment {
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};
const testing::Environment* const started = testing::AddGlobalTestEnvironment(new Started);

std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/dev/fd"),
                         std::filesystem::directory_iterator());
}

// ---- The thread ----

TEST(Worker, RunsTheWorkOnAnotherThread) {
    const pthread_t caller = ::pthread_self();
    bool isCaller = true;
    EXPECT_TRUE(runOnWorker([&] { isCaller = ::pthread_equal(caller, ::pthread_self()) != 0; }));
    EXPECT_FALSE(isCaller);
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

std::atomic<int> interruptions{0};
pthread_t interrupted;

extern "C" void countInterruption(int) {
    if (::pthread_equal(::pthread_self(), interrupted) != 0) ++interruptions;
}

TEST(Worker, WaitsOnThroughSignals) {
    const TimeLimit limit;
    interrupted = ::pthread_self();
    interruptions = 0;
    struct sigaction action {};
    struct sigaction before;
    action.sa_handler = countInterruption;  // without SA_RESTART: ends what can be ended
    ::sigaction(SIGVTALRM, &action, &before);

    bool hasEnded = false;
    EXPECT_TRUE(runOnWorker([&] {
        // All of them are raised in the thread that waits.
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

// The signals are raised in the caller: the worker's other threads, if there are any, block them.
void workThroughATimer() {
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
        sigemptyset(&alarm);
        sigaddset(&alarm, SIGALRM);
        ::pthread_sigmask(SIG_BLOCK, &alarm, nullptr);
        while (interruptions < 50) std::this_thread::sleep_for(1ms);
        hasEnded = true;
    });
    std::_Exit(hasRun && hasEnded ? 0 : 1);
}

TEST(Worker, WaitsOnThroughATimerThatNeverRests) {
    EXPECT_EXIT(workThroughATimer(), testing::ExitedWithCode(0), "^$");
}

// ---- Below parse ----

TEST(ParseOnTheWorker, LeavesNoDescriptorOpenInTenThousandCalls) {
    const TimeLimit limit;
    int runs = 0;
    const CommandLinePossibility declarations[] = {go([&](const Parameters&) { ++runs; })};
    const std::vector<Text> arguments{"tool", "go"};
    // What the system keeps for a thread that waits, it has from the first wait on.
    ASSERT_EQ(parse(declarations, arguments), parsingError::NoError);
    const std::ptrdiff_t descriptors = openDescriptors();
    for (int i = 1; i < 10'000; ++i) {
        ASSERT_EQ(parse(declarations, arguments), parsingError::NoError) << i;
        ASSERT_EQ(runs, i + 1);
    }
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(ParseOnTheWorker, WorksWithinAnAction) {
    const TimeLimit limit;
    std::vector<parsingError> results;
    int depth = 0;
    std::vector<CommandLinePossibility> declarations;
    declarations.push_back(go([&](const Parameters&) {
        if (++depth < 4) results.push_back(parse(declarations, {"tool", "go"}));
    }));
    EXPECT_EQ(parse(declarations, {"tool", "go"}), parsingError::NoError);
    EXPECT_EQ(depth, 4);
    EXPECT_EQ(results, std::vector<parsingError>(3, parsingError::NoError));
}

TEST(ParseOnTheWorker, WorksOnEightThreadsAtOnce) {
    const TimeLimit limit;
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

}  // namespace
