#include "Optrella/Elevation/PromptForPassword.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "Support/Capture.hpp"
#include "Support/Death.hpp"
#include "Support/FakePlatform.hpp"

namespace {

using namespace Optrella::PromptForPassword;
using Optrella::Platform::Password;
using Tests::FakePlatform;
using Tests::platform;
using Tests::printed;

Password passwordOf(std::string_view text) {
    Password password;
    EXPECT_TRUE(password.append(text));
    return password;
}

// ---- Groups ----

class ValidateGroupMembershipTest : public Tests::PolicyTest {};

TEST_F(ValidateGroupMembershipTest, AsksOnceForTheLoggedInUserAndTheGroup) {
    platform().user = "anna";
    platform().groupsOfUser = {0, 80};
    EXPECT_TRUE(validateGroupMembership(80));
    EXPECT_EQ(platform().membershipQuestions,
              (std::vector<FakePlatform::Membership>{{"anna", 80}}));
}

TEST_F(ValidateGroupMembershipTest, IsFalseForAnotherGroup) {
    platform().groupsOfUser = {80};
    EXPECT_FALSE(validateGroupMembership(0));
}

TEST_F(ValidateGroupMembershipTest, IsFalseWithoutALoggedInUserAndAsksNoFurther) {
    platform().user = std::nullopt;
    EXPECT_FALSE(validateGroupMembership(0));
    EXPECT_TRUE(platform().membershipQuestions.empty());
}

TEST_F(ValidateGroupMembershipTest, TakesTheLargestGroupNumber) {
    EXPECT_FALSE(validateGroupMembership(4294967295));
    EXPECT_EQ(platform().membershipQuestions,
              (std::vector<FakePlatform::Membership>{{"tester", 4294967295}}));
}

TEST_F(ValidateGroupMembershipTest, StopsSilentlyForWhatIsNoGroupNumber) {
    EXPECT_SILENT_STOP(validateGroupMembership(-1));
    EXPECT_SILENT_STOP(validateGroupMembership(4294967296));
}

// ---- The prompt ----

class PromptTest : public Tests::PolicyTest {
protected:
    PromptTest() { platform().groupsOfUser = {80}; }

    // What prompt() returned and printed.
    struct Answer {
        std::optional<std::string> password;
        std::string output;
        friend bool operator==(const Answer&, const Answer&) = default;
    };
    friend void PrintTo(const Answer& answer, std::ostream* stream) {
        *stream << testing::PrintToString(answer.password) << " and "
                << testing::PrintToString(answer.output);
    }

