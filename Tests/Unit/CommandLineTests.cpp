#include "Optrella/CommandLine.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>
#include <unordered_set>
#include <vector>

#include "Optrella/CommandLine/Matching.hpp"
#include "Optrella/CommandLine/Validation.hpp"
#include "Optrella/CommandLineExitStatus.hpp"
#include "Support/Capture.hpp"
#include "Support/Death.hpp"
#include "Support/FakePlatform.hpp"

namespace {

using namespace Optrella;
using Internal::Declaration;
using Tests::platform;
using Tests::printed;

void doNothing(const Parameters&) {}

CommandLinePossibility command(Parameters required, Parameters optional = {}) {
    return {false, std::move(required), std::move(optional), "help", false, doNothing};
}

CommandLinePossibility running(Parameters required, Internal::Action run) {
    return {false, std::move(required), {}, "help", false, std::move(run)};
}

CommandLinePossibility rootCommand(Parameters required) {
    return {true, std::move(required), {}, "help", false, doNothing};
}

using Texts = std::vector<std::string>;

// A parameter as "tag=value", with the first tag.
Texts shown(const Parameters& parameters) {
    Texts texts;
    for (const ParameterProtocol& parameter : parameters) {
        texts.push_back(parameter.firstTag().str() + "=" + parameter.common().userValue.str());
    }
    return texts;
}

Parameters copied(Internal::KeptList views) { return Parameters(views.begin(), views.end()); }

// What is given of a declaration that the arguments fit.
std::optional<Texts> filled(const CommandLinePossibility& declaration,
                            const std::vector<Text>& arguments) {
    const auto fit = Internal::Matcher(arguments).couldRun(declaration);
    return fit ? std::optional(shown(fit->given)) : std::nullopt;
}

const ParameterNone flagA{{"-a"}, ""};
const ParameterNone flagB{{"-b", "--bee"}, ""};
const ParameterString textX{{"-x", "--ex"}, "x", ""};
const ParameterString textY{{"-y"}, "y", ""};

TEST(CouldRun, GivesAFlagItsValueWhereTheToolHasSaidThatOneFollows) {
    ParameterNone flag{{"-f"}, ""};
    flag.common.hasParameter = true;
    EXPECT_EQ(filled(command({flag}), {"-f", "x"}), Texts{"-f=x"});
    ParameterString text{{"-t"}, "t", ""};
    text.common.hasParameter = false;
    EXPECT_EQ(filled(command({text}), {"-t"}), Texts{"-t="});
}

// ---- parsingError ----

TEST(ParsingError, CaseAndTextBelongTogether) {
    const std::pair<parsingError, const char*> cases[] = {
        {parsingError::NoError, "Parse successful"},
        {parsingError::MissingParameter, "Missing Parameter"},
        {parsingError::NoMatchingLine, "Unknown command line"},
        {parsingError::NoCommandLine, "No command line specified"}};
    for (const auto& [error, text] : cases) {
        EXPECT_EQ(rawValue(error), text);
        EXPECT_EQ(fromRawValue<parsingError>(text), error);
    }
}

TEST(ParsingErrorDeathTest, AnotherValueStopsTheProcess) {
    EXPECT_SILENT_STOP(rawValue(static_cast<parsingError>(4)));
}

TEST(ParsingError, HashesAsItsTextDoes) {
    EXPECT_EQ(std::hash<parsingError>()(parsingError::NoMatchingLine),
              std::hash<Text>()("Unknown command line"));
    EXPECT_EQ((std::unordered_set{parsingError::NoError, parsingError::NoError,
                                  parsingError::NoCommandLine})
                  .size(),
              2U);
}

// ---- The declaration ----

TEST(CommandLinePossibility, KeepsWhatItIsGivenUnchanged) {
    const CommandLinePossibility declaration{
        true, {flagA, flagA, textX}, {textY}, "The help", true, doNothing};
    EXPECT_EQ(shown(copied(Declaration::required(declaration))), (Texts{"-a=", "-a=", "-x="}));
    EXPECT_EQ(shown(copied(Declaration::optional(declaration))), (Texts{"-y="}));
    EXPECT_EQ(Declaration::help(declaration), "The help");
    EXPECT_TRUE(Declaration::requiresRoot(declaration));
    EXPECT_TRUE(Declaration::hidden(declaration));
}

TEST(CommandLinePossibility, CopiesShareTheActionAndItsState) {
    int calls = 0;
    const auto counting = [&calls, own = 0](const Parameters&) mutable { calls = ++own; };
    const CommandLinePossibility declaration = running({flagA}, counting);
    const CommandLinePossibility copy = declaration;
    EXPECT_EQ(parse({declaration}, {"tool", "-a"}), parsingError::NoError);
    EXPECT_EQ(parse({copy}, {"tool", "-a"}), parsingError::NoError);
    EXPECT_EQ(calls, 2);
}

// ---- Matching ----

// A kind of a tool's own that keeps a journal of its copies being stored into.
struct Journalled {
    commonDetails common{.tags = {"-j"}, .parameterName = "text"};
    Texts* journal = nullptr;

