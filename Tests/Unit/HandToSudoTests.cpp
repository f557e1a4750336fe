#include "Optrella/Elevation/HandToSudo.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <vector>

#include "Optrella/CommandLine.hpp"
#include "Support/Capture.hpp"
#include "Support/FakePlatform.hpp"

using namespace Optrella;
using Tests::platform;

namespace {

using Words = std::vector<std::string>;

const ParameterNone install{{"install"}, "Install"};
const ParameterNone list{{"list"}, "List"};
const ParameterFileURL file{{"-f"},
                            ParameterFileURL::urlType::file,
                            ParameterFileURL::existState::exist,
                            "file",
                            "Which file"};

class HandToSudo : public Tests::PolicyTest {
protected:
    HandToSudo() {
        ::unsetenv("SUDO_UID");
        ::unsetenv("SUDO_COMMAND");
    }

    // Hands the arguments over, and returns why that was not possible.
    static std::string said(const std::vector<Text>& arguments = {"install"}) {
        return Optrella::HandToSudo::refusal(arguments).value_or("");
    }
    void becomeStartedBySudo(const char* command) {
        ::setenv("SUDO_UID", "1000", 1);
        ::setenv("SUDO_COMMAND", command, 1);
    }
    void expectHandedOver() {
        EXPECT_TRUE(Optrella::HandToSudo::refusal({}));
        EXPECT_EQ(platform().replacements.size(), 1U);
    }

