// The child process, as far as only Linux shows it: by /proc, by the memory, and in an enlarged
// pipe.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include "Runs.hpp"
#include "Secret.hpp"

namespace {

using namespace Optrella::Platform;
using namespace std::chrono_literals;
using namespace Tests;

TEST_F(ChildProcess, BlocksThatStandInAnEnlargedPipeAtTheEndOfTheChildAreHandled) {
    constexpr std::size_t size = std::size_t{1} << 20;
    struct Slow {
        std::vector<std::size_t> sizes;
        static void handle(void* context, std::string_view block) {
            auto& sizes = static_cast<Slow*>(context)->sizes;
            // The child has long ended when the second block is read.
            if (sizes.empty()) std::this_thread::sleep_for(100ms);
            sizes.push_back(block.size());
        }
    } slow;
    const std::string count = std::to_string(size);
    const std::vector<std::string> arguments{"capacity", count, "fill", count};
    ASSERT_TRUE(runChild(probe.c_str(), arguments, {}, {Slow::handle, &slow}));
    EXPECT_EQ(std::accumulate(slow.sizes.begin(), slow.sizes.end(), std::size_t{0}), size);
    EXPECT_LE(*std::max_element(slow.sizes.begin(), slow.sizes.end()), 65536u);
}

TEST_F(ChildProcess, InputIsNeitherAmongTheArgumentsNorInTheEnvironment) {
    ::setenv("OPTRELLA_TEST", "here", 1);
    const Outcome outcome = runProbe({"file", "/proc/self/cmdline", "file", "/proc/self/environ"},
                                     password("pass word\n"));
    ::unsetenv("OPTRELLA_TEST");
    ASSERT_GE(outcome.blocks.size(), 2u);
    const char words[] = "\0file\0/proc/self/cmdline\0file\0/proc/self/environ";
    EXPECT_EQ(outcome.blocks[0], probe + std::string(words, sizeof words));
    EXPECT_NE(outcome.blocks[1].find("OPTRELLA_TEST=here"), std::string::npos);
    EXPECT_EQ(outcome.output().find("pass word"), std::string::npos);
}

TEST_F(ChildProcess, InputIsNotInMemoryAfterwards) {
    ASSERT_EQ(secretsInMemory(), 0);
    Password input = secret();
    ASSERT_GT(secretsInMemory(), 0);
    EXPECT_EQ(runProbe({"input"}, std::move(input)).output(), secretInHex() + '\n');
    EXPECT_EQ(secretsInMemory(), 0);
}

TEST_F(ChildProcess, InputIsNotInMemoryWhereNothingIsStarted) {
    for (const std::string& program : {probe + "-missing", std::string("/")}) {
        EXPECT_FALSE(run(program, {}, secret()).isStarted);
        EXPECT_EQ(secretsInMemory(), 0);
    }
}

}  // namespace