    void storeUserValue(Text newValue) {
        journal->push_back(newValue.str());
        common.userValue = "<" + newValue.str() + ">";
    }
};

TEST(CouldRun, AnOwnStoreUserValueIsCalledOnceForEachValueAndItsResultIsKept) {
    Texts journal;
    const Journalled own{.journal = &journal};
    EXPECT_EQ(filled(command({own, textX}, {}), {"-j", "1", "-x", "2"}), (Texts{"-j=<1>", "-x=2"}));
    EXPECT_EQ(journal, (Texts{"1"}));
    EXPECT_EQ(filled(command({}, {own}), {"-j", "1", "-j", "2"}), (Texts{"-j=<1>", "-j=<2>"}));
    EXPECT_EQ(own.common.userValue, "");
}

TEST(CouldRun, AnOwnStoreUserValueIsCalledOnWalksThatComeToNothingToo) {
    Texts journal;
    const Journalled own{.journal = &journal};
    EXPECT_EQ(filled(command({own, flagA}), {"-j", "1", "-z"}), std::nullopt);
    EXPECT_EQ(filled(command({own, flagA}), {"-j", "2"}), std::nullopt);
    EXPECT_EQ(journal, (Texts{"1", "2"}));
    EXPECT_EQ(printed([&] {
                  EXPECT_FALSE(filled(command({own}), {"-j", "3", "-j"}));
              }),
              "Missing argument for -j\n");
    EXPECT_EQ(journal, (Texts{"1", "2", "3"}));
}

TEST(CouldRun, AnOwnStoreUserValueComesBeforeTheMissingArgumentIsPrinted) {
    struct Printing {
        commonDetails common{.tags = {"-p"}, .parameterName = "text"};
        void storeUserValue(const Text& newValue) { std::printf("%s\n", newValue.c_str()); }
    };
    EXPECT_EQ(printed([] {
                  EXPECT_FALSE(filled(command({}, {Printing(), textX}), {"-p", "1", "-x"}));
              }),
              "1\nMissing argument for -x\n");
}

// ---- Validation ----

const ParameterList listL{{"-l", "--list"}, {"a", "b"}, "l", ""};

// Says what a test wants it to say, and counts how often it is asked.
struct Judged {
    commonDetails common = {.tags = {"-j"}};
    std::optional<Text> message;
    int* questions;

