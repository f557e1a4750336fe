// The arguments that a program was started with, as every system passes them.

#include <gtest/gtest.h>

#include <string>

#include "StartArgumentsTold.hpp"

namespace {

using namespace Tests;

TEST(StartArguments, AreTheNameAndWhatFollows) {
    expectTold(usual);
    expectTold({"tool"});
}

TEST(StartArguments, KeepEveryByte) { expectTold(unusual); }

TEST(StartArguments, MayBeginWithAnEmptyName) {
    expectTold({""});
    expectTold({"", "a"});
}

TEST(StartArguments, MayBeMany) {
    Arguments many{"tool"};
    for (int i = 0; i < 20'000; ++i) many.push_back(std::to_string(i));
    expectTold(many);
}

TEST(StartArguments, MayBeLong) { expectTold({"tool", std::string(100'000, 'a'), "b"}); }

TEST(StartArguments, AreNotWhatMainHasPointedTheArrayTo) { expectTold(unusual, "pointers"); }

TEST(StartArguments, AreNotWhatMainHasWrittenOverThem) { expectTold(unusual, "bytes"); }

TEST(StartArguments, AreAllThoughMainHasRemovedOne) { expectTold(usual, "removal"); }

}  // namespace
