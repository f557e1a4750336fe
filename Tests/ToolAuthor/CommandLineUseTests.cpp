// The ways in which a tool's author declares command lines, runs them and reads the results.

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <iterator>
#include <list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Optrella/CommandLine.hpp"
#include "Optrella/Optrella.hpp"
#include "Support/Capture.hpp"
#include "Support/Death.hpp"

using namespace Optrella;

namespace {

const ParameterNone list{{"list"}, "h"};
const ParameterString name{{"-n", "--name"}, "name", "h"};
const ParameterNumber limit{{"-l"}, "count", 1, 10, "h"};
const ParameterList sort{{"-s"}, {"name", "date"}, "order", "h"};

void nothing(const Parameters&) {}

// Declares "list [-n NAME]" with the action and runs "list -n x".
template <class Action>
parsingError ran(Action&& action) {
    const CommandLinePossibility commandLines[] = {
        {false, {list}, {name}, "h", false, std::forward<Action>(action)}};
    return parse(commandLines, {"tool", "list", "-n", "x"});
}

// ---- arguments ----

TEST(ArgumentList, ViewsTexts) {
    const std::vector<Text> texts{"tool", "list"};
    EXPECT_EQ(ArgumentList(texts).texts().data(), texts.data());
    EXPECT_EQ(ArgumentList(texts).texts().size(), 2U);
    EXPECT_TRUE(ArgumentList().texts().empty());
}

TEST(ArgumentList, CopiesOtherStringsOnceAndByteForByte) {
    using namespace std::string_literals;
    std::vector<std::string> strings{"tool", "a\0b"s, "", "caf\u00E9"};
    const std::vector<std::string> same = strings;
    ArgumentList arguments(strings);
    for (std::string& string : strings) string = "overwritten";
    const ArgumentList copy = arguments;
    EXPECT_EQ(copy.texts().data(), arguments.texts().data());
    arguments = {};
    ASSERT_EQ(copy.texts().size(), same.size());
    for (std::size_t i = 0; i < same.size(); ++i) EXPECT_EQ(copy.texts()[i].str(), same[i]);
}

TEST(ArgumentListDeathTest, StopsTheProcessForANullPointer) {
    const char* const names[] = {"tool", nullptr};
    EXPECT_SILENT_STOP(ArgumentList{names});
}

// ---- forms of an action ----

int calls = 0;
void countCall(const Parameters& given) { calls += static_cast<int>(given.size()); }

TEST(Action, IsALambdaThatSeesItsSurroundings) {
    std::string seen;
    EXPECT_EQ(ran([&](const Parameters& given) { seen = fetchString(name, given).str(); }),
              parsingError::NoError);
    EXPECT_EQ(seen, "x");
}

TEST(Action, IsAFunctionOrAPointerToOne) {
    calls = 0;
    EXPECT_EQ(ran(countCall), parsingError::NoError);
    EXPECT_EQ(ran(&countCall), parsingError::NoError);
    EXPECT_EQ(calls, 4);
}

TEST(Action, IsAStandardFunction) {
    calls = 0;
    const std::function<void(const Parameters&)> function = countCall;
    const std::function<int(Parameters)> returning = [](const Parameters&) { return calls += 10; };
    EXPECT_EQ(ran(function), parsingError::NoError);
    EXPECT_EQ(ran(returning), parsingError::NoError);
    EXPECT_EQ(calls, 12);
}

TEST(Action, TakesItsListInAnyReadableForm) {
    std::size_t sizes = 0;
    (void)ran([&](Parameters byValue) { sizes += byValue.size(); });
    (void)ran([&](const auto& generic) { sizes += generic.size(); });
    (void)ran([&](auto genericByValue) { sizes += genericByValue.size(); });
    (void)ran([&](std::span<const ParameterProtocol> view) { sizes += view.size(); });
    EXPECT_EQ(sizes, 8U);
}

TEST(Action, MayReturnAValueThatNobodyReads) {
    bool isRun = false;
    EXPECT_EQ(ran([&](const Parameters&) { return isRun = true; }), parsingError::NoError);
    EXPECT_TRUE(isRun);
}

TEST(Action, MayHaveStateThatCopiesOfTheDeclarationShare) {
    int last = 0;
    const CommandLinePossibility original{
        false, {list}, {},
        "h",   false,  [count = 0, &last](const Parameters&) mutable { last = ++count; }};
    const CommandLinePossibility copy = original;  // NOLINT: shares the state
    EXPECT_EQ(parse({original}, {"tool", "list"}), parsingError::NoError);
    EXPECT_EQ(parse({copy}, {"tool", "list"}), parsingError::NoError);
    EXPECT_EQ(last, 2);
}

TEST(Action, MayOwnWhatCannotBeCopied) {
    int seen = 0;
    EXPECT_EQ(ran([owned = std::make_unique<int>(3), &seen](const Parameters&) { seen = *owned; }),
              parsingError::NoError);
    EXPECT_EQ(seen, 3);
}

struct Tool {
    int count = 0;

