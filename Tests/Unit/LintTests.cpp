#include "Optrella/Lint.hpp"

#include <gtest/gtest.h>

#include <algorithm>
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

TEST(Lint, LeavesNotesOutUnlessAsked) {
    const ParameterNone a{{"a"}, "h"}, b{{"b"}, "h"};
    const Tool masked{.commandLines = {{false, {a, b}, {}, "h", false, nothing}},
                      .spelling = Spelling::exact};
    EXPECT_EQ(lint(masked), Findings());
    ASSERT_EQ(lint(masked, Notes::included).size(), 1U);
    EXPECT_EQ(lint(masked, Notes::included).front().rule, Rule::masked);
}

TEST(Lint, ReportsAtMostAHundredOfARule) {
    const CommandLinePossibility untagged{false,  {list, ParameterNone({}, "h")}, {}, "h", false,
                                          nothing};
    const std::vector<CommandLinePossibility> many(101, untagged);
    const Findings findings = lint({.commandLines = many});
    const auto count = [&findings](Rule rule) {
        return std::count_if(findings.begin(), findings.end(),
                             [rule](const Finding& each) { return each.rule == rule; });
    };
    EXPECT_EQ(count(Rule::untagged), 100);
    EXPECT_EQ(count(Rule::unreachable), 100);
}

// Two declarations of one line, with so many options that not all ways to give them can be tried.
TEST(Lint, ReportsNothingThatItCannotDecide) {
    for (const std::size_t count : {2U, 40U}) {
        Parameters options;
        for (std::size_t i = 0; i < count; ++i) {
            options.push_back(ParameterString({"--" + std::to_string(i)}, "VALUE", "h"));
        }
        const CommandLinePossibility alike{false, {list}, options, "h", false, nothing};
        const Findings findings = lint({.commandLines = {alike, alike}});
        const auto isUnreachable = [](const Finding& each) {
            return each.rule == Rule::unreachable;
        };
        EXPECT_EQ(findings.front().rule, Rule::collision);
        EXPECT_EQ(std::any_of(findings.begin(), findings.end(), isUnreachable), count == 2)
            << count;
    }
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
