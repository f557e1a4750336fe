#include "Optrella/Platform/StartArguments.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "Platform/Child.hpp"
#include "Traces.hpp"

namespace {

using Arguments = std::vector<std::string>;

const std::string probe = Tests::programBeside("start-arguments-probe");

// The texts, each of which ends at a NUL.
Arguments split(const std::string& text) {
    Arguments parts;
    for (std::size_t begin = 0; begin < text.size(); begin += parts.back().size() + 1) {
        parts.emplace_back(text.c_str() + begin);
    }
    return parts;
}

struct Told {
    int exitCode;
    Arguments arguments;
};

// What the probe writes when it is started with these arguments, the first of which is its name.
Told told(const Arguments& arguments, const char* wish = "") {
    const Tests::Told answer =
        Tests::toldBy(probe, arguments, [&] { ::setenv("OPTRELLA_TEST", wish, 1); });
    return {answer.exitCode, split(answer.output)};
}

void expectTold(const Arguments& arguments, const char* wish = "") {
    const Told answer = told(arguments, wish);
    EXPECT_EQ(answer.exitCode, 0);
    EXPECT_EQ(answer.arguments, arguments);
}

const Arguments usual{"tool", "run", "--x", "1"};
const Arguments unusual{"./a tool", "",   " ",    "a\nb\r\n", "\"'", "\xff\xfe",
                        "\xc3\xa9", "--", "*\\$", "\x01\x7f", "",    ""};

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

TEST(StartArguments, AreNotWhatAConstructorHasWrittenOverThem) {
    expectTold(unusual, "constructor");
}

TEST(StartArguments, AreAllThoughMainHasRemovedOne) { expectTold(usual, "removal"); }

TEST(StartArguments, ComeFromTheSystemWhereTheArrayIsNotPassed) {
    expectTold(unusual, "early");
    Arguments many{"tool"};
    for (int i = 0; i < 20'000; ++i) many.push_back(std::to_string(i));
    expectTold(many, "early");
}

TEST(StartArguments, NeedNothingOfTheSystemWhereTheArrayIsPassed) {
    const Told answer = told(unusual, "chroot");
    if (answer.exitCode == 77) GTEST_SKIP() << "only root may change the root";
    EXPECT_EQ(answer.exitCode, 0);
    EXPECT_EQ(answer.arguments, unusual);
}

TEST(StartArguments, AreEmptyWhereNobodyTellsThem) {
    const Told answer = told(usual, "early chroot");
    if (answer.exitCode == 77) GTEST_SKIP() << "only root may change the root";
    EXPECT_EQ(answer.exitCode, 0);
    EXPECT_EQ(answer.arguments, Arguments{});
}

}  // namespace
