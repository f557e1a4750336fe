// Threads.hpp - the same question, asked by several threads at once.

#ifndef OPTRELLA_TESTS_SUPPORT_THREADS_HPP
#define OPTRELLA_TESTS_SUPPORT_THREADS_HPP

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace Tests {

// Calls it again and again on each thread, all beginning together; a failed expectation when it
// ever returns false.
inline void onSeveralThreads(const std::function<bool()>& isRight) {
    constexpr int threads = 4;
    constexpr int times = 50;
    std::atomic<int> ready = 0;
    std::atomic<int> faults = 0;
    std::vector<std::thread> all;
    for (int i = 0; i < threads; ++i) {
        all.emplace_back([&] {
            ++ready;
            while (ready < threads) std::this_thread::yield();
            for (int time = 0; time < times; ++time) {
                if (!isRight()) ++faults;
            }
        });
    }
    for (std::thread& each : all) each.join();
    EXPECT_EQ(faults, 0);
}

}  // namespace Tests

#endif