    static Answer prompted() {
        Answer answer;
        answer.output = printed([&] {
            if (const auto password = prompt()) answer.password = std::string(password->bytes());
        });
        return answer;
    }
};

TEST_F(PromptTest, ReturnsTheRightPasswordSilently) {
    platform().typedLines = {"right pass"};
    EXPECT_EQ(prompted(), (Answer{"right pass", ""}));
    EXPECT_EQ(platform().prompts, (std::vector<std::string>{"Password:"}));
}

TEST_F(PromptTest, AsksNobodyOutsideTheAdministratorsGroup) {
    platform().groupsOfUser = {0, 79, 81};
    platform().typedLines = {"right pass"};
    EXPECT_EQ(prompted(), (Answer{std::nullopt, ""}));
    EXPECT_TRUE(platform().prompts.empty());
    EXPECT_TRUE(platform().passwordChecks.empty());
}

TEST_F(PromptTest, SaysOnceThatTheFirstAttemptWasWrong) {
    platform().typedLines = {"wrong", "right pass"};
    EXPECT_EQ(prompted(), (Answer{"right pass", "Sorry, try again.\n"}));
}

TEST_F(PromptTest, TakesTheThirdAttempt) {
    platform().typedLines = {"wrong", std::nullopt, "right pass"};
    EXPECT_EQ(prompted(), (Answer{"right pass", "Sorry, try again.\n"}));
}

TEST_F(PromptTest, GivesUpAfterThreeWrongPasswordsAndSaysSoEachTime) {
    platform().typedLines = {"a", "b", "c", "right pass"};
    EXPECT_EQ(prompted(),
              (Answer{std::nullopt, "Sorry, try again.\nSorry, try again.\nSorry, try again.\n"}));
    EXPECT_EQ(platform().prompts.size(), 3U);
}

TEST_F(PromptTest, IsSilentAtTheEndOfInputThreeTimes) {
    EXPECT_EQ(prompted(), (Answer{std::nullopt, ""}));
    EXPECT_EQ(platform().prompts.size(), 3U);
    EXPECT_TRUE(platform().passwordChecks.empty());
}

TEST_F(PromptTest, TakesAnEmptyLineForAnAttempt) {
    platform().typedLines = {"", ""};
    EXPECT_EQ(prompted(), (Answer{std::nullopt, "Sorry, try again.\nSorry, try again.\n"}));
    EXPECT_EQ(platform().passwordChecks,
              (std::vector<FakePlatform::Check>{{"tester", ""}, {"tester", ""}}));
    platform().rightPassword = "";
    platform().prompts.clear();
    EXPECT_EQ(prompted(), (Answer{"", ""}));
}

TEST_F(PromptTest, KeepsTheLineAsItWasTyped) {
    platform().rightPassword = "  right \t pass ";
    platform().typedLines = {"  right \t pass "};
    EXPECT_EQ(prompted(), (Answer{"  right \t pass ", ""}));
}

TEST_F(PromptTest, LooksUpTheUserAgainForEveryAttempt) {
    platform().typedLines = {"a", "b", "c"};
    EXPECT_EQ(prompted().password, std::nullopt);
    EXPECT_EQ(platform().userQuestions, 1 + 3);
    EXPECT_EQ(platform().passwordChecks, (std::vector<FakePlatform::Check>{
                                             {"tester", "a"}, {"tester", "b"}, {"tester", "c"}}));
}

TEST_F(PromptTest, ReplacesBrokenSequencesAndVerifiesAndReturnsTheRepairedText) {
    const struct {
        const char* typed;
        const char* text;
    } cases[] = {{"a\xFFz", "a\uFFFDz"},
                 {"\xE2\x82", "\uFFFD"},
                 {"\xE2\x82z", "\uFFFDz"},
                 {"\xC3\xA9\xC3", "\u00E9\uFFFD"},
                 {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
                 {"\xC0\x80", "\uFFFD\uFFFD"},
                 {"\xE0\x9F\xBF", "\uFFFD\uFFFD\uFFFD"},
                 {"\xF0\x9F\x98", "\uFFFD"},
                 {"\xF0\x8F\xBF\xBF", "\uFFFD\uFFFD\uFFFD\uFFFD"},
                 {"\xF1\x80\x80\xF1\x80", "\uFFFD\uFFFD"},
                 {"\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},
                 {"\xF5\x80", "\uFFFD\uFFFD"},
                 {"\x80", "\uFFFD"}};
    for (const auto& [typed, text] : cases) {
        platform().prompts.clear();
        platform().passwordChecks.clear();
        platform().typedLines = {typed};
        platform().rightPassword = text;
        EXPECT_EQ(prompted(), (Answer{text, ""}));
        EXPECT_EQ(platform().passwordChecks, (std::vector<FakePlatform::Check>{{"tester", text}}));
    }
}

TEST_F(PromptTest, RepairsTheLongestLineOfATerminal) {
    std::string text;
    for (int i = 0; i < 4095; ++i) text += "\uFFFD";
    platform().rightPassword = text;
    platform().typedLines = {std::string(4095, '\xFF')};
    EXPECT_EQ(prompted(), (Answer{text, ""}));
}

TEST_F(PromptTest, RefusesALineThatIsTooLongOnceItIsRepaired) {
    platform().typedLines = {std::string(Password::capacity / 3 + 1, '\xFF')};
    EXPECT_EQ(prompted(), (Answer{std::nullopt, "Sorry, try again.\n"}));
    EXPECT_TRUE(platform().passwordChecks.empty());
}

TEST_F(PromptTest, ATextThatIsNotUTF8InAnotherWayStaysDistinct) {
    platform().typedLines = {"\u00E9"};
    platform().rightPassword = "e\u0301";
    EXPECT_EQ(prompted().output, "Sorry, try again.\n");
}

TEST_F(PromptTest, ValidateAsksTheDirectoryForTheNamedUser) {
    EXPECT_TRUE(validate("anna", passwordOf("right pass")));
    EXPECT_FALSE(validate("anna", passwordOf("wrong")));
    EXPECT_EQ(platform().passwordChecks,
              (std::vector<FakePlatform::Check>{{"anna", "right pass"}, {"anna", "wrong"}}));
}

// ---- Removing the first line ----

TEST(RemoveFirstLine, YieldsWhatFollowsTheFirstLineFeed) {
    EXPECT_EQ(removeFirstLine("a\nb"), "b");
    EXPECT_EQ(removeFirstLine("\nb"), "b");
    EXPECT_EQ(removeFirstLine("a\nb\nc"), "b\nc");
    EXPECT_EQ(removeFirstLine("a\n\n"), "\n");
    EXPECT_EQ(removeFirstLine("a\n\u0301b"), "\u0301b");
}

TEST(RemoveFirstLine, YieldsNothingWithoutALineFeedOrAfterIt) {
    EXPECT_EQ(removeFirstLine(""), std::nullopt);
    EXPECT_EQ(removeFirstLine("a"), std::nullopt);
    EXPECT_EQ(removeFirstLine("\n"), std::nullopt);
    EXPECT_EQ(removeFirstLine("a\n"), std::nullopt);
}

TEST(RemoveFirstLine, TakesACarriageReturnWithItsLineFeedForNoLineFeed) {
    EXPECT_EQ(removeFirstLine("a\r\nb"), std::nullopt);
    EXPECT_EQ(removeFirstLine("\r\n"), std::nullopt);
    EXPECT_EQ(removeFirstLine("a\r\nb\nc"), "c");
    EXPECT_EQ(removeFirstLine("a\r\r\nb\nc"), "c");
    EXPECT_EQ(removeFirstLine("a\n\r\nb"), "\r\nb");
    EXPECT_EQ(removeFirstLine("a\rb\nc"), "c");
}

TEST(RemoveFirstLine, KnowsNoOtherLineEnds) {
    EXPECT_EQ(removeFirstLine("a\u2028b\nc"), "c");
    EXPECT_EQ(removeFirstLine("a\u0085b\nc"), "c");
    EXPECT_EQ(removeFirstLine("\u0600\nb"), "b");
}

// ---- The relay of the output ----

std::string relayed(const std::vector<std::string>& blocks) {
    return printed([&] {
        OutputRelay relay;
        for (const std::string& block : blocks) relay.handle(block);
    });
}

TEST(OutputRelay, DropsTheFirstLineAndAddsALineEndToTheRest) {
    EXPECT_EQ(relayed({"Password:\nhello\n"}), "hello\n\n");
}

TEST(OutputRelay, WaitsForTheLineFeedOfAPromptThatComesAlone) {
    EXPECT_EQ(relayed({"Password:"}), "");
    EXPECT_EQ(relayed({"Password:", "\nhello"}), "hello\n");
}

TEST(OutputRelay, LosesAnotherFirstLineAfterABlockThatEndedWithItsOnlyLineFeed) {
    EXPECT_EQ(relayed({"Password:\n", "one\ntwo\n"}), "two\n\n");
    EXPECT_EQ(relayed({"one\n", "two\n", "three\n"}), "");
}

TEST(OutputRelay, AddsALineEndToEveryBlockAfterTheFirstLine) {
    EXPECT_EQ(relayed({"p\nq", "x", "y\n", "a\nb\n"}), "q\nx\ny\n\na\nb\n\n");
}

TEST(OutputRelay, PrintsNothingForAnEmptyBlockOrOneThatIsNotUTF8) {
    EXPECT_EQ(relayed({"", "\xFF\nx", "p\nq", "", "\xFF", "\xE2\x82", "x"}), "q\nx\n");
}

TEST(OutputRelay, ABlockThatIsNotUTF8LeavesTheFirstLineToBeDropped) {
    EXPECT_EQ(relayed({"\xFF\nx", "p\nq\n"}), "q\n\n");
}

TEST(OutputRelay, DropsBothHalvesOfACharacterThatIsCutInTwo) {
    EXPECT_EQ(relayed({"p\nq", "a\xE2",
                       "\x82\xAC"
                       "b",
                       "c"}),
              "q\nc\n");
}

// On a terminal every line is handed on by itself, and this cannot fail.
TEST(OutputRelay, HandsOnEveryBlockAtOnce) {
    std::vector<off_t> sizes;
    printed([&] {
        OutputRelay relay;
        for (const char* block : {"p\nq", "x"}) {
            relay.handle(block);
            struct stat output {};
            ::fstat(STDOUT_FILENO, &output);
            sizes.push_back(output.st_size);
        }
    });
    EXPECT_EQ(sizes, (std::vector<off_t>{2, 4}));
}

TEST(OutputRelay, KeepsANULByte) {
    EXPECT_EQ(relayed({std::string("p\na\0b", 5)}), std::string("a\0b\n", 4));
}

// ---- Running again ----

class RerunTest : public Tests::PolicyTest {};

TEST_F(RerunTest, StartsSudoWithTheArgumentsUnchangedAndThePasswordAsALine) {
    const std::vector<std::string> arguments{"tool", "run", "--x", "1", "", "a b", "\"\n\xFF"};
    EXPECT_EQ(printed([&] { rerun(passwordOf("right pass"), arguments); }), "");
    const std::vector<FakePlatform::Child> expected{
        {"/usr/bin/sudo",
         {"-S", "tool", "run", "--x", "1", "", "a b", "\"\n\xFF"},
         "right pass\n"}};
    EXPECT_EQ(platform().children, expected);
}

TEST_F(RerunTest, PrintsWhatTheChildWritesWithoutItsFirstLine) {
    platform().childBlocks = {"[sudo] password for tester: ", "one\ntwo\n", "three"};
    EXPECT_EQ(printed([] { rerun(passwordOf("x"), {}); }), "two\n\nthree\n");
}

TEST_F(RerunTest, BeginsAgainWithTheFirstLineOfEachRun) {
    platform().childBlocks = {"p\nq"};
    EXPECT_EQ(printed([] {
                  rerun(passwordOf("x"), {});
                  rerun(passwordOf("x"), {});
              }),
              "q\nq\n");
}

TEST_F(RerunTest, StopsSilentlyWhenSudoCannotBeStarted) {
    platform().canStartChildren = false;
    EXPECT_SILENT_STOP(rerun(passwordOf("x"), {}));
}

}  // namespace
