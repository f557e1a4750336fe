#include "Optrella/Complete.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Optrella/Explain.hpp"
#include "Optrella/Lint.hpp"
#include "Support/Threads.hpp"

namespace {

using namespace Optrella;

const ParameterNone show{{"show"}, "h"};
const ParameterNone start{{"start"}, "h"};
const ParameterString session{{"--session"}, "SESSION", "the session"};
const ParameterString label{{"-l", "--label"}, "LABEL", "h"};
void nothing(const Parameters&) {}

using Strings = std::vector<std::string>;

Strings wordsOf(const std::vector<Offer>& offers) {
    Strings words;
    for (const Offer& each : offers) words.push_back(each.word ? each.word->str() : "<value>");
    return words;
}

// ---- Completers ----

// "show --session SESSION [-l LABEL]" and "start [--session SESSION]", with what lists sessions.
class CompleterTest : public testing::Test {
protected:
    std::vector<Text> sessions{"main", "other"};
    mutable int questions = 0;
    Tool tool{.name = "items",
              .commandLines = {{false, {show, session}, {label}, "h", false, nothing},
                               {false, {start}, {session}, "h", false, nothing}},
              .completers = {{session, [this] {
                                  ++questions;
                                  return sessions;
                              }}}};
};

TEST_F(CompleterTest, IsNotAskedWhileATagMustComeNext) {
    for (const Offers offers : {Offers::reduced, Offers::all}) {
        static_cast<void>(complete(tool, {}, "", offers));
        static_cast<void>(complete(tool, {}, "m", offers));
        static_cast<void>(complete(tool, {"show"}, "", offers));
        static_cast<void>(complete(tool, {"show", "--session", "main"}, "", offers));
    }
    EXPECT_EQ(questions, 0);
}

TEST_F(CompleterTest, IsNotAskedForAnotherParameter) {
    static_cast<void>(complete(tool, {"show", "--label"}, ""));
    EXPECT_EQ(questions, 0);
}

TEST_F(CompleterTest, IsNotAskedAfterALineThatCannotGoOn) {
    EXPECT_EQ(complete(tool, {"unknown", "--session"}, ""), std::vector<Offer>());
    EXPECT_EQ(complete(tool, {"show", "show", "--session"}, ""), std::vector<Offer>());
    EXPECT_EQ(questions, 0);
}

TEST_F(CompleterTest, IsAskedOnceHoweverManyDeclarationsTakeTheValue) {
    EXPECT_EQ(wordsOf(complete(tool, {"--session"}, "", Offers::all)), (Strings{"main", "other"}));
    EXPECT_EQ(questions, 1);
}

TEST_F(CompleterTest, IsNotAskedByLintOrExplain) {
    static_cast<void>(explain(tool, {"show", "--session", "x"}));
    static_cast<void>(lint(tool, Notes::included));
    EXPECT_EQ(questions, 0);
}

TEST_F(CompleterTest, IsAskedForAnOperandInItsPlace) {
    tool.operands = {session};
    EXPECT_EQ(wordsOf(complete(tool, {"show"}, "m")), Strings{"main"});
    EXPECT_EQ(questions, 1);
    EXPECT_EQ(wordsOf(complete(tool, {"show"}, "--l")), Strings{"--label"});
    EXPECT_EQ(wordsOf(complete(tool, {"show", "main"}, "")), Strings{"--label"});
}

TEST_F(CompleterTest, OffersAWordThatIsATagWhereItIsTheValue) {
    sessions = {"show", "start"};
    EXPECT_EQ(wordsOf(complete(tool, {"show", "--session"}, "")), (Strings{"show", "start"}));
}

TEST_F(CompleterTest, OffersNoWordThatWouldBeReadAsATag) {
    sessions = {"show", "start", "main"};
    tool.operands = {session};
    EXPECT_EQ(wordsOf(complete(tool, {"show"}, "", Offers::all)),
              (Strings{"--session", "start", "main", "-l", "--label"}));
}

TEST_F(CompleterTest, OffersNoWordThatBeginsWithADashAndIsNoTag) {
    sessions = {"-", "-x", "--other=1", "--", "main", "-l"};
    EXPECT_EQ(wordsOf(complete(tool, {"show", "--session"}, "")), Strings{"main"});
    EXPECT_EQ(wordsOf(complete(tool, {"show", "--session"}, "-")), Strings());
}

TEST_F(CompleterTest, OffersAnOptionAsTheValueWhereParseTakesIt) {
    sessions = {"-x", "-l", "main"};
    tool.spelling = Spelling::exact;
    EXPECT_EQ(wordsOf(complete(tool, {"show", "--session"}, "")), (Strings{"-l", "main"}));
}

TEST_F(CompleterTest, OffersTheWordsInTheOrderInWhichTheyAreListed) {
    sessions = {"b", "show", "a", "start", "c"};
    EXPECT_EQ(wordsOf(complete(tool, {"show", "--session"}, "")),
              (Strings{"b", "show", "a", "start", "c"}));
}

TEST_F(CompleterTest, OffersAWordOnce) {
    sessions = {"caf\u00E9", "cafe\u0301", "main", "main"};
    EXPECT_EQ(wordsOf(complete(tool, {"show", "--session"}, "")), (Strings{"caf\u00E9", "main"}));
}

TEST_F(CompleterTest, IsNotAskedForTheChoicesOfAList) {
    const ParameterList order{{"--order"}, {"name", "date"}, "ORDER", "h"};
    tool.commandLines = {{false, {show}, {order}, "h", false, nothing}};
    tool.completers = {{order, [this] {
                            ++questions;
                            return sessions;
                        }}};
    EXPECT_EQ(wordsOf(complete(tool, {"show", "--order"}, "")), (Strings{"name", "date"}));
    EXPECT_EQ(questions, 0);
}

// ---- The record ----

TEST(Offer, IsEqualWhereAllItsFieldsAre) {
    const Offer different[] = {{.kind = Offer::Kind::value},
                               {.word = "x"},
                               {.help = "x"},
                               {.name = "x"},
                               {.pathType = ParameterFileURL::urlType::file},
                               {.pathState = ParameterFileURL::existState::exist}};
    for (const Offer& each : different) {
        EXPECT_NE(each, Offer());
        EXPECT_EQ(each, Offer(each));
    }
}

TEST(Offer, OwnsItsTexts) {
    std::vector<Offer> offers;
    {
        const std::string text = "a text that is too long for the string itself";
        const ParameterString value{{text}, text, text};
        const Tool tool{.commandLines = {{false, {show, value}, {}, "h", false, nothing}},
                        .completers = {{value, [text] { return Strings{text}; }}}};
        offers = complete(tool, {"show"}, "");
        for (const Offer& each : complete(tool, {"show", text}, "")) offers.push_back(each);
    }
    const Text text = "a text that is too long for the string itself";
    EXPECT_EQ(offers, (std::vector<Offer>{
                          {.kind = Offer::Kind::tag, .word = text, .help = text},
                          {.kind = Offer::Kind::value, .word = text, .help = text, .name = text}}));
}

// ---- Threads ----

TEST(Complete, IsSafeOnSeveralThreadsAtOnce) {
    const Tool tool{.commandLines = {{false, {show, session}, {label}, "h", false, nothing},
                                     {false, {start}, {session}, "h", false, nothing}},
                    .completers = {{session, [] {
                                        return Strings{"main", "caf\u00E9"};
                                    }}}};
    const std::vector<Offer> words = complete(tool, {}, "");
    const std::vector<Offer> values = complete(tool, {"show", "--session"}, "cafe\u0301");
    ASSERT_EQ(values.size(), 1U);
    Tests::onSeveralThreads([&] {
        return complete(tool, {}, "") == words &&
               complete(tool, {"show", "--session"}, "cafe\u0301") == values;
    });
}

// Two declarations of one line, with so many options that not all ways to give them can be tried.
TEST(Complete, OffersWhatItCannotDecide) {
    for (const std::size_t count : {2U, 40U}) {
        Parameters options;
        for (std::size_t i = 0; i < count; ++i) {
            options.push_back(ParameterString({"--" + std::to_string(i)}, "VALUE", "h"));
        }
        const CommandLinePossibility alike{false, {show}, options, "h", false, nothing};
        EXPECT_EQ(complete({.commandLines = {alike, alike}}, {}, "").empty(), count == 2) << count;
    }
}

}  // namespace
