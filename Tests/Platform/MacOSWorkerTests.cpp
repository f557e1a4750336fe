// The worker on macOS, where the system's queue does the work and the caller runs its run loop.

#include <CoreFoundation/CoreFoundation.h>
#include <dispatch/dispatch.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <vector>

#include "Work.hpp"

namespace {

using namespace std::chrono_literals;
using Tests::runOnWorker;
using Tests::TimeLimit;

constexpr CFTimeInterval forever = 1e10;

// Calls the function from the loop of this thread, once or every so often, as long as it lives.
class Timer {
public:
    Timer(CFTimeInterval after, CFTimeInterval interval, std::function<void()> call)
        : call_(std::move(call)) {
        CFRunLoopTimerContext context{};
        context.info = &call_;
        timer_ = CFRunLoopTimerCreate(
            kCFAllocatorDefault, CFAbsoluteTimeGetCurrent() + after, interval, 0, 0,
            [](CFRunLoopTimerRef, void* info) { (*static_cast<std::function<void()>*>(info))(); },
            &context);
        CFRunLoopAddTimer(CFRunLoopGetCurrent(), timer_, kCFRunLoopDefaultMode);
    }
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;
    ~Timer() {
        CFRunLoopTimerInvalidate(timer_);
        CFRelease(timer_);
    }

private:
    std::function<void()> call_;
    CFRunLoopTimerRef timer_;
};

// Calls the function when the loop of this thread comes to that point, as long as it lives.
class Observer {
public:
    Observer(CFRunLoopActivity activity, std::function<void()> call) : call_(std::move(call)) {
        CFRunLoopObserverContext context{};
        context.info = &call_;
        observer_ = CFRunLoopObserverCreate(
            kCFAllocatorDefault, activity, 1, 0,
            [](CFRunLoopObserverRef, CFRunLoopActivity, void* info) {
                (*static_cast<std::function<void()>*>(info))();
            },
            &context);
        CFRunLoopAddObserver(CFRunLoopGetCurrent(), observer_, kCFRunLoopDefaultMode);
    }
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;
    ~Observer() {
        CFRunLoopObserverInvalidate(observer_);
        CFRelease(observer_);
    }

private:
    std::function<void()> call_;
    CFRunLoopObserverRef observer_;
};

// ---- The queue ----

TEST(MacOSWorker, IsOfTheBackgroundClass) {
    qos_class_t quality = QOS_CLASS_UNSPECIFIED;
    EXPECT_TRUE(runOnWorker([&] { quality = qos_class_self(); }));
    EXPECT_EQ(quality, QOS_CLASS_BACKGROUND);
}

// ---- The end of the wait ----

TEST(MacOSWorker, ReleasesACallerWhoComesToTheWaitLate) {
    const TimeLimit limit;
    for (int i = 0; i < 20; ++i) {
        std::atomic<bool> hasEnded = false;
        // The loop has begun, and nobody waits yet, until some time after the end of the work.
        const Observer late(kCFRunLoopEntry, [&] {
            while (!hasEnded) std::this_thread::yield();
            std::this_thread::sleep_for(2ms);
        });
        ASSERT_TRUE(runOnWorker([&] { hasEnded = true; })) << i;
    }
}

TEST(MacOSWorker, ReleasesACallerWhoIsAboutToWait) {
    const TimeLimit limit;
    for (int i = 0; i < 20; ++i) {
        std::atomic<bool> isAboutTo = false;
        std::atomic<bool> hasEnded = false;
        const Observer late(kCFRunLoopBeforeWaiting, [&] {
            isAboutTo = true;
            while (!hasEnded) std::this_thread::yield();
            std::this_thread::sleep_for(2ms);
        });
        ASSERT_TRUE(runOnWorker([&] {
            while (!isAboutTo) std::this_thread::yield();
            hasEnded = true;
        })) << i;
    }
}

TEST(MacOSWorker, IsNotLeftBecauseTheWorkStopsTheLoop) {
    const TimeLimit limit;
    const CFRunLoopRef loop = CFRunLoopGetCurrent();
    std::atomic<bool> hasEnded = false;
    EXPECT_TRUE(runOnWorker([&] {
        for (int i = 0; i < 50; ++i) {
            CFRunLoopStop(loop);
            std::this_thread::sleep_for(1ms);
        }
        hasEnded = true;
    }));
    EXPECT_TRUE(hasEnded);
}

TEST(MacOSWorker, IsNotLeftBecauseOthersStopTheLoop) {
    const TimeLimit limit;
    const CFRunLoopRef loop = CFRunLoopGetCurrent();
    std::atomic<bool> isOver = false;
    std::atomic<int> stops = 0;
    std::thread stranger([&] {
        while (!isOver) {
            CFRunLoopStop(loop);
            ++stops;
            std::this_thread::sleep_for(50us);
        }
    });
    int runs = 0;
    for (int i = 0; i < 200; ++i) {
        const int before = stops;
        bool hasEnded = false;
        EXPECT_TRUE(runOnWorker([&] {
            while (stops < before + 3) std::this_thread::yield();
            hasEnded = true;
        }));
        if (hasEnded) ++runs;
    }
    isOver = true;
    stranger.join();
    EXPECT_EQ(runs, 200);
}

// ---- The loop ----

TEST(MacOSWorker, LetsTheLoopDoItsOtherWorkMeanwhile) {
    const TimeLimit limit;
    std::atomic<int> ticks = 0;
    const Timer timer(0, 0.001, [&] { ++ticks; });
    EXPECT_TRUE(runOnWorker([&] {
        while (ticks < 20) std::this_thread::sleep_for(1ms);
    }));
    EXPECT_GE(ticks, 20);
}

TEST(MacOSWorker, WorksFromTheLoopThatAnotherOneWaitsIn) {
    const TimeLimit limit;
    std::vector<int> order;
    std::atomic<bool> hasBegun = false;
    std::atomic<bool> hasOuterEnded = false;
    // The outer piece ends first; its end must not be taken for that of the inner one.
    const Timer timer(0, 0, [&] {
        EXPECT_TRUE(runOnWorker([&] {
            hasBegun = true;
            while (!hasOuterEnded) std::this_thread::sleep_for(1ms);
            std::this_thread::sleep_for(20ms);
            order.push_back(2);
        }));
        order.push_back(3);
    });
    EXPECT_TRUE(runOnWorker([&] {
        while (!hasBegun) std::this_thread::sleep_for(1ms);
        order.push_back(1);
        hasOuterEnded = true;
    }));
    order.push_back(4);
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3, 4}));
}

TEST(MacOSWorker, LeavesNothingOnTheLoop) {
    std::thread([] {
        for (int i = 0; i < 100; ++i) EXPECT_TRUE(runOnWorker([] {}));
        // A loop with nothing on it returns at once.
        EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, forever, 0), kCFRunLoopRunFinished);
    }).join();
}

TEST(MacOSWorker, LeavesNoStopForTheNextRunOfTheLoop) {
    const TimeLimit limit;
    for (int i = 0; i < 200; ++i) {
        ASSERT_TRUE(runOnWorker([] {}));
        bool hasTicked = false;
        const Timer timer(0.0005, 0, [&] { hasTicked = true; });
        EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.001, 0), kCFRunLoopRunTimedOut) << i;
        EXPECT_TRUE(hasTicked) << i;
    }
}

TEST(MacOSWorker, OutlivesTheThreadOfItsCaller) {
    const TimeLimit limit;
    std::atomic<int> runs = 0;
    // The thread, its loop and the frame of the call are gone at the moment of the wake-up, or
    // soon.
    for (int i = 0; i < 1000; ++i) std::thread([&] { runOnWorker([&] { ++runs; }); }).join();
    EXPECT_EQ(runs, 1000);
}

}  // namespace