    [[nodiscard]] std::optional<Text> validate() const {
        ++*questions;
        return message;
    }
};

TEST(ValidateParameters, AsksEachParameterOnce) {
    int questions = 0;
    EXPECT_TRUE(Internal::validateParameters({Judged{.message = {}, .questions = &questions}}));
    EXPECT_EQ(questions, 1);
}

TEST(ValidateParameters, TakesAnEmptyMessageForOne) {
    int questions = 0;
    EXPECT_EQ(printed([&] {
                  EXPECT_FALSE(Internal::validateParameters(
                      {Judged{.message = "", .questions = &questions}}));
              }),
              "Validation of parameter -j failed : \n");
}

TEST(ValidateParameters, PrintsAMessageWithANULToItsEnd) {
    using namespace std::string_literals;
    int questions = 0;
    EXPECT_EQ(printed([&] {
                  EXPECT_FALSE(Internal::validateParameters(
                      {Judged{.message = "a\0b"s, .questions = &questions}}));
              }),
              "Validation of parameter -j failed : a\0b\n"s);
}

// A root command can end its process with status 0. When that ends a test, and with it all later
// ones, the program has failed; in the child of a death test it is expected.
class SurvivingTest : public Tests::PolicyTest {
protected:
    SurvivingTest() {
        [[maybe_unused]] static const int registered = std::atexit([] {
            if (::getpid() == tester) std::_Exit(97);
        });
        tester = ::getpid();
    }
    ~SurvivingTest() override { tester = 0; }

private:
    inline static pid_t tester = 0;
};

class ValidatePermissionsTest : public SurvivingTest {};

TEST_F(ValidatePermissionsTest, ACommandWithoutRootAsksNothing) {
    EXPECT_TRUE(Internal::validatePermissions(false));
    EXPECT_EQ(platform().userQuestions, 0);
    EXPECT_TRUE(platform().membershipQuestions.empty());
}

TEST_F(ValidatePermissionsTest, AMemberOfGroupZeroMayRunARootCommand) {
    platform().groupsOfUser = {0};
    EXPECT_EQ(printed([] { EXPECT_TRUE(Internal::validatePermissions(true)); }), "");
    const std::vector<Tests::FakePlatform::Membership> asked{{"tester", 0}};
    EXPECT_EQ(platform().membershipQuestions, asked);
}

TEST_F(ValidatePermissionsTest, AnybodyElseIsToldToUseSudo) {
    platform().groupsOfUser = {20};
    EXPECT_EQ(printed([] { EXPECT_FALSE(Internal::validatePermissions(true)); }),
              "Requested command line must be run as root. Try using sudo.\n");
}

TEST_F(ValidatePermissionsTest, AnAdministratorWithoutTheRightPasswordIsToldToUseSudo) {
    platform().groupsOfUser = {80};
    platform().typedLines = {"wrong"};
    EXPECT_EQ(printed([] { EXPECT_FALSE(Internal::validatePermissions(true)); }),
              "Sorry, try again.\n"
              "Requested command line must be run as root. Try using sudo.\n");
    EXPECT_TRUE(platform().children.empty());
}

TEST_F(ValidatePermissionsTest, ForGroupZeroComesBeforeThePrompt) {
    platform().groupsOfUser = {0, 80};
    platform().typedLines = {"right pass"};
    EXPECT_TRUE(Internal::validatePermissions(true));
    EXPECT_TRUE(platform().prompts.empty());
}

TEST_F(ValidatePermissionsTest, AProcessIsConcealedWhileItHasAPasswordAndNotAfter) {
    platform().groupsOfUser = {80};
    platform().typedLines = {"wrong", "wrong"};
    printed([] { EXPECT_FALSE(Internal::validatePermissions(true)); });
    EXPECT_EQ(platform().concealedThen, std::vector<bool>(5, true));  // two are checked, of three
    EXPECT_EQ(platform().concealments, 0);
}

TEST_F(ValidatePermissionsTest, AProcessIsNotConcealedWhereNoPasswordIsAskedFor) {
    platform().groupsOfUser = {0};
    EXPECT_TRUE(Internal::validatePermissions(true));
    EXPECT_EQ(platform().concealments, 0);
}

// Makes the process end with 99 unless it has started itself again with its own arguments, and
// prints a word at its end, which shows that it ended by exit.
void expectSecondStartAtExit() {
    std::atexit([] {
        const std::vector<Tests::FakePlatform::Child> expected{
            {"/usr/bin/sudo", {"-S", "./tool", "install", "a b"}, "right pass\n"}};
        if (platform().children != expected || platform().concealments != 1) std::_Exit(99);
        if (platform().concealedThen != std::vector<bool>(3, true)) std::_Exit(97);
        std::fputs("the end", stderr);
    });
}

TEST_F(ValidatePermissionsTest, AnAdministratorRunsTheToolAgainAndThisProcessEndsWithStatusZero) {
    EXPECT_EXIT(
        {
            Tests::joinStreams();
            platform().groupsOfUser = {80};
            platform().typedLines = {"right pass"};
            platform().childBlocks = {"p\nfrom the child"};
            CommandLineExitStatus::shared().exitStatus = 7;
            expectSecondStartAtExit();
            static_cast<void>(Internal::validatePermissions(true));
            std::_Exit(98);
        },
        testing::ExitedWithCode(0), testing::Eq("from the child\nthe end"));
}

// ---- Parse ----

class ParseTest : public SurvivingTest {
protected:
    // What the action of the one declaration got.
    static Texts given(const CommandLinePossibility& declaration, const std::vector<Text>& line) {
        Texts texts;
        const CommandLinePossibility recording{
            Declaration::requiresRoot(declaration),
            copied(Declaration::required(declaration)),
            copied(Declaration::optional(declaration)),
            "help",
            false,
            [&texts](const Parameters& parameters) { texts = shown(parameters); }};
        EXPECT_EQ(parse({recording}, line), parsingError::NoError);
        return texts;
    }
};

TEST_F(ParseTest, AnswersNoCommandLineWithoutArguments) {
    EXPECT_EQ(printed([] {
                  const CommandLinePossibility declarations[] = {command({})};
                  const char* const argv[] = {"tool", nullptr};
                  EXPECT_EQ(parse(declarations, {"tool"}), parsingError::NoCommandLine);
                  EXPECT_EQ(parse(declarations, std::vector<Text>()), parsingError::NoCommandLine);
                  EXPECT_EQ(parse(declarations, 1, argv), parsingError::NoCommandLine);
                  EXPECT_EQ(parse(declarations, 0, argv + 1), parsingError::NoCommandLine);
                  EXPECT_EQ(parse({}, {}), parsingError::NoCommandLine);
              }),
              "");
    EXPECT_EQ(platform().threadsStarted, 0);
}

TEST_F(ParseTest, TakesArgcAndArgv) {
    const char* const argv[] = {"tool", "-x", "a\xFF", nullptr};
    Texts texts;
    const CommandLinePossibility recording =
        running({textX}, [&texts](const Parameters& parameters) { texts = shown(parameters); });
    EXPECT_EQ(parse({recording}, 3, argv), parsingError::NoError);
    EXPECT_EQ(texts, (Texts{"-x=a\xFF"}));
}

TEST_F(ParseTest, CallsTheActionOnAnotherThread) {
    std::thread::id actionThread;
    const auto declaration =
        running({flagA}, [&](const Parameters&) { actionThread = std::this_thread::get_id(); });
    EXPECT_EQ(parse({declaration}, {"tool", "-a"}), parsingError::NoError);
    EXPECT_NE(actionThread, std::thread::id());
    EXPECT_NE(actionThread, std::this_thread::get_id());
}

// Takes the tool's declarations away while its value is judged.
struct Clearing {
    commonDetails common = {.tags = {"-c"}};
    std::vector<CommandLinePossibility>* declarations;

