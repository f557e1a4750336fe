#include "Optrella/CompletionScript.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Optrella/CompletionScript/Answer.hpp"

namespace {

using namespace Optrella;
using enum ParameterFileURL::urlType;
using enum ParameterFileURL::existState;

const ParameterNone list{{"list"}, ""};
const ParameterNone start{{"start"}, ""};
const ParameterNone show{{"show"}, "Show one"};
const ParameterNone color{{"-c", "--color"}, "In colour"};
void nothing(const Parameters&) {}

std::string answer(const Tool& tool, const std::vector<Text>& typed) {
    return Internal::completionAnswer(tool, typed);
}

CommandLinePossibility declared(const std::vector<ParameterProtocol>& required,
                                const std::vector<ParameterProtocol>& optional = {},
                                const Text& help = "", bool isHidden = false) {
    return {false, required, optional, help, isHidden, nothing};
}

// ---- The answer ----

TEST(CompletionAnswer, IsALineAnOfferOfKindWordAndHelp) {
    const ParameterNone orders[] = {{{"name"}, "By name"}, {{"date"}, ""}};
    const ParameterList sort{{"--sort"}, orders, "order", "Sort order"};
    const Tool tool{.commandLines = {declared({show}, {sort, color})}};
    EXPECT_EQ(answer(tool, {""}), "tag\tshow\tShow one\n");
    EXPECT_EQ(answer(tool, {"show", ""}), "tag\t--sort\tSort order\ntag\t--color\tIn colour\n");
    EXPECT_EQ(answer(tool, {"show", "--sort", ""}),
              "choice\tname\tBy name\n"
              "choice\tdate\t\n");
}

TEST(CompletionAnswer, OffersWhatBeginsWithTheLastWordAlone) {
    const Tool tool{.commandLines = {declared({show}, {color})}};
    EXPECT_EQ(answer(tool, {"show", "-"}), "tag\t-c\tIn colour\ntag\t--color\tIn colour\n");
    EXPECT_EQ(answer(tool, {"show", "x"}), "");
    EXPECT_EQ(answer(tool, {"x", ""}), "");
}

TEST(CompletionAnswer, TakesNoWordsForAnEmptyOne) {
    const Tool tool{.commandLines = {declared({show})}};
    EXPECT_EQ(answer(tool, {}), answer(tool, {""}));
    EXPECT_EQ(answer(tool, {}), "tag\tshow\tShow one\n");
}

TEST(CompletionAnswer, OffersTheValuesOfACompleter) {
    const ParameterString session{{"--session"}, "session", "A session"};
    const Tool tool{.commandLines = {declared({show, session})},
                    .operands = {session},
                    .completers = {{session, [] {
                                        return std::vector<Text>{"a b", "c"};
                                    }}}};
    EXPECT_EQ(answer(tool, {"show", ""}), "value\ta b\tA session\nvalue\tc\tA session\n");
}

TEST(CompletionAnswer, NamesAValueThatNobodyCanList) {
    const ParameterString label{{"--label"}, "label", "What it says"};
    const ParameterString bare{{"--bare"}, "bare", ""};
    const ParameterString nameless{{"--nameless"}, "", "Without a name"};
    const Tool tool{.commandLines = {declared({show}, {label, bare, nameless})}};
    EXPECT_EQ(answer(tool, {"show", "--label", ""}), "value\t\tLABEL: What it says\n");
    EXPECT_EQ(answer(tool, {"show", "--bare", ""}), "value\t\tBARE\n");
    EXPECT_EQ(answer(tool, {"show", "--nameless", ""}), "value\t\tWithout a name\n");
}

TEST(CompletionAnswer, SaysWhichPathsAShellHasToComplete) {
    const ParameterFileURL in{{"--in"}, file, exist, "file", "Input"};
    const ParameterFileURL to{{"--to"}, folder, vague, "directory", "Target"};
    const ParameterFileURL at{{"--at"}, fileOrFolder, absent, "path", ""};
    const Tool tool{.commandLines = {declared({show}, {in, to, at})}};
    EXPECT_EQ(answer(tool, {"show", "--in", "x"}), "file\t\tFILE: Input\n");
    EXPECT_EQ(answer(tool, {"show", "--to", "x"}), "directory\t\tDIRECTORY: Target\n");
    EXPECT_EQ(answer(tool, {"show", "--at", "x"}), "path\t\tPATH\n");
    EXPECT_EQ(answer(tool, {"show", "--to=x"}), "directory\t--to=\tDIRECTORY: Target\n");
}

TEST(CompletionAnswer, GivesAWordOfACommandTheHelpOfTheCommandWhereOneIsLeft) {
    const ParameterNone volume{{"volume"}, ""};
    const ParameterNone create{{"create", "new"}, ""};
    const Tool tool{.commandLines = {declared({list}, {}, "List all."),
                                     declared({list, volume}, {}, "Nobody sees this.", true),
                                     declared({show}, {}, "Not this."),
                                     declared({volume, start}, {}, "Start a volume."),
                                     declared({volume, create}, {}, "Create a volume."),
                                     declared({create, start}, {}, "Create a start.")}};
    EXPECT_EQ(answer(tool, {""}),
              "tag\tlist\tList all.\n"
              "tag\tshow\tShow one\n"
              "tag\tvolume\t\n"
              "tag\tstart\t\n"
              "tag\tcreate\t\n");
    EXPECT_EQ(answer(tool, {"volume", ""}),
              "tag\tstart\tStart a volume.\ntag\tcreate\tCreate a volume.\n");
    EXPECT_EQ(answer(tool, {"volume", "n"}), "tag\tnew\tCreate a volume.\n");
}

TEST(CompletionAnswer, IsReadConventionallyHoweverTheToolIsSpelled) {
    const ParameterString item{{"--item"}, "item", "An item"};
    const Tool tool{.commandLines = {declared({show, item}, {color})},
                    .operands = {item},
                    .spelling = Spelling::exact};
    EXPECT_EQ(answer(tool, {"show", "x", ""}), "tag\t--color\tIn colour\n");
    EXPECT_EQ(answer(tool, {"--item=x", ""}), "tag\tshow\tShow one\n");
}

// ---- Values after an equals sign ----

class AssignedValue : public testing::Test {
protected:
    const ParameterNone orders[2] = {{{"name"}, "By name"}, {{"date=up"}, ""}};
    const ParameterList sort{{"-s", "--sort"}, orders, "order", "Sort order"};
    const ParameterString label{{"--label"}, "label", ""};
    const ParameterNone force{{"--force"}, ""};
    const ParameterString items{{"--items"}, "item", "Items"};
    Tool tool{.commandLines = {declared({list}, {sort, label}), declared({show}, {force, items})},
              .operands = {{items, Takes::many}}};
};

TEST_F(AssignedValue, IsOfferedAsAWholeWord) {
    EXPECT_EQ(answer(tool, {"list", "--sort="}),
              "choice\t--sort=name\tBy name\nchoice\t--sort=date=up\t\n");
    EXPECT_EQ(answer(tool, {"list", "--sort=d"}), "choice\t--sort=date=up\t\n");
    EXPECT_EQ(answer(tool, {"list", "--sort=date="}), "choice\t--sort=date=up\t\n");
    EXPECT_EQ(answer(tool, {"--sort=n"}), "choice\t--sort=name\tBy name\n");
    EXPECT_EQ(answer(tool, {"list", "--label=x"}), "value\t\tLABEL\n");
}

TEST_F(AssignedValue, IsOfferedWhereALineReadsItAlone) {
    EXPECT_EQ(answer(tool, {"list", "--sort=name", "--sort="}), "");
    EXPECT_EQ(answer(tool, {"list", "--label", "--sort="}), "");
    EXPECT_EQ(answer(tool, {"list", "-s="}), "");
    EXPECT_EQ(answer(tool, {"list", "--nothing="}), "");
    EXPECT_EQ(answer(tool, {"show", "--sort="}), "");
}

TEST_F(AssignedValue, IsNoneOfAFlagThoughAnOperandMayFollow) {
    EXPECT_EQ(answer(tool, {"show", "--force", "x"}), "value\t\tITEM: Items\n");
    EXPECT_EQ(answer(tool, {"show", "--force=x"}), "");
}

TEST_F(AssignedValue, IsNoneAfterTheEndOfTheOptions) {
    EXPECT_EQ(answer(tool, {"show", "--", "--items=x"}), "");
}

TEST_F(AssignedValue, IsOfferedWhereTheSameTagIsAFlagElsewhere) {
    const ParameterNone flag{{"--sort"}, ""};
    tool.commandLines = {declared({list}, {sort}), declared({list, show}, {flag, items})};
    EXPECT_EQ(answer(tool, {"list", "--sort=n"}), "choice\t--sort=name\tBy name\n");
}

// ---- Control characters ----

TEST(CompletionAnswer, HoldsNoControlCharacterInAHelp) {
    const ParameterNone help{{"a"}, "one\r\ntwo\tthree\x1b[31m\x7f\u0085\u009b\x01."};
    const Tool tool{.commandLines = {declared({help})}};
    EXPECT_EQ(answer(tool, {""}), "tag\ta\tone two three[31m.\n");
}

TEST(CompletionAnswer, LeavesAWordOutThatHoldsAControlCharacter) {
    const ParameterString value{{"--value"}, "value", ""};
    std::vector<Text> values{"tab\t", "\nline", "\x1b", "\x7f", "\u0085", "", "fine"};
    const Tool tool{.commandLines = {declared({show, value})},
                    .operands = {value},
                    .completers = {{value, [&] { return values; }}}};
    EXPECT_EQ(answer(tool, {"show", ""}), "value\tfine\t\n");
}

TEST(CompletionAnswer, KeepsBytesThatAreNotUTF8) {
    const ParameterString value{{"--value"}, "value", "\xfe"};
    const Tool tool{.commandLines = {declared({show, value})},
                    .operands = {value},
                    .completers = {{value, [] {
                                        return std::vector<Text>{"a\xff\x9b", "\xff\xff"};
                                    }}}};
    EXPECT_EQ(answer(tool, {"show", ""}), "value\ta\xff\x9b\t\xfe\nvalue\t\xff\xff\t\xfe\n");
    EXPECT_EQ(answer(tool, {"show", "a\xff"}), "value\ta\xff\x9b\t\xfe\n");
}

TEST(CompletionAnswer, MakesASpaceOfEachLineEndInAHelp) {
    const ParameterNone help{{"a"}, "\n\n"};
    const Tool tool{.commandLines = {declared({help})}};
    EXPECT_EQ(answer(tool, {""}), "tag\ta\t  \n");
}

// ---- The scripts ----

constexpr Shell shells[] = {Shell::bash, Shell::zsh, Shell::fish};

TEST(CompletionScript, IsOfConstantSizeBelowFourKibibytes) {
    const Tool small{.name = "x", .commandLines = {declared({show})}};
    Tool large{.name = "x"};
    std::vector<CommandLinePossibility> declarations(500, declared({show, color}, {list}, "Help"));
    large.commandLines = std::move(declarations);
    for (const Shell shell : shells) {
        const Text script = completionScript(small, shell);
        EXPECT_EQ(completionScript(large, shell), script);
        EXPECT_LT(script.size(), 4096U);
        EXPECT_GT(script.size(), 1000U);
    }
}

TEST(CompletionScript, DiffersFromToolToToolInTheNameAlone) {
    for (const Shell shell : shells) {
        std::string script = completionScript({.name = "items"}, shell).str();
        const std::string other = completionScript({.name = "other"}, shell).str();
        for (std::size_t at = 0; (at = script.find("items", at)) != std::string::npos;) {
            script.replace(at, 5, "other");
        }
        EXPECT_EQ(script, other);
    }
}

TEST(CompletionScript, NamesItsFunctionsAsEveryShellMay) {
    const std::string script = completionScript({.name = "g++-1.2:caf\u00e9"}, Shell::bash).str();
    EXPECT_NE(script.find("complete -F _optrella_g___1_2_caf__ -- 'g++-1.2:caf\u00e9'\n"),
              std::string::npos);
}

TEST(CompletionScript, IsEmptyForANameThatCannotBeTypedAsItIs) {
    for (const Text name :
         {"",    "-x",    "a b",  "it's", "a/b", "a=b", "$x", "`x`", "a\nb", "a;b", "*",
          "a\\", "x\xff", "\x1b", "a&b",  "#a",  "~a",  "[",  "\"",  "{a}",  "!",   "%1"}) {
        for (const Shell shell : shells)
            EXPECT_EQ(completionScript({.name = name}, shell), "") << name;
    }
}

}  // namespace
