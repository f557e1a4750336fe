// Runs.hpp - children that are run for a test, and a fixture that checks what they leave.

#ifndef OPTRELLA_TESTS_CHILDPROCESS_RUNS_HPP
#define OPTRELLA_TESTS_CHILDPROCESS_RUNS_HPP

#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ChildProcess/Traces.hpp"
#include "Optrella/Platform/ChildProcess.hpp"

namespace Tests {

using Blocks = std::vector<std::string>;

inline const std::string probe = programBeside("child-probe");

inline void keep(void* blocks, std::string_view block) {
    static_cast<Blocks*>(blocks)->emplace_back(block);
}

inline Optrella::Platform::Password password(std::string_view bytes) {
    Optrella::Platform::Password made;
    EXPECT_TRUE(made.append(bytes));
    return made;
}

struct Outcome {
    bool isStarted;
    Blocks blocks;

    [[nodiscard]] std::string output() const {
        return std::accumulate(blocks.begin(), blocks.end(), std::string());
    }
};

inline Outcome run(const std::string& program, const std::vector<std::string>& arguments,
                   Optrella::Platform::Password input = {}) {
    Outcome outcome{};
    outcome.isStarted = Optrella::Platform::runChild(program.c_str(), arguments, std::move(input),
                                                     {keep, &outcome.blocks});
    return outcome;
}

inline Outcome runProbe(const std::vector<std::string>& arguments,
                        Optrella::Platform::Password input = {}) {
    Outcome outcome = run(probe, arguments, std::move(input));
    EXPECT_TRUE(outcome.isStarted);
    return outcome;
}

// Checks that a test leaves the process as it was.
class ChildProcess : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(hasChildren());
        ASSERT_TRUE(hasUsualThreads());
    }
    void TearDown() override {
        EXPECT_FALSE(hasChildren());
        EXPECT_EQ(descriptors(), descriptors_);
        EXPECT_TRUE(hasUsualThreads());
    }

private:
    const std::vector<int> descriptors_ = descriptors();
};

}  // namespace Tests

#endif
