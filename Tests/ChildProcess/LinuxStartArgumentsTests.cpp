// The arguments where constructors have an order, and where they come from /proc: on Linux.

#include <gtest/gtest.h>

#include <string>

#include "StartArgumentsTold.hpp"

namespace {

using namespace Tests;

TEST(StartArguments, AreNotWhatAConstructorHasWrittenOverThem) {
    expectTold(unusual, "constructor");
}

TEST(StartArguments, ComeFromTheSystemWhereTheArrayIsNotPassed) {
    expectTold(unusual, "early");
    Arguments many{"tool"};
    for (int i = 0; i < 20'000; ++i) many.push_back(std::to_string(i));
    expectTold(many, "early");
}

TEST(StartArguments, NeedNothingOfTheSystemWhereTheArrayIsPassed) {
    const ToldArguments answer = told(unusual, "chroot");
    if (answer.exitCode == 77) GTEST_SKIP() << "only root may change the root";
    EXPECT_EQ(answer.exitCode, 0);
    EXPECT_EQ(answer.arguments, unusual);
}

TEST(StartArguments, AreEmptyWhereNobodyTellsThem) {
    const ToldArguments answer = told(usual, "early chroot");
    if (answer.exitCode == 77) GTEST_SKIP() << "only root may change the root";
    EXPECT_EQ(answer.exitCode, 0);
    EXPECT_EQ(answer.arguments, Arguments{});
}

}  // namespace
