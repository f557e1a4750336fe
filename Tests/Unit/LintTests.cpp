#include "Optrella/Lint.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Support/Threads.hpp"

namespace {

using namespace Optrella;

const ParameterNone list{{"list"}, "h"};
const ParameterNumber limit{{"-n"}, "COUNT", 10, 1, "h"};
void nothing(const Parameters&) {}

const CommandLinePossibility declaration{false, {list}, {limit}, "h", false, nothing};

TEST(Lint, RunsNoAction) {
    int runs = 0;
    const CommandLinePossibility counting{false, {list}, {},
                                          "h",   false,  [&](const Parameters&) { ++runs; }};
    EXPECT_FALSE(lint({.commandLines = {counting, counting}}).empty());
    EXPECT_EQ(runs, 0);
}

TEST(Finding, IsEqualWhereAllItsFieldsAre) {
    const Finding different[] = {{.rule = Rule::bounds},  {.severity = Severity::note},
                                 {.declarations = {0}},   {.parameters = {"-n"}},
                                 {.witness = {{"list"}}}, {.sentence = "x"}};
    for (const Finding& each : different) {
        EXPECT_NE(each, Finding());
        EXPECT_EQ(each, Finding(each));
    }
}

TEST(Finding, OwnsItsTexts) {
    Findings findings;
    {
        const std::string tag = "a-word-that-is-too-long-for-the-string-itself";
        const ParameterNone word{{tag}, "h"};
        const CommandLinePossibility twice{false, {word}, {}, "h", false, nothing};
        findings = lint({.commandLines = {twice, twice}});
    }
    ASSERT_FALSE(findings.empty());
    EXPECT_EQ(findings.front().witness,
              std::vector<Text>{"a-word-that-is-too-long-for-the-string-itself"});
}

TEST(Lint, IsSafeOnSeveralThreadsAtOnce) {
    const Tool tool{.commandLines = {declaration, declaration}};
    const Findings expected = lint(tool, Notes::included);
    ASSERT_FALSE(expected.empty());
    Tests::onSeveralThreads([&] { return lint(tool, Notes::included) == expected; });
}

}  // namespace
