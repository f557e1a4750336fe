#include "Optrella/Explain.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "Support/Threads.hpp"

namespace {

using namespace Optrella;

const ParameterNone list{{"list"}, "h"};
const ParameterNumber limit{{"-n"}, "COUNT", 1, 10, "h"};
void nothing(const Parameters&) {}

Tool items() {
    return {.name = "items", .commandLines = {{false, {list}, {limit}, "h", false, nothing}}};
}

// ---- Arguments ----

TEST(Explain, LeavesOutTheNameOfTheProgramInAnArgumentVector) {
    const Tool tool = items();
    const char* const argv[] = {"items", "lst", "-n", "5", nullptr};
    EXPECT_EQ(explain(tool, 4, argv), explain(tool, {"lst", "-n", "5"}));
}

TEST(Explain, TakesAnArgumentVectorOfTheNameAloneOrOfNothing) {
    const Tool tool = items();
    const char* const argv[] = {"items", nullptr};
    EXPECT_EQ(explain(tool, 1, argv).outcome, Outcome::nothingGiven);
    EXPECT_EQ(explain(tool, 0, argv + 1).outcome, Outcome::nothingGiven);
}

TEST(Explain, TakesTheArgumentsOfMain) {
    char name[] = "items";
    char word[] = "list";
    char* argv[] = {name, word, nullptr};
    EXPECT_EQ(explain(items(), 2, argv).outcome, Outcome::runs);
}

TEST(Explain, TakesAnyRangeOfStrings) {
    const std::vector<std::string> strings{"list", "-n", "5"};
    const std::vector<Text> texts(strings.begin(), strings.end());
    EXPECT_EQ(explain(items(), strings).outcome, Outcome::runs);
    EXPECT_EQ(explain(items(), texts).outcome, Outcome::runs);
}

// ---- Values ----

TEST(Explain, RunsNoAction) {
    int runs = 0;
    const Tool tool{
        .commandLines = {{false, {list}, {}, "h", false, [&](const Parameters&) { ++runs; }}}};
    EXPECT_EQ(explain(tool, {"list"}).outcome, Outcome::runs);
    EXPECT_EQ(runs, 0);
}

// A kind of a tool's own that counts the questions.
struct Judged {
    commonDetails common{.tags = {"-j"}, .parameterName = "J"};
    int* questions;

    [[nodiscard]] std::optional<Text> validate() const {
        ++*questions;
        return common.userValue == "good" ? std::nullopt : std::optional<Text>("not good");
    }
};

TEST(Explain, AsksAKindForEachValueOnceAndOnlyWhenOneDeclarationFits) {
    int questions = 0;
    const Judged judged{.questions = &questions};
    const Tool tool{.commandLines = {{false, {list, judged}, {}, "h", false, nothing}}};
    EXPECT_EQ(explain(tool, {"list", "-j", "good"}).outcome, Outcome::runs);
    EXPECT_EQ(questions, 1);
    const Explanation rejected = explain(tool, {"list", "-j", "bad"});
    EXPECT_EQ(rejected.attempts.front().rejected,
              (std::vector<RejectedValue>{{"-j", "bad", "not good"}}));
    EXPECT_EQ(questions, 2);
    EXPECT_EQ(explain(tool, {"-j", "good"}).outcome, Outcome::nothingFits);
    EXPECT_EQ(questions, 2);
}

TEST(Explain, LeavesTheDeclarationAsItWas) {
    const Tool tool = items();
    const Explanation first = explain(tool, {"list", "-n", "50"});
    EXPECT_EQ(first.outcome, Outcome::valueRejected);
    EXPECT_EQ(explain(tool, {"list", "-n", "5"}).outcome, Outcome::runs);
    EXPECT_EQ(explain(tool, {"list", "-n", "50"}), first);
}

// ---- The record ----

TEST(Explanation, IsEqualWhereAllItsFieldsAre) {
    const Explanation explanation = explain(items(), {"list", "-n", "50"});
    Explanation other = explanation;
    EXPECT_EQ(other, explanation);
    other.outcome = Outcome::runs;
    EXPECT_NE(other, explanation);
    other = explanation;
    other.needsRoot = true;
    EXPECT_NE(other, explanation);
    other = explanation;
    other.attempts.front().rejected.front().message = "";
    EXPECT_NE(other, explanation);
}

TEST(Attempt, IsEqualWhereAllItsFieldsAre) {
    const Attempt different[] = {{.declaration = 1},
                                 {.fits = true},
                                 {.accepted = 1},
                                 {.unknown = 0},
                                 {.why = UnknownArgument::notKnown},
                                 {.valueMissing = "-n"},
                                 {.missing = {"-n"}},
                                 {.repeated = {"-n"}},
                                 {.rejected = {{"-n", "x", "not x"}}},
                                 {.near = {"-n"}}};
    for (const Attempt& each : different) {
        EXPECT_NE(each, Attempt());
        EXPECT_EQ(each, Attempt(each));
    }
}

TEST(Explanation, OwnsItsTexts) {
    Explanation explanation;
    {
        const std::string tag = "--a-tag-that-is-too-long-for-the-string-itself";
        const ParameterNumber number{{tag}, "COUNT", 1, 10, "h"};
        const Tool tool{.commandLines = {{false, {list, number}, {}, "h", false, nothing}}};
        explanation = explain(tool, {"list", tag, std::string("a value that is no number at all")});
    }
    EXPECT_EQ(
        explanation.attempts.front().rejected,
        (std::vector<RejectedValue>{
            {"--a-tag-that-is-too-long-for-the-string-itself", "a value that is no number at all",
             "a value that is no number at all is not a number from 1 to 10"}}));
}

TEST(Words, OwnTheirTexts) {
    std::vector<Text> said;
    {
        Tool tool = items();
        tool.name = std::string("a-name-that-is-too-long-for-the-string-itself");
        const std::vector<std::string> line{"list", "-n", "50"};
        said = words(tool, line, explain(tool, line));
    }
    EXPECT_EQ(said,
              std::vector<Text>{"a-name-that-is-too-long-for-the-string-itself: '-n': 50 is not a "
                                "number from 1 to 10"});
}

// ---- Threads ----

TEST(Explain, IsSafeOnSeveralThreadsAtOnce) {
    const Tool tool = items();
    const std::vector<Text> line{"lst", "-n", "5"};
    const Explanation expected = explain(tool, line);
    const std::vector<Text> expectedWords = words(tool, line, expected);
    Tests::onSeveralThreads([&] {
        const Explanation explanation = explain(tool, line);
        return explanation == expected && words(tool, line, explanation) == expectedWords;
    });
}

}  // namespace