    void run(const Parameters&) { ++count; }
    void operator()(const Parameters&) const {}
};

TEST(Action, IsAnOperationOfAnObjectThroughBindOrAReference) {
    Tool tool;
    const Tool constant;
    EXPECT_EQ(ran(std::bind(&Tool::run, &tool, std::placeholders::_1)), parsingError::NoError);
    EXPECT_EQ(tool.count, 1);
    EXPECT_EQ(ran(constant), parsingError::NoError);
    EXPECT_EQ(ran(std::cref(constant)), parsingError::NoError);
}

struct Counted {
    int* copies;

    explicit Counted(int* counter) : copies(counter) {}
    Counted(const Counted& other) : copies(other.copies) { ++*copies; }
    Counted& operator=(const Counted&) = delete;
    void operator()(const Parameters&) const {}
};

TEST(Action, IsNotCopiedWithItsDeclaration) {
    int copies = 0;
    const CommandLinePossibility original{false, {}, {}, "h", false, Counted(&copies)};
    const int afterDeclaring = copies;
    const std::vector<CommandLinePossibility> several(10, original);
    EXPECT_EQ(several.size(), 10U);
    EXPECT_EQ(copies, afterDeclaring);
}

TEST(Action, IsDestroyedOnceWithTheLastCopyOfItsDeclaration) {
    const auto owned = std::make_shared<int>(3);
    {
        const CommandLinePossibility original{false, {},    {},
                                              "h",   false, [owned](const Parameters&) {}};
        const CommandLinePossibility copy = original;  // NOLINT
        EXPECT_EQ(owned.use_count(), 2);
    }
    EXPECT_EQ(owned.use_count(), 1);
}

// ---- declaring ----

TEST(CommandLinePossibility, TakesItsParametersInEveryForm) {
    const Parameters several{list, name};
    const std::vector<ParameterNone> flags{list, {{"-f"}, ""}};
    const std::vector<CommandLinePossibility> declared{
        {false, {}, {}, "none", false, nothing},
        {false, several, several, "lists", false, nothing},
        {false, {several}, {}, "a list in braces", false, nothing},
        {false, {list}, {name, limit, sort}, "kinds in braces", false, nothing},
        {false,
         {ParameterNone{{"a"}, ""}},
         {ParameterUUID{{"-u"}, "id", ""}},
         "made",
         false,
         nothing},
        {false, Parameters(flags.begin(), flags.end()), {}, "a range", false, nothing},
    };
    const std::string help = Tests::printed([&] { displayHelp(declared); });
    for (const char* text : {"none", "lists", "a list in braces", "kinds in braces", "a range"}) {
        EXPECT_NE(help.find(text), std::string::npos) << text;
    }
}

TEST(CommandLinePossibility, IsAddedToAVector) {
    std::vector<CommandLinePossibility> declared;
    declared.push_back({true, {list}, {}, "x", true, nothing});
    declared.emplace_back(false, Parameters{list}, Parameters{}, Text("h"), false, nothing);
    declared.insert(declared.begin(), declared.back());
    declared.erase(declared.begin() + 1);
    EXPECT_EQ(parse({declared[0]}, {"tool", "list"}), parsingError::NoError);
    EXPECT_EQ(declared.size(), 2U);
}

TEST(CommandLinePossibility, TakesRunTimeTexts) {
    const std::string help = "help of run time";
    const CommandLinePossibility declared{false, {list}, {}, help, false, nothing};
    const std::string shown = Tests::printed([&] { displayHelp({declared}); });
    EXPECT_NE(shown.find(help), std::string::npos);
}

// ---- calling parse ----

class ParseCall : public testing::Test {
protected:
    int runs = 0;
    const CommandLinePossibility declared{false, {list}, {},
                                          "h",   false,  [this](const Parameters&) { ++runs; }};
    const CommandLinePossibility array[1] = {declared};
};

TEST_F(ParseCall, TakesArgcAndArgv) {
    char program[] = "tool";
    char tag[] = "list";
    char* argv[] = {program, tag, nullptr};
    const char* texts[] = {"tool", "list"};
    const char* const constant[] = {"tool", "list"};
    const std::vector<const char*> vector{"tool", "list"};
    EXPECT_EQ(parse(array, 2, argv), parsingError::NoError);
    EXPECT_EQ(parse(array, 2, texts), parsingError::NoError);
    EXPECT_EQ(parse(array, 2, constant), parsingError::NoError);
    EXPECT_EQ(parse(array, 2, vector.data()), parsingError::NoError);
    EXPECT_EQ(runs, 4);
    EXPECT_EQ(parse(array, 1, argv), parsingError::NoCommandLine);
}

TEST_F(ParseCall, TakesAnyRangeOfTexts) {
    const Text plain[] = {"tool", "list"};
    const std::array<Text, 2> texts{"tool", "list"};
    const std::vector<Text> vector{"tool", "list"};
    const std::span<const Text> span(vector);
    EXPECT_EQ(parse(array, plain), parsingError::NoError);
    EXPECT_EQ(parse(array, texts), parsingError::NoError);
    EXPECT_EQ(parse(array, vector), parsingError::NoError);
    EXPECT_EQ(parse(array, span), parsingError::NoError);
    EXPECT_EQ(runs, 4);
    EXPECT_EQ(parse(array, span.first(1)), parsingError::NoCommandLine);
}

TEST_F(ParseCall, TakesAnyRangeOfWhatMakesATextOf) {
    const std::vector<std::string> strings{"tool", "list"};
    const std::vector<std::string_view> views(strings.begin(), strings.end());
    const std::vector<const char*> pointers{"tool", "list"};
    const std::initializer_list<std::string> initializers = {"tool", "list"};
    const char* const names[] = {"tool", "list"};
    const std::list<std::string> scattered{"tool", "list"};
    EXPECT_EQ(parse(array, strings), parsingError::NoError);
    EXPECT_EQ(parse(array, views), parsingError::NoError);
    EXPECT_EQ(parse(array, pointers), parsingError::NoError);
    EXPECT_EQ(parse(array, initializers), parsingError::NoError);
    EXPECT_EQ(parse(array, names), parsingError::NoError);
    EXPECT_EQ(parse(array, scattered), parsingError::NoError);
    EXPECT_EQ(runs, 6);
}

TEST_F(ParseCall, TakesTextsInBraces) {
    const std::string program = "tool";
    const std::string string = "list";
    const std::string_view view = string;
    const char* pointer = string.c_str();
    const Text text = "list";
    EXPECT_EQ(parse(array, {"tool", "list"}), parsingError::NoError);
    EXPECT_EQ(parse(array, {program, string}), parsingError::NoError);
    EXPECT_EQ(parse(array, {program, "list"}), parsingError::NoError);
    EXPECT_EQ(parse(array, {view, view}), parsingError::NoError);
    EXPECT_EQ(parse(array, {pointer, pointer}), parsingError::NoError);
    EXPECT_EQ(parse(array, {text, text}), parsingError::NoError);
    EXPECT_EQ(runs, 6);
    EXPECT_EQ(parse(array, {"tool"}), parsingError::NoCommandLine);
    EXPECT_EQ(parse(array, {string}), parsingError::NoCommandLine);
    EXPECT_EQ(parse(array, {}), parsingError::NoCommandLine);
}

TEST_F(ParseCall, TakesDeclarationsInEveryForm) {
    std::vector<CommandLinePossibility> vector{declared};
    const std::array<CommandLinePossibility, 1> standardArray{declared};
    const std::initializer_list<CommandLinePossibility> initializers = {declared};
    EXPECT_EQ(parse(array, {"tool", "list"}), parsingError::NoError);
    EXPECT_EQ(parse(vector, {"tool", "list"}), parsingError::NoError);
    EXPECT_EQ(parse(standardArray, {"tool", "list"}), parsingError::NoError);
    EXPECT_EQ(parse(initializers, {"tool", "list"}), parsingError::NoError);
    EXPECT_EQ(parse(std::span(vector), {"tool", "list"}), parsingError::NoError);
    EXPECT_EQ(parse({&declared, 1}, {"tool", "list"}), parsingError::NoError);
    EXPECT_EQ(parse({declared}, {"tool", "list"}), parsingError::NoError);
    EXPECT_EQ(parse(CommandList(vector), {"tool", "list"}), parsingError::NoError);
    EXPECT_EQ(runs, 8);
    EXPECT_EQ(parse({}, {}), parsingError::NoCommandLine);
}

TEST_F(ParseCall, TakesDeclarationsWrittenInPlace) {
    int other = 0;
    const auto count = [&](const Parameters&) { ++other; };
    EXPECT_EQ(parse({{false, {list}, {}, "h", false, count}}, {"tool", "list"}),
              parsingError::NoError);
    EXPECT_EQ(
        parse({{false, {list}, {}, "h", false, count}, {false, {name}, {}, "h", false, count}},
              {"tool", "-n", "x"}),
        parsingError::NoError);
    EXPECT_EQ(other, 2);
}

TEST_F(ParseCall, LeavesTheDeclarationsForTheNextCall) {
    for (const char* value : {"a", "b"}) {
        std::vector<Text> seen;
        const CommandLinePossibility named[] = {
            {false, {name}, {}, "h", false, [&](const Parameters& given) {
                 seen.push_back(fetchString(name, given));
             }}};
        EXPECT_EQ(parse(named, {"tool", "-n", value}), parsingError::NoError);
        EXPECT_EQ(parse(named, {"tool", "--name", "c"}), parsingError::NoError);
        EXPECT_EQ(seen, (std::vector<Text>{value, "c"}));
    }
    EXPECT_EQ(name.common.userValue, "");
}

TEST(HelpCall, TakesDeclarationsInEveryForm) {
    const CommandLinePossibility array[] = {{false, {list}, {}, "List all.", false, nothing}};
    const std::vector<CommandLinePossibility> vector{array[0]};
    const std::array<CommandLinePossibility, 1> standardArray{array[0]};
    const std::string expected = Tests::printed([&] { displayHelp(array); });
    EXPECT_NE(expected.find("List all."), std::string::npos);
    EXPECT_EQ(Tests::printed([&] { displayHelp(vector); }), expected);
    EXPECT_EQ(Tests::printed([&] { displayHelp(standardArray); }), expected);
    EXPECT_EQ(Tests::printed([&] { displayHelp({array[0]}); }), expected);
    EXPECT_EQ(Tests::printed([&] { displayHelp(std::span(array)); }), expected);
    EXPECT_EQ(Tests::printed([&] {
                  displayHelp({{false, {list}, {}, "List all.", false, nothing}});
              }),
              expected);
}

// ---- inside an action ----

TEST(FetchedValues, AreComparedReplacedAndConverted) {
    ParameterString givenName = name;
    ParameterNumber givenLimit = limit;
    givenName.storeUserValue("x");
    givenLimit.storeUserValue("5");
    const Parameters given{givenName, givenLimit};
    EXPECT_TRUE(fetchOptionalNumber(limit, given) == 5);
    EXPECT_TRUE(fetchOptionalString(name, given) == "x");
    EXPECT_EQ(fetchOptionalString(name, given).value_or("y"), "x");
    EXPECT_EQ(fetchOptionalString(name, {}).value_or("y"), "y");
    EXPECT_EQ(fetchOptionalString(name, {}).value_or("y").str() + "!", "y!");
    EXPECT_EQ(fetchOptionalNumber(limit, {}).value_or(20), 20);
    if (const std::optional<Text> text = fetchOptionalString(name, given)) {
        EXPECT_EQ(text->size(), 1U);
    } else {
        FAIL();
    }
}

TEST(FetchedValues, AreAskedForByADeclarationMadeAgain) {
    ParameterString givenName = name;
    givenName.storeUserValue("x");
    EXPECT_EQ(fetchString({{"-n", "--name"}, "another name", "h"}, {givenName}), "x");
    EXPECT_TRUE(hasOptional(ParameterString{{"-n", "--name"}, "", "h"}, {givenName}));
}

TEST(FetchedValues, OfUUIDsAndFilesAreKeysAndTexts) {
    const std::optional<UUID> parsed = UUID::fromText("00000000-0000-0000-0000-0000000000ff");
    ASSERT_TRUE(parsed.has_value());
    EXPECT_TRUE(parsed != UUID{});
    EXPECT_TRUE(UUID{} < *parsed);
    EXPECT_EQ(parsed->text(), "00000000-0000-0000-0000-0000000000FF");
    EXPECT_EQ(UUID::fromText(std::string("no uuid")), std::nullopt);
    const FileURL file = FileURL::fromPath("/a b");
    EXPECT_EQ(file.path(), "/a b");
    EXPECT_EQ(file.text(), "file:///a%20b");
    const std::unordered_set<FileURL> files{file, FileURL::fromPath(std::string("/a b"))};
    EXPECT_EQ(files.size(), 1U);
    const std::unordered_set<UUID> identifiers{*parsed, UUID{}, *parsed};
    EXPECT_EQ(identifiers.size(), 2U);
}

// ---- the result ----

int exitStatusOf(parsingError result) {
    switch (result) {
        case parsingError::NoError:
            return 0;
        case parsingError::MissingParameter:
        case parsingError::NoMatchingLine:
            return 64;
        case parsingError::NoCommandLine:
            return 2;
    }
    return -1;
}

TEST(ParsingError, IsSwitchedOver) {
    EXPECT_EQ(exitStatusOf(parse({}, {"tool"})), 2);
    EXPECT_EQ(exitStatusOf(ran(nothing)), 0);
    switch (ran(nothing)) {
        case parsingError::NoError:
            break;
        default:
            FAIL();
    }
}

TEST(ParsingError, IsNamedShortAndComparedAndCast) {
    using enum parsingError;
    static_assert(NoError == parsingError::NoError && NoError != NoMatchingLine);
    static_assert(sizeof(parsingError) == 1);
    static_assert(static_cast<int>(NoError) == 0);
    const parsingError chosen = calls < 0 ? NoError : NoCommandLine;
    EXPECT_EQ(chosen, NoCommandLine);
}

TEST(ParsingError, IsAKeyAndHashesAsItsText) {
    std::unordered_map<parsingError, int> counts;
    ++counts[parsingError::NoError];
    EXPECT_EQ(counts.at(parsingError::NoError), 1);
    EXPECT_EQ(std::hash<parsingError>()(parsingError::NoError),
              std::hash<Text>()("Parse successful"));
}

}  // namespace