    int calls_ = 0;
    const CommandLinePossibility commandLines_[2] = {
        {true, {install}, {file}, "", false, [this](const Parameters&) { ++calls_; }},
        {false, {list}, {}, "", false, [this](const Parameters&) { ++calls_; }},
    };
};

TEST_F(HandToSudo, RunsHereWhereTheEffectiveUserIsRoot) {
    platform().hasRightsOfRoot = true;
    EXPECT_EQ(Optrella::HandToSudo::refusal({}), std::nullopt);
    EXPECT_EQ(platform().replacements.size(), 0U);
}

TEST_F(HandToSudo, StartsTheProgramByItsPathAsRootWithTheArgumentsUnchanged) {
    using namespace std::string_literals;
    const std::vector<Text> arguments = {"install", "", "-e", "A=B", "a b", Text("\xFF"s)};
    EXPECT_TRUE(Optrella::HandToSudo::refusal(arguments));
    ASSERT_EQ(platform().replacements.size(), 1U);
    EXPECT_EQ(platform().replacements[0].program, "/usr/bin/sudo");
    EXPECT_EQ(platform().replacements[0].arguments,
              (Words{"sudo", "-u", "root", "--", "/there/tool", "install", "", "-e", "A=B", "a b",
                     "\xFF"}));
}

TEST_F(HandToSudo, CallsRootByTheNameThatTheDatabaseHas) {
    platform().nameOfRoot = "toor";
    EXPECT_TRUE(Optrella::HandToSudo::refusal({}));
    EXPECT_EQ(platform().replacements.at(0).arguments,
              (Words{"sudo", "-u", "toor", "--", "/there/tool"}));
}

TEST_F(HandToSudo, AsksNeitherAboutTheUserNorForAPassword) {
    EXPECT_TRUE(Optrella::HandToSudo::refusal({}));
    EXPECT_EQ(platform().userQuestions, 0);
    EXPECT_EQ(platform().membershipQuestions.size(), 0U);
    EXPECT_EQ(platform().prompts.size(), 0U);
}

TEST_F(HandToSudo, SaysThatSudoCannotBeStarted) {
    platform().replacementError = ENOENT;
    EXPECT_EQ(said(),
              "This command must be run as root, and /usr/bin/sudo cannot be "
              "started: No such file or directory.");
}

TEST_F(HandToSudo, SaysThatTheProgramIsNotThereAnyMore) {
    platform().ownProgram.reset();
    EXPECT_EQ(said(),
              "This command must be run as root, and sudo cannot be told which "
              "program that is: use sudo yourself.");
    EXPECT_EQ(platform().replacements.size(), 0U);
}

TEST_F(HandToSudo, DoesNotLoopWhereSudoRunsItAsAnotherUser) {
    for (const char* command : {"/there/tool", "/there/tool install x"}) {
        becomeStartedBySudo(command);
        EXPECT_EQ(said(),
                  "This command must be run as root, and sudo has run it as another "
                  "user.");
    }
    EXPECT_EQ(platform().replacements.size(), 0U);
}

TEST_F(HandToSudo, HandsOverWithinAShellThatSudoHasStarted) {
    becomeStartedBySudo("/usr/bin/su anna");
    expectHandedOver();
}

TEST_F(HandToSudo, HandsOverWhereSudoHasStartedAProgramWithALongerName) {
    becomeStartedBySudo("/there/tools install");
    expectHandedOver();
}

TEST_F(HandToSudo, HandsOverWhereOnlyTheCommandIsInTheEnvironment) {
    ::setenv("SUDO_COMMAND", "/there/tool", 1);
    expectHandedOver();
}

TEST_F(HandToSudo, HandsOverWhereOnlyTheUserIsInTheEnvironment) {
    ::setenv("SUDO_UID", "1000", 1);
    expectHandedOver();
}

TEST_F(HandToSudo, ComesBeforeTheValuesAreJudged) {
    EXPECT_EQ(Tests::printed([&] {
                  EXPECT_EQ(parse(commandLines_, std::vector<Text>{"tool", "install", "-f", "/no"},
                                  RootCommands::handToSudo),
                            parsingError::NoMatchingLine);
              }),
              "");
    EXPECT_EQ(platform().replacements.at(0).arguments,
              (Words{"sudo", "-u", "root", "--", "/there/tool", "install", "-f", "/no"}));
    EXPECT_EQ(calls_, 0);
}

TEST_F(HandToSudo, JudgesTheValuesWhereItIsRoot) {
    platform().hasRightsOfRoot = true;
    EXPECT_EQ(Tests::printed([&] {
                  EXPECT_EQ(parse(commandLines_, std::vector<Text>{"tool", "install", "-f", "/no"},
                                  RootCommands::handToSudo),
                            parsingError::NoMatchingLine);
              }),
              "Validation of parameter -f failed : /no does not exist\n");
    EXPECT_EQ(calls_, 0);
}

TEST_F(HandToSudo, RunsARootCommandAsRootAndAnyOtherAsAnybody) {
    platform().hasRightsOfRoot = true;
    EXPECT_EQ(parse(commandLines_, std::vector<Text>{"tool", "install"}, RootCommands::handToSudo),
              parsingError::NoError);
    platform().hasRightsOfRoot = false;
    const char* words[] = {"tool", "list"};
    EXPECT_EQ(parse(commandLines_, 2, words, RootCommands::handToSudo), parsingError::NoError);
    EXPECT_EQ(calls_, 2);
    EXPECT_EQ(platform().replacements.size(), 0U);
}

TEST_F(HandToSudo, SaysInALineThatItIsNotPossible) {
    platform().ownProgram.reset();
    EXPECT_EQ(parse(commandLines_, std::vector<Text>{"tool", "install"}, RootCommands::handToSudo),
              parsingError::NoMatchingLine);
    EXPECT_EQ(platform().errorWrites,
              Words{"This command must be run as root, and sudo cannot be told which program that "
                    "is: use sudo yourself.\n"});
}

TEST_F(HandToSudo, HandsOverWhatStandsInArgv) {
    const char* arguments[] = {"anything", "install", nullptr};
    EXPECT_EQ(parse(commandLines_, 2, arguments, RootCommands::handToSudo),
              parsingError::NoMatchingLine);
    EXPECT_EQ(platform().replacements.at(0).arguments,
              (Words{"sudo", "-u", "root", "--", "/there/tool", "install"}));
}

TEST_F(HandToSudo, SaysOfALineThatFitsNothingWhatParseSays) {
    EXPECT_EQ(Tests::printed([&] {
                  EXPECT_EQ(parse(commandLines_, std::vector<Text>{"tool", "instal"},
                                  RootCommands::handToSudo),
                            parsingError::NoMatchingLine);
              }),
              "[\"instal\"] is not a valid command line.\n Please refer to the help below.\n");
    EXPECT_EQ(parse(commandLines_, std::vector<Text>{"tool"}, RootCommands::handToSudo),
              parsingError::NoCommandLine);
    EXPECT_EQ(parse(commandLines_, 0, nullptr, RootCommands::handToSudo),
              parsingError::NoCommandLine);
}

}  // namespace
