#include "Optrella/Platform/Process.hpp"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using Optrella::Platform::takeVariable;

TEST(Process, TakesAVariableOutOfTheEnvironment) {
    ::setenv("OPTRELLA_TESTS", "1", 1);
    EXPECT_EQ(takeVariable("OPTRELLA_TESTS"), "1");
    EXPECT_EQ(std::getenv("OPTRELLA_TESTS"), nullptr);
    EXPECT_EQ(takeVariable("OPTRELLA_TESTS"), std::nullopt);
}

TEST(Process, TakesAnEmptyVariable) {
    ::setenv("OPTRELLA_TESTS", "", 1);
    EXPECT_EQ(takeVariable("OPTRELLA_TESTS"), "");
    EXPECT_EQ(std::getenv("OPTRELLA_TESTS"), nullptr);
}

}  // namespace
