#include <gtest/gtest.h>

#include <cstdlib>
#include <initializer_list>
#include <string>
#include <thread>
#include <vector>

#include "Optrella/CommandLineExitStatus.hpp"
#include "Optrella/CompletionScript.hpp"
#include "Optrella/CompletionScript/Answer.hpp"
#include "Optrella/Description.hpp"
#include "Optrella/Fetch.hpp"
#include "Optrella/HelpPage.hpp"
#include "Optrella/ManualPage.hpp"
#include "Optrella/Tool.hpp"
#include "Support/Capture.hpp"
#include "Support/FakePlatform.hpp"

namespace {

using namespace Optrella;
using Tests::platform;
using Words = std::vector<std::string>;

const ParameterNone list{{"list"}, "h"};
const ParameterNone all{{"-a", "--all"}, "h"};
const ParameterNone human{{"-h"}, "h"};
const ParameterNumber limit{{"-n", "--limit"}, "count", 1, 10, "h"};
const ParameterUUID owner{{"--owner"}, "owner", "h"};
const ParameterNone add{{"add"}, "h"};
const ParameterFileURL file{
    {"--file"}, ParameterFileURL::urlType::file, ParameterFileURL::existState::exist, "file", "h"};
const ParameterNone install{{"install"}, "h"};
const ParameterNone debug{{"debug"}, "h"};
const ParameterNone in{{"in"}, "h"};
const ParameterString command{{"--command"}, "command", "h"};
const ParameterNone remote{{"remote"}, "h"};
const ParameterNone prune{{"prune"}, "h"};
const ParameterString label{{"--label"}, "label", "h"};

class RunTool : public Tests::PolicyTest {
protected:
    RunTool() {
        for (const char* name : {"OPTRELLA_COMPLETE", "COLUMNS", "NO_COLOR"}) ::unsetenv(name);
        ::setenv("TERM", "xterm", 1);
        CommandLineExitStatus::shared().exitStatus = -100;
    }

    CommandLinePossibility declaration(std::initializer_list<ParameterProtocol> required,
                                       std::initializer_list<ParameterProtocol> optional,
                                       bool requiresRoot = false, bool hidden = false) {
        return {requiresRoot,
                Parameters(required),
                Parameters(optional),
                "h",
                hidden,
                [this](const Parameters& given) { act(given); }};
    }

    // Runs the tool, and returns what it prints.
    std::string out(const std::vector<Text>& arguments) {
        std::vector<Text> passedIn{"items"};
        passedIn.insert(passedIn.end(), arguments.begin(), arguments.end());
        return Tests::printed([&] { status_ = runTool(tool_, passedIn); });
    }
    // The same for one that prints nothing, and returns what it says on standard error.
    Words said(const std::vector<Text>& arguments) {
        platform().errorWrites.clear();
        EXPECT_EQ(out(arguments), "");
        return platform().errorWrites;
    }

    void act(const Parameters& given) {
        ++calls_;
        worker_ = std::this_thread::get_id();
        given_ = given;
        if (left_ != -100) CommandLineExitStatus::shared().exitStatus = left_;
    }

