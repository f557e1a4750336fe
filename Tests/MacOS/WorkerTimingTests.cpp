// Moments that only a linker that puts functions of ours in between can stretch.

#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "Platform/Work.hpp"
#include "Support/MacOS/Objects.hpp"

namespace {

using namespace std::chrono_literals;
using Tests::runOnWorker;
using Tests::TimeLimit;

std::atomic<bool>* awaited = nullptr;
std::atomic<int> runsOfTheLoop = 0;

// A worker that is late wakes its caller only after that one has gone. Of one thread: the worker of
// an earlier test may still be at its end.
thread_local bool isLate = false;
std::atomic<bool> hasCallerGone = false;
std::atomic<bool> hasWoken = false;
CFRunLoopRef woken = nullptr;

// Writes over what the frames of earlier calls have left.
[[gnu::noinline]] void overwriteFrames() {
    volatile char bytes[1 << 14];
    for (volatile char& each : bytes) each = 0;
}

}  // namespace

extern "C" {

SInt32 __real_CFRunLoopRunInMode(CFRunLoopMode mode, CFTimeInterval seconds, Boolean returns);

SInt32 __wrap_CFRunLoopRunInMode(CFRunLoopMode mode, CFTimeInterval seconds, Boolean returns) {
    ++runsOfTheLoop;
    if (awaited != nullptr) {
        while (!*awaited) std::this_thread::yield();
        std::this_thread::sleep_for(2ms);
    }
    return __real_CFRunLoopRunInMode(mode, seconds, returns);
}

void __real_CFRunLoopSourceSignal(CFRunLoopSourceRef source);

void __wrap_CFRunLoopSourceSignal(CFRunLoopSourceRef source) {
    while (isLate && !hasCallerGone) std::this_thread::yield();
    __real_CFRunLoopSourceSignal(source);
}

void __real_CFRunLoopWakeUp(CFRunLoopRef loop);

void __wrap_CFRunLoopWakeUp(CFRunLoopRef loop) {
    if (!isLate) return __real_CFRunLoopWakeUp(loop);
    isLate = false;
    woken = loop;
    hasWoken = true;
}
}

namespace {

TEST(MacOSWorker, ReleasesACallerWhoseLoopDoesNotRunYet) {
    const TimeLimit limit;
    for (int i = 0; i < 20; ++i) {
        std::atomic<bool> hasEnded = false;
        awaited = &hasEnded;
        const bool hasRun = runOnWorker([&] { hasEnded = true; });
        awaited = nullptr;
        ASSERT_TRUE(hasRun) << i;
    }
}

TEST(MacOSWorker, ReachesForNothingOfACallerWhoHasGone) {
    const TimeLimit limit;
    const CFRunLoopRef loop = CFRunLoopGetCurrent();
    hasCallerGone = hasWoken = false;
    // The caller looks whether the work has ended whenever somebody stops its loop.
    std::thread stranger([&] {
        while (!hasCallerGone) {
            CFRunLoopStop(loop);
            std::this_thread::sleep_for(1ms);
        }
    });
    EXPECT_TRUE(runOnWorker([] { isLate = true; }));
    overwriteFrames();
    hasCallerGone = true;
    stranger.join();
    while (!hasWoken) std::this_thread::yield();
    EXPECT_EQ(woken, loop);
}

// The reason for the hand-over: if this were not so, it could be simpler.
TEST(RunLoop, LosesAStopThatComesBeforeItRuns) {
    std::thread([] {
        CFRunLoopSourceContext context{};
        context.perform = [](void*) {};
        const CFRunLoopRef loop = CFRunLoopGetCurrent();
        const CFRunLoopSourceRef source = CFRunLoopSourceCreate(kCFAllocatorDefault, 0, &context);
        CFRunLoopAddSource(loop, source, kCFRunLoopDefaultMode);
        CFRunLoopStop(loop);
        EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.05, 0), kCFRunLoopRunTimedOut);
        CFRunLoopSourceInvalidate(source);
        CFRelease(source);
    }).join();
}

TEST(MacOSWorker, RunsTheLoopOnce) {
    const int before = runsOfTheLoop;
    EXPECT_TRUE(runOnWorker([] { std::this_thread::sleep_for(20ms); }));
    EXPECT_EQ(runsOfTheLoop - before, 1);
}

TEST(MacOSWorker, ReleasesAllThatItHasMadeOrRetained) {
    // The last worker may still be releasing its objects.
    const auto isBalanced = [] {
        for (int i = 0; i < 1000 && Tests::unbalancedObjects() != 0; ++i) {
            std::this_thread::sleep_for(1ms);
        }
        return Tests::unbalancedObjects() == 0;
    };
    // Leaves out what the other tests here have made.
    std::this_thread::sleep_for(50ms);
    Tests::forgetObjects();
    for (int i = 0; i < 1000; ++i) ASSERT_TRUE(runOnWorker([] {}));
    EXPECT_TRUE(isBalanced());
}

}  // namespace