    [[nodiscard]] std::optional<Text> validate() const {
        declarations->clear();
        declarations->shrink_to_fit();
        return std::nullopt;
    }
};

TEST_F(ParseTest, RunsTheActionOfADeclarationThatIsGoneWhenItIsJudged) {
    std::vector<CommandLinePossibility> declarations;
    std::string seen;
    declarations.emplace_back(
        false, Parameters{Clearing{.declarations = &declarations}}, Parameters{}, Text("help"),
        false, [&seen](const Parameters& given) { seen = given.front().common().userValue.str(); });
    EXPECT_EQ(parse(declarations, {"tool", "-c", "a value"}), parsingError::NoError);
    EXPECT_TRUE(declarations.empty());
    EXPECT_EQ(seen, "a value");
}

TEST_F(ParseTest, AnInvalidValueIsNotTestedForPermission) {
    const CommandLinePossibility root{true, {listL}, {}, "help", false, doNothing};
    EXPECT_EQ(printed([&] {
                  EXPECT_EQ(parse({root}, {"tool", "-l", "x"}), parsingError::NoMatchingLine);
              }),
              "Validation of parameter -l failed : Item x is not a valid option. It must be one "
              "of: a, b\n");
    EXPECT_EQ(platform().userQuestions, 0);
}

TEST_F(ParseTest, RunsTheToolAgainWithItsOwnStartArgumentsAndNotWithThePassedInOnes) {
    EXPECT_EXIT(
        {
            platform().groupsOfUser = {80};
            platform().typedLines = {"right pass"};
            expectSecondStartAtExit();
            static_cast<void>(parse({rootCommand({flagA})}, {"other", "-a"}));
            std::_Exit(98);
        },
        testing::ExitedWithCode(0), testing::Eq("the end"));
}

TEST_F(ParseTest, WorksWithinAnAction) {
    Texts order;
    const auto inner = running({flagB}, [&](const Parameters&) { order.emplace_back("inner"); });
    const auto outer = running({flagA}, [&](const Parameters&) {
        order.emplace_back("outer begins");
        EXPECT_EQ(parse({inner}, {"tool", "-b"}), parsingError::NoError);
        order.emplace_back("outer ends");
    });
    EXPECT_EQ(parse({outer}, {"tool", "-a"}), parsingError::NoError);
    EXPECT_EQ(order, (Texts{"outer begins", "inner", "outer ends"}));
}

TEST_F(ParseTest, KeepsTheStateOfAnActionOverTwoCalls) {
    int last = 0;
    const auto counting =
        running({flagA}, [&last, own = 0](const Parameters&) mutable { last = ++own; });
    EXPECT_EQ(parse({counting}, {"tool", "-a"}), parsingError::NoError);
    EXPECT_EQ(parse({counting}, {"tool", "-a"}), parsingError::NoError);
    EXPECT_EQ(last, 2);
}

TEST_F(ParseTest, StopsSilentlyWhenNoThreadCanBeStarted) {
    platform().canStartThreads = false;
    EXPECT_SILENT_STOP(parse({command({flagA})}, {"tool", "-a"}));
}

TEST_F(ParseTest, RunsTheActionEvenWhenItDestroysTheDeclarationsAndTheArguments) {
    Texts given;
    std::vector<CommandLinePossibility> declarations;
    std::vector<Text> line{"tool", "-x", std::string("a value that stands on the heap")};
    declarations.push_back(running({textX}, [&](const Parameters& parameters) {
        declarations.clear();
        line.clear();
        given = shown(parameters);
    }));
    EXPECT_EQ(parse(declarations, line), parsingError::NoError);
    EXPECT_EQ(given, (Texts{"-x=a value that stands on the heap"}));
}

TEST_F(ParseTest, PrintsInOrderWithTheToolsOwnPrintfAndStreams) {
    EXPECT_EQ(
        printed([] {
            std::printf("before\n");
            EXPECT_EQ(parse({command({textX})}, {"tool", "-x"}), parsingError::NoMatchingLine);
            std::cout << "after\n";
        }),
        "before\nMissing argument for -x\n"
        "[\"-x\"] is not a valid command line.\n Please refer to the help below.\nafter\n");
}

TEST_F(ParseTest, TakesAHundredThousandArguments) {
    std::vector<Text> line{"tool"};
    for (int i = 0; i < 50000; ++i) {
        line.emplace_back("-x");
        line.emplace_back(std::to_string(i));
    }
    const Texts texts = given(command({}, {textX}), line);
    ASSERT_EQ(texts.size(), 50000U);
    EXPECT_EQ(texts.front(), "-x=0");
    EXPECT_EQ(texts.back(), "-x=49999");
}

TEST_F(ParseTest, TakesArgumentsOfAMebibyte) {
    const std::string large(std::size_t{1} << 20, 'a');
    EXPECT_EQ(given(command({textX}), {"tool", "-x", large}), (Texts{"-x=" + large}));
    EXPECT_EQ(
        printed([&] {
            EXPECT_EQ(parse({command({textX})}, {"tool", large}), parsingError::NoMatchingLine);
        }),
        "[\"" + large + "\"] is not a valid command line.\n Please refer to the help below.\n");
}

// ---- A kind of a tool's own ----

struct PortParameter {
    commonDetails common;
    bool mayBePrivileged = false;