    int status_ = -1;
    std::int32_t left_ = -100;  // by the action
    int calls_ = 0;
    std::thread::id worker_;
    Parameters given_;
    Tool tool_{.name = "items",
               .version = "1.4.2",
               .summary = "Manage items.",
               .commandLines =
                   std::vector<CommandLinePossibility>{
                       declaration({list}, {all, limit, owner, human}),
                       declaration({add}, {file, label}),
                       declaration({install}, {file}, true),
                       declaration({debug}, {}, false, true),
                       declaration({in, command}, {label}),
                       declaration({remote, add}, {}),
                       declaration({remote, prune}, {}),
                   },
               .operands = {{command, Takes::rest}}};
};

// ---- Running ----

TEST_F(RunTool, RunsTheOneCommandThatFitsOnAWorker) {
    EXPECT_EQ(out({"list", "-an5"}), "");
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(calls_, 1);
    EXPECT_NE(worker_, std::this_thread::get_id());
    ASSERT_EQ(given_.size(), 3U);
    EXPECT_TRUE(given_[0].isEqualTo(list));
    EXPECT_TRUE(given_[1].isEqualTo(all));
    EXPECT_EQ(fetchNumber(limit, given_), 5);
}

TEST_F(RunTool, ReadsConventionallyWhateverTheSpelling) {
    tool_.spelling = Spelling::exact;
    EXPECT_EQ(out({"list", "--limit=5"}), "");
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(said({"lst"}).at(0),
              "items: 'lst' is not known; did you mean 'list'?\n"
              "items: usage: items list [-a|--all] [-n|--limit COUNT] [--owner OWNER] [-h]\n"
              "items: 'items --help' shows all commands\n");
}

TEST_F(RunTool, RunsACommandWhoseRequiredOptionIsJoinedWithAnother) {
    tool_.commandLines = std::vector{declaration({list, all}, {human})};
    EXPECT_EQ(said({"list", "-ah"}), Words{});
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(calls_, 1);
}

TEST_F(RunTool, RunsACommandOfOperandsWhereTheFirstIsNoWord) {
    tool_.commandLines = std::vector{declaration({list}, {}), declaration({label}, {})};
    tool_.operands = {label};
    EXPECT_EQ(said({"this"}), Words{});
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(fetchString(label, given_), "this");
}

TEST_F(RunTool, TakesTwoDashesForTheEndOfOptionsThoughTheyAreDeclared) {
    const ParameterNone dashes{{"--"}, "h"};
    tool_.commandLines = std::vector{declaration({list}, {dashes})};
    EXPECT_EQ(said({"list", "--"}), Words{});
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(given_.size(), 1U);
}

TEST_F(RunTool, TakesTheArgumentsOfMain) {
    char name[] = "items";
    char word[] = "list";
    char* argv[] = {name, word, nullptr};
    EXPECT_EQ(runTool(tool_, 2, argv), 0);
    EXPECT_EQ(calls_, 1);
}

TEST_F(RunTool, GivesTheStatusThatTheActionHasLeft) {
    for (const std::int32_t left : {0, 1, 64, 255}) {
        left_ = left;
        EXPECT_EQ(out({"list"}), "");
        EXPECT_EQ(status_, left);
    }
}

TEST_F(RunTool, Gives255ForWhatIsNoStatus) {
    for (const std::int32_t left : {-1, 256, -99, 1 << 30}) {
        left_ = left;
        EXPECT_EQ(out({"list"}), "");
        EXPECT_EQ(status_, 255);
    }
}

TEST_F(RunTool, GivesSuccessWhenTheActionLeavesNothingWhateverWasThereBefore) {
    CommandLineExitStatus::shared().exitStatus = 3;
    EXPECT_EQ(out({"list"}), "");
    EXPECT_EQ(status_, 0);
}

TEST_F(RunTool, RunsTheOneThatNeedsNothingWhereNothingIsTyped) {
    tool_.commandLines = std::vector{declaration({}, {all}), declaration({list}, {})};
    EXPECT_EQ(out({}), "");
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(calls_, 1);
}

TEST_F(RunTool, ShowsHelpOnStandardErrorWhereNothingIsTyped) {
    platform().errorColumns = 50;
    EXPECT_EQ(said({}), Words{helpPage(tool_, 50, Emphasis::terminal).str()});
    EXPECT_EQ(status_, 64);
    platform().errorWrites.clear();
    EXPECT_EQ(runTool(tool_, ArgumentList()), 64);
    EXPECT_EQ(runTool(tool_, 0, nullptr), 64);
    EXPECT_EQ(platform().errorWrites.size(), 2U);
    EXPECT_EQ(calls_, 0);
}

// ---- What is wrong ----

TEST_F(RunTool, SaysWhatIsWrongAsItWasTyped) {
    EXPECT_EQ(said({"list", "--limt=3"}),
              Words{"items: '--limt=3' is not known; did you mean '--limit=3'?\n"
                    "items: usage: items list [-a|--all] [-n|--limit COUNT] [--owner OWNER] [-h]\n"
                    "items: 'items --help' shows all commands\n"});
    EXPECT_EQ(status_, 64);
    EXPECT_EQ(calls_, 0);
}

TEST_F(RunTool, RunsNothingWhereAValueIsGivenTwice) {
    EXPECT_EQ(said({"list", "-n", "1", "-n", "2"}),
              Words{"items: '-n' is given twice\n"
                    "items: usage: items list [-a|--all] [-n|--limit COUNT] [--owner OWNER] [-h]\n"
                    "items: 'items --help' shows all commands\n"});
    EXPECT_EQ(status_, 64);
    EXPECT_EQ(calls_, 0);
}

TEST_F(RunTool, SaysAllValuesThatDoNotHoldTogether) {
    platform().existingPaths = {"/there"};
    EXPECT_EQ(said({"list", "-n", "11", "--owner=me"}),
              Words{"items: '-n': 11 is not a number from 1 to 10\n"
                    "items: '--owner': me is not a UUID\n"});
    EXPECT_EQ(status_, 64);
    EXPECT_EQ(calls_, 0);
}

TEST_F(RunTool, AsksTheFileSystemOnceForAPath) {
    platform().existingPaths = {"/there"};
    EXPECT_EQ(said({"add", "--file", "/there"}), Words{});
    EXPECT_EQ(status_, 0);
    const std::size_t questions = platform().existenceQuestions.size();
    EXPECT_EQ(said({"add", "--file", "/not"}), Words{"items: '--file': /not does not exist\n"});
    EXPECT_EQ(status_, 64);
    EXPECT_EQ(platform().existenceQuestions.size(), questions + 1);
}

TEST_F(RunTool, RunsNothingWhereTwoFit) {
    tool_.commandLines = std::vector{declaration({list}, {}), declaration({list}, {all})};
    EXPECT_EQ(said({"list"}),
              Words{"items: 'list' fits two commands: 'list' and 'list [-a|--all]'\n"
                    "items: 'items --help' shows all commands\n"});
    EXPECT_EQ(status_, 64);
    EXPECT_EQ(calls_, 0);
}

TEST_F(RunTool, ShortensTheUsageToTheColumnsThatThereAre) {
    const char* const narrow =
        "items: 'x' is not expected here\n"
        "items: usage: items list [OPTIONS]\n"
        "items: 'items --help' shows all commands\n";
    platform().errorColumns = 40;
    EXPECT_EQ(said({"list", "x"}), Words{narrow});
    platform().errorColumns = 120;
    ::setenv("COLUMNS", "40", 1);
    EXPECT_EQ(said({"list", "x"}), Words{narrow});
    for (const char* columns : {"0", "-40", "x", ""}) {
        ::setenv("COLUMNS", columns, 1);
        EXPECT_NE(said({"list", "x"}), Words{narrow});
    }
}

// ---- Root commands ----

TEST_F(RunTool, HandsARootCommandOverAsItWasTyped) {
    EXPECT_EQ(said({"install", "--file=/not"}),
              Words{"items: This command must be run as root, and /usr/bin/sudo cannot be started: "
                    "No such file or directory.\n"});
    EXPECT_EQ(platform().replacements.at(0).arguments,
              (Words{"sudo", "-u", "root", "--", "/there/tool", "install", "--file=/not"}));
    EXPECT_EQ(status_, 77);
    EXPECT_EQ(calls_, 0);
}

TEST_F(RunTool, JudgesTheValuesOfARootCommandWhereItIsRoot) {
    platform().hasRightsOfRoot = true;
    EXPECT_EQ(said({"install", "--file=/not"}), Words{"items: '--file': /not does not exist\n"});
    EXPECT_EQ(status_, 64);
    EXPECT_EQ(said({"install"}), Words{});
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(calls_, 1);
}

TEST_F(RunTool, AsksNobodyToBecomeRootForHelp) {
    EXPECT_EQ(out({"install", "--help"}), helpPage(tool_, std::vector<std::size_t>{2}).str());
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(platform().replacements.size(), 0U);
}

// ---- Questions ----

TEST_F(RunTool, ShowsTheOverview) {
    const std::string overview = helpPage(tool_).str();
    for (const char* question : {"--help", "-h", "help"}) {
        EXPECT_EQ(out({question}), overview);
        EXPECT_EQ(status_, 0);
    }
    EXPECT_EQ(out({"--nonsense", "--help", "nonsense"}), overview);
    EXPECT_EQ(out({"help", "--nonsense"}), overview);
    EXPECT_EQ(platform().errorWrites, Words{});
}

TEST_F(RunTool, ShowsThePageOfTheCommandThatTheWordsBeforeNameInAnyPlace) {
    const std::string page = helpPage(tool_, std::vector<std::size_t>{0}).str();
    EXPECT_EQ(out({"list", "--help"}), page);
    EXPECT_EQ(out({"help", "list"}), page);
    EXPECT_EQ(out({"list", "--bogus", "--help", "x"}), page);
    EXPECT_EQ(out({"list", "-n", "--help"}), page);
    EXPECT_EQ(out({"list", "toomuch", "--help"}), page);
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(out({"add", "-h"}), helpPage(tool_, std::vector<std::size_t>{1}).str());
}

TEST_F(RunTool, ShowsThePageOfAllCommandsThatTheWordsLeave) {
    const std::string page = helpPage(tool_, std::vector<std::size_t>{5, 6}).str();
    EXPECT_EQ(out({"remote", "--help"}), page);
    EXPECT_EQ(out({"help", "remote"}), page);
    EXPECT_EQ(out({"add", "--help"}), helpPage(tool_, std::vector<std::size_t>{1}).str());
    EXPECT_EQ(out({"prune", "--help"}), helpPage(tool_, std::vector<std::size_t>{6}).str());
    EXPECT_EQ(out({"help", "remote", "prune"}), helpPage(tool_, std::vector<std::size_t>{6}).str());
}

TEST_F(RunTool, ShowsThePageOfAHiddenCommandToThoseWhoKnowIt) {
    EXPECT_EQ(out({"debug", "--help"}), helpPage(tool_, std::vector<std::size_t>{3}).str());
    EXPECT_EQ(out({"help", "debug"}), helpPage(tool_, std::vector<std::size_t>{3}).str());
}

TEST_F(RunTool, ShowsNoHiddenCommandWithOthersOfItsWords) {
    tool_.commandLines =
        std::vector{declaration({remote, prune}, {}, false, true), declaration({remote, add}, {})};
    EXPECT_EQ(out({"remote", "--help"}), helpPage(tool_, std::vector<std::size_t>{1}).str());
}

TEST_F(RunTool, ExplainsWhatIsNoCommandInsteadOfHelping) {
    const Words explained{
        "items: 'lsit' is not known; did you mean 'list'?\n"
        "items: usage: items list [-a|--all] [-n|--limit COUNT] [--owner OWNER] "
        "[-h]\n"
        "items: 'items --help' shows all commands\n"};
    EXPECT_EQ(said({"lsit", "--help"}), explained);
    EXPECT_EQ(status_, 64);
    EXPECT_EQ(said({"help", "lsit"}), explained);
    EXPECT_EQ(status_, 64);
}

TEST_F(RunTool, SaysThatThereIsNoHelpOnWhatAHiddenOperandTakes) {
    tool_.commandLines =
        std::vector{declaration({list}, {}), declaration({label}, {}, false, true)};
    tool_.operands = {label};
    EXPECT_EQ(said({"this", "--help"}), Words{"items: there is no help on that\n"});
    EXPECT_EQ(status_, 64);
}

TEST_F(RunTool, TellsWhatIsWrongWhereACommandHasAUseForTheOptionItself) {
    EXPECT_EQ(out({"list", "-h"}), "");
    EXPECT_EQ(calls_, 1);
    EXPECT_EQ(said({"list", "-h", "x"}).size(), 1U);
    EXPECT_EQ(status_, 64);
}

TEST_F(RunTool, LooksAtNoQuestionAfterTheEndOfOptions) {
    EXPECT_EQ(said({"list", "--", "--help"}).size(), 1U);
    EXPECT_EQ(status_, 64);
}

TEST_F(RunTool, LooksAtNoQuestionWithinTheLineOfAnotherCommand) {
    EXPECT_EQ(out({"in", "ls", "--help"}), "");
    EXPECT_EQ(calls_, 1);
    EXPECT_EQ(said({"in", "--bogus", "ls", "--help"}).size(), 1U);
    EXPECT_EQ(status_, 64);
    EXPECT_EQ(out({"in", "--help"}), helpPage(tool_, std::vector<std::size_t>{4}).str());
}

TEST_F(RunTool, LooksAtNoQuestionThatOneOfTheCommandsMeantWouldHandOn) {
    tool_.commandLines = std::vector{declaration({in, command}, {}), declaration({in}, {all})};
    EXPECT_EQ(said({"in", "--bogus", "ls", "--help"}).size(), 1U);
    EXPECT_EQ(status_, 64);
}

TEST_F(RunTool, TakesNoValueForAQuestion) {
    EXPECT_EQ(said({"add", "--label", "--version", "x"}).size(), 1U);
    EXPECT_EQ(status_, 64);
    EXPECT_EQ(out({"add", "--label", "--version"}), "");
    EXPECT_EQ(calls_, 1);
}

TEST_F(RunTool, SaysItsVersionWhereItHasOne) {
    EXPECT_EQ(out({"--version"}), "items 1.4.2\n");
    EXPECT_EQ(status_, 0);
    tool_.version = "";
    EXPECT_EQ(said({"--version"}).size(), 1U);
    EXPECT_EQ(status_, 64);
}

TEST_F(RunTool, PrintsTheCompletionOfEachShell) {
    EXPECT_EQ(out({"--completion", "bash"}), completionScript(tool_, Shell::bash).str());
    EXPECT_EQ(out({"--completion=zsh"}), completionScript(tool_, Shell::zsh).str());
    EXPECT_EQ(out({"--completion", "fish"}), completionScript(tool_, Shell::fish).str());
    EXPECT_EQ(status_, 0);
}

TEST_F(RunTool, NamesTheShellsWhereNoneOfThemIsGiven) {
    const Words line{"items: '--completion' needs a shell: bash, zsh or fish\n"};
    EXPECT_EQ(said({"--completion"}), line);
    EXPECT_EQ(said({"--completion", "csh"}), line);
    EXPECT_EQ(said({"--completion="}), line);
    EXPECT_EQ(status_, 64);
}

TEST_F(RunTool, SaysThatNoShellCanCompleteSomeNames) {
    tool_.name = "two words";
    EXPECT_EQ(said({"--completion", "bash"}),
              Words{"two words: no shell can complete a tool of this name\n"});
    EXPECT_EQ(status_, 64);
}

TEST_F(RunTool, PrintsTheManualPageAndTheDescription) {
    EXPECT_EQ(out({"--manual"}), manualPage(tool_).str());
    EXPECT_EQ(out({"--describe"}), description(tool_).str());
    EXPECT_EQ(status_, 0);
}

TEST_F(RunTool, LetsADeclarationHaveItsOwnAnswer) {
    const ParameterNone help{{"help", "--help", "--version"}, "h"};
    tool_.commandLines = std::vector{declaration({help}, {}), declaration({list}, {})};
    for (const char* question : {"help", "--help", "--version"}) EXPECT_EQ(out({question}), "");
    EXPECT_EQ(calls_, 3);
}

TEST_F(RunTool, HasAnOverviewOfNoCommands) {
    tool_.commandLines = {};
    EXPECT_EQ(out({"--help"}), helpPage(tool_).str());
    EXPECT_EQ(status_, 0);
}

// ---- The look of pages ----

TEST_F(RunTool, FillsTheTerminalThatStandardOutputLeadsTo) {
    platform().outputColumns = 50;
    platform().errorColumns = 60;
    EXPECT_EQ(out({"--help"}), helpPage(tool_, 50, Emphasis::terminal).str());
    ::setenv("COLUMNS", "70", 1);
    EXPECT_EQ(out({"--help"}), helpPage(tool_, 70, Emphasis::terminal).str());
}

TEST_F(RunTool, UsesNoEscapeSequencesWhereNobodyWantsThem) {
    platform().outputColumns = 50;
    const std::string plain = helpPage(tool_, 50).str();
    ::setenv("NO_COLOR", "1", 1);
    EXPECT_EQ(out({"--help"}), plain);
    ::setenv("NO_COLOR", "", 1);
    EXPECT_NE(out({"--help"}), plain);
    ::setenv("TERM", "dumb", 1);
    EXPECT_EQ(out({"--help"}), plain);
    ::unsetenv("TERM");
    EXPECT_EQ(out({"--help"}), plain);
}

// ---- Completion ----

TEST_F(RunTool, AnswersAShellBeforeAnythingElse) {
    ::setenv("OPTRELLA_COMPLETE", "1", 1);
    const std::vector<Text> typed{"list", "--help", ""};
    EXPECT_EQ(out(typed), Internal::completionAnswer(tool_, typed));
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(calls_, 0);
    EXPECT_EQ(std::getenv("OPTRELLA_COMPLETE"), nullptr);
}

TEST_F(RunTool, RunsNothingForAQuestionThatItDoesNotUnderstand) {
    for (const char* protocol : {"2", ""}) {
        ::setenv("OPTRELLA_COMPLETE", protocol, 1);
        EXPECT_EQ(said({"list"}), Words{});
        EXPECT_EQ(status_, 64);
    }
    EXPECT_EQ(calls_, 0);
}

}  // namespace