    PortParameter(Tags tags, bool privileged, Text tagHelp)
        : common{.tagHelp = std::move(tagHelp), .tags = std::move(tags), .parameterName = "port"},
          mayBePrivileged(privileged) {}

    [[nodiscard]] std::optional<int> number() const {
        ParameterNumber number{{}, "", 0, 65535, ""};
        number.storeUserValue(common.userValue);
        const std::int64_t value = number.getValue();
        if (value < (mayBePrivileged ? 1 : 1024) || value > 65535) return std::nullopt;
        return static_cast<int>(value);
    }
    [[nodiscard]] std::optional<Text> validate() const {
        if (number()) return std::nullopt;
        return Text(common.userValue.str() + " is not a port");
    }
};

class OwnKindTest : public Tests::PolicyTest {
protected:
    const PortParameter port{{"-p", "--port"}, false, "Port to listen on"};
};

TEST_F(OwnKindTest, IsMatchedValidatedAndFoundAgainInTheAction) {
    std::optional<int> number;
    const CommandLinePossibility serve{
        false, {flagA, port}, {}, "Serve.", false, [&](const Parameters& given) {
            for (const ParameterProtocol& parameter : given) {
                if (parameter.isEqualTo(port)) number = parameter.as<PortParameter>()->number();
                if (parameter.isEqualTo(flagA)) {
                    EXPECT_EQ(parameter.as<PortParameter>(), nullptr);
                }
            }
        }};
    EXPECT_EQ(parse({serve}, {"tool", "--port", "8080", "-a"}), parsingError::NoError);
    EXPECT_EQ(number, 8080);
}

TEST_F(OwnKindTest, IsRefusedByItsOwnValidate) {
    EXPECT_EQ(
        printed([&] {
            EXPECT_EQ(parse({command({port})}, {"tool", "-p", "80"}), parsingError::NoMatchingLine);
        }),
        "Validation of parameter -p failed : 80 is not a port\n");
}

}  // namespace
