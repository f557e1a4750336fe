// The ways in which a tool's author writes down what the tool is.

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <array>
#include <forward_list>
#include <functional>
#include <initializer_list>
#include <list>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Optrella/Complete.hpp"
#include "Optrella/Explain.hpp"
#include "Optrella/Lint.hpp"
#include "Optrella/Optrella.hpp"
#include "Optrella/Tool.hpp"
#include "Support/Capture.hpp"

using namespace Optrella;

namespace {

// ---- what is declared, as constants ----

constexpr ParameterNone show{{"show"}, "shows a session"};
constexpr ParameterNone start{{"start"}, "starts one"};
constexpr ParameterString session{{"--session"}, "SESSION", "the session"};
constexpr ParameterString label{{"-l", "--label"}, "LABEL", "a label"};
void nothing(const Parameters&) {}

constinit const CommandLinePossibility commandLines[] = {
    {false, {show, session}, {label}, "Shows it.", false, nothing},
    {false, {start}, {label}, "Starts it.", false, nothing}};

std::vector<CommandLinePossibility> madeLines() {
    return {{false, {show, session}, {label}, "Shows it.", false, nothing},
            {false, {start}, {label}, "Starts it.", false, nothing}};
}

// ---- what is asked of a tool ----

bool runs(const Tool& tool, std::initializer_list<Text> line) {
    return explain(tool, line).outcome == Outcome::runs;
}

std::vector<std::string> wordsAfter(const Tool& tool, std::initializer_list<Text> before) {
    std::vector<std::string> words;
    for (const Offer& each : complete(tool, before, "")) {
        words.push_back(each.word ? each.word->str() : "<" + each.name.str() + ">");
    }
    return words;
}

using Strings = std::vector<std::string>;

// What is listed for "show --session".
Strings listed(Completer completer) {
    const Tool tool{.commandLines = commandLines, .completers = {std::move(completer)}};
    return wordsAfter(tool, {"show", "--session"});
}

// ---- fields ----

TEST(Tool, NeedsNoField) {
    const Tool tool{};
    EXPECT_TRUE(tool.commandLines.empty());
    EXPECT_EQ(tool.name, "");
    EXPECT_EQ(tool.spelling, Spelling::conventional);
    EXPECT_EQ(tool.manualSection, 1);
    EXPECT_EQ(explain(tool, {}).outcome, Outcome::nothingGiven);
    EXPECT_EQ(explain(tool, {"x"}).outcome, Outcome::nothingFits);
    EXPECT_EQ(complete(tool, {}, ""), std::vector<Offer>());
    EXPECT_EQ(lint(tool), Findings());
}

TEST(Tool, TakesEveryField) {
    const Tool tool{.name = "items",
                    .version = "1.4.2",
                    .summary = "Manage the sessions.",
                    .commandLines = commandLines,
                    .operands = {session},
                    .repeated = {label},
                    .completers = {{session, [] { return Strings{"main"}; }}},
                    .spelling = Spelling::conventional,
                    .manualSection = 8};
    EXPECT_TRUE(runs(tool, {"show", "main", "-l", "a", "-l", "b"}));
    EXPECT_EQ(wordsAfter(tool, {"show"}), (Strings{"main", "--label"}));
    EXPECT_EQ(lint(tool), Findings());
}

TEST(Tool, TakesAnyFieldAlone) {
    EXPECT_EQ(Tool{.name = "items"}.name, "items");
    EXPECT_EQ(Tool{.version = "1"}.version, "1");
    EXPECT_EQ(Tool{.summary = "S."}.summary, "S.");
    EXPECT_EQ(Tool{.commandLines = commandLines}.commandLines.size(), 2U);
    EXPECT_EQ(Tool{.operands = {session}}.operands.size(), 1U);
    EXPECT_EQ(Tool{.repeated = {label}}.repeated.size(), 1U);
    EXPECT_EQ(Tool{.spelling = Spelling::exact}.spelling, Spelling::exact);
    EXPECT_EQ(Tool{.manualSection = 8}.manualSection, 8);
}

TEST(Tool, IsFilledFieldByField) {
    Tool tool;
    tool.name = "items";
    tool.commandLines = commandLines;
    tool.operands.emplace_back(session, Takes::many);
    tool.repeated.emplace_back(label);
    tool.completers.emplace_back(session, [] { return Strings{"main"}; });
    EXPECT_TRUE(runs(tool, {"show", "a", "b", "-l", "x", "-l", "y"}));
    EXPECT_EQ(wordsAfter(tool, {"show"}), (Strings{"main", "--label"}));
}

TEST(Tool, TakesTextsOfRunTime) {
    Tool tool;
    {
        const std::string name = "a name that is too long for the string itself";
        const char* version = "1.4.2";
        tool = {.name = name, .version = version, .summary = std::string_view(name).substr(2, 4)};
    }
    EXPECT_EQ(tool.name, "a name that is too long for the string itself");
    EXPECT_EQ(tool.version, "1.4.2");
    EXPECT_EQ(tool.summary, "name");
}

// ---- declarations ----

TEST(ToolCommandLines, AreViewedWhereTheyHaveAName) {
    const std::vector<CommandLinePossibility> vector = madeLines();
    std::array<CommandLinePossibility, 2> array{vector[0], vector[1]};
    const std::span<const CommandLinePossibility> span(vector);
    const CommandList list(vector);
    EXPECT_EQ(Tool{.commandLines = commandLines}.commandLines.begin(), commandLines);
    EXPECT_EQ(Tool{.commandLines = vector}.commandLines.begin(), vector.data());
    EXPECT_EQ(Tool{.commandLines = array}.commandLines.begin(), array.data());
    EXPECT_EQ(Tool{.commandLines = span}.commandLines.begin(), vector.data());
    EXPECT_EQ(Tool{.commandLines = list}.commandLines.begin(), vector.data());
}

TEST(ToolCommandLines, AreViewedThroughATemporaryView) {
    const std::vector<CommandLinePossibility> vector = madeLines();
    const Tool all{.commandLines = std::span(vector)};
    const Tool first{.commandLines = std::span(vector).first<1>()};
    const Tool listed{.commandLines = CommandList(vector)};
    EXPECT_EQ(all.commandLines.begin(), vector.data());
    EXPECT_EQ(first.commandLines.size(), 1U);
    EXPECT_EQ(listed.commandLines.end(), vector.data() + 2);
}

TEST(ToolCommandLines, AreKeptWhereAFunctionReturnsThem) {
    const Tool tool{.commandLines = madeLines()};
    EXPECT_TRUE(runs(tool, {"show", "--session", "main"}));
}

TEST(ToolCommandLines, AreKeptWhereTheyAreATemporaryArray) {
    const Tool tool{.commandLines = std::array{madeLines()[0], madeLines()[1]}};
    EXPECT_TRUE(runs(tool, {"start"}));
}

TEST(ToolCommandLines, AreKeptWhereTheyAreInBraces) {
    std::optional<Tool> tool;
    {
        const std::string tag = "a tag that is too long for the string itself";
        const ParameterNone flag{{tag}, "h"};
        const Tool named{.commandLines = {{false, {flag}, {label}, "h", false, nothing},
                                          {false, {start}, {}, "h", false, nothing}}};
        EXPECT_EQ(named.commandLines.size(), 2U);
        tool = named;
    }
    EXPECT_TRUE(runs(*tool, {"a tag that is too long for the string itself", "-l", "x"}));
}

TEST(ToolCommandLines, AreKeptWhereOneAloneIsInBraces) {
    const Tool made{.commandLines = {{false, {start}, {}, "h", false, nothing}}};
    const Tool named{.commandLines = {commandLines[1]}};
    EXPECT_TRUE(runs(made, {"start"}));
    EXPECT_TRUE(runs(named, {"start"}));
    EXPECT_NE(named.commandLines.begin(), &commandLines[1]);
}

TEST(ToolCommandLines, AreKeptWhereTheyAreMovedIn) {
    std::vector<CommandLinePossibility> lines = madeLines();
    const CommandLinePossibility* first = lines.data();
    const Tool tool{.commandLines = std::move(lines)};
    EXPECT_EQ(tool.commandLines.begin(), first);
}

TEST(ToolCommandLines, AreSharedByCopies) {
    std::optional<Tool> tool = Tool{.name = "items", .commandLines = madeLines()};
    const Tool copy = *tool;
    EXPECT_EQ(copy.commandLines.begin(), tool->commandLines.begin());
    tool.reset();
    EXPECT_TRUE(runs(copy, {"start", "--label=x"}));
}

TEST(ToolCommandLines, AreReplacedInOneCopyAlone) {
    Tool tool{.commandLines = madeLines()};
    const Tool copy = tool;
    tool.commandLines = {};
    EXPECT_TRUE(tool.commandLines.empty());
    EXPECT_EQ(copy.commandLines.size(), 2U);
    EXPECT_TRUE(runs(copy, {"start"}));
}

TEST(ToolCommandLines, AreGivenToTheCore) {
    int count = 0;
    const Tool tool{.commandLines = {{false, {start}, {}, "Starts.", false, [&](const Parameters&) {
                                          ++count;
                                      }}}};
    const char* const argv[] = {"items", "start", nullptr};
    EXPECT_EQ(parse(tool.commandLines, 2, argv), parsingError::NoError);
    EXPECT_EQ(parse(tool.commandLines, {"items", "start"}), parsingError::NoError);
    EXPECT_EQ(count, 2);
    const std::string help = Tests::printed([&] { displayHelp(tool.commandLines); });
    EXPECT_NE(help.find("Starts."), std::string::npos) << help;
}

TEST(ToolCommandLines, AreReadInALoop) {
    const Tool tool{.commandLines = madeLines()};
    std::size_t count = 0;
    for (const CommandLinePossibility& each : tool.commandLines) {
        EXPECT_EQ(&each, &tool.commandLines[count]);
        ++count;
    }
    EXPECT_EQ(count, tool.commandLines.size());
}

// ---- a tool's place ----

Tool describedTool() {
    return {.name = "items", .commandLines = madeLines(), .operands = {session}};
}

TEST(Tool, IsATemporary) {
    EXPECT_EQ(explain(Tool{.commandLines = madeLines()}, {"start"}).outcome, Outcome::runs);
    EXPECT_EQ(
        explain({.commandLines = {{false, {start}, {}, "h", false, nothing}}}, {"start"}).outcome,
        Outcome::runs);
    EXPECT_EQ(explain(describedTool(), {"show", "main"}).outcome, Outcome::runs);
}

class Program {
public:
    [[nodiscard]] const Tool& tool() const { return tool_; }

private:
    [[nodiscard]] Strings sessions() const { return sessions_; }

    Strings sessions_{"main", "other"};
    Tool tool_{.name = "items",
               .commandLines = {{false, {show, session}, {}, "h", false, nothing}},
               .operands = {session},
               .completers = {{session, [this] { return sessions(); }}}};
};

TEST(Tool, IsAMemberOfAClass) {
    const auto program = std::make_unique<Program>();
    EXPECT_EQ(wordsAfter(program->tool(), {"show"}), (Strings{"main", "other"}));
}

const Tool staticTool{.name = "items", .commandLines = commandLines, .operands = {session}};

TEST(Tool, IsMadeWhenTheProgramStarts) { EXPECT_TRUE(runs(staticTool, {"show", "main"})); }

TEST(Tool, IsMovedInAVector) {
    std::vector<Tool> tools;
    for (int i = 0; i < 10; ++i) tools.push_back(describedTool());
    tools.erase(tools.begin());
    for (const Tool& each : tools) EXPECT_TRUE(runs(each, {"show", "main"}));
}

// ---- operands ----

// A kind of a tool's own.
struct Port {
    commonDetails common{.tagHelp = "h", .tags = {"--port"}, .parameterName = "PORT"};

    [[nodiscard]] std::optional<Text> validate() const {
        return common.userValue == "80" ? std::nullopt : std::optional<Text>("no port");
    }
};

// How "do VALUE" ends, where the parameter is an operand.
template <class Kind>
Outcome outcomeOfOperand(const Kind& kind, const Text& value) {
    const ParameterNone word{{"do"}, "h"};
    const Tool tool{.commandLines = {{false, {word, kind}, {}, "h", false, nothing}},
                    .operands = {kind}};
    return explain(tool, {"do", value}).outcome;
}

TEST(Operand, IsOfEveryKindThatTakesAValue) {
    EXPECT_EQ(outcomeOfOperand(ParameterString{{"--s"}, "S", "h"}, "x"), Outcome::runs);
    EXPECT_EQ(outcomeOfOperand(ParameterNumber{{"--n"}, "N", 1, 9, "h"}, "5"), Outcome::runs);
    EXPECT_EQ(outcomeOfOperand(ParameterList{{"--l"}, {"a", "b"}, "L", "h"}, "b"), Outcome::runs);
    EXPECT_EQ(
        outcomeOfOperand(ParameterUUID{{"--u"}, "U", "h"}, "123e4567-e89b-12d3-a456-426614174000"),
        Outcome::runs);
    EXPECT_EQ(outcomeOfOperand(ParameterFileURL{{"--f"},
                                                ParameterFileURL::urlType::folder,
                                                ParameterFileURL::existState::exist,
                                                "F",
                                                "h"},
                               "/"),
              Outcome::runs);
    EXPECT_EQ(outcomeOfOperand(Port(), "80"), Outcome::runs);
    EXPECT_EQ(outcomeOfOperand(Port(), "81"), Outcome::valueRejected);
}

TEST(Operand, IsAParameterOfAnyKindThatIsHeld) {
    const Parameters held{session, Port()};
    EXPECT_EQ(outcomeOfOperand(held[0], "x"), Outcome::runs);
    EXPECT_EQ(outcomeOfOperand(held[1], "80"), Outcome::runs);
}

TEST(Operand, TakesOneManyOrTheRest) {
    const auto tool = [](Takes takes) {
        return Tool{.commandLines = commandLines, .operands = {{session, takes}}};
    };
    EXPECT_TRUE(runs(tool(Takes::one), {"show", "a"}));
    EXPECT_FALSE(runs(tool(Takes::one), {"show", "a", "b"}));
    EXPECT_TRUE(runs(tool(Takes::many), {"show", "a", "b", "-l", "x", "c"}));
    EXPECT_FALSE(runs(tool(Takes::many), {"show", "a", "--unknown"}));
    EXPECT_TRUE(runs(tool(Takes::rest), {"show", "a", "--unknown", "-l"}));
}

TEST(Operand, StandsWithBracesOrWithout) {
    const std::vector<Operand> written[] = {{session, {label, Takes::many}},
                                            {{session}, {label, Takes::many}},
                                            {{session, Takes::one}, {label, Takes::many}},
                                            {Operand(session), Operand(label, Takes::many)},
                                            {{{session}, {label, Takes::many}}}};
    for (const std::vector<Operand>& operands : written) {
        ASSERT_EQ(operands.size(), 2U);
        EXPECT_EQ(operands[0].firstTag(), "--session");
        EXPECT_EQ(operands[0].takes(), Takes::one);
        EXPECT_EQ(operands[1].firstTag(), "-l");
        EXPECT_EQ(operands[1].takes(), Takes::many);
    }
}

TEST(Operand, IsKeptWhereItsParameterIsATemporary) {
    std::optional<Tool> tool;
    {
        const std::string tag = "--a-tag-that-is-too-long-for-the-string-itself";
        const ParameterString value{{tag}, "VALUE", "h"};
        tool = {.commandLines = {{false, {start, value}, {}, "h", false, nothing}},
                .operands = {ParameterString{{tag}, "VALUE", "h"}}};
    }
    EXPECT_TRUE(runs(*tool, {"start", "x"}));
}

TEST(Operand, WithoutTagsNamesNone) {
    EXPECT_EQ(Operand(ParameterString{{}, "NAME", "h"}).firstTag(), std::nullopt);
    EXPECT_EQ(Repeated(ParameterString{{}, "NAME", "h"}).firstTag(), std::nullopt);
}

// ---- repeated ----

TEST(Repeated, StandsInOneListOrInBracesEach) {
    const Parameters held{label, Port()};
    const std::vector<Repeated> written[] = {{label, Port()},
                                             {{label}, {Port()}},
                                             {Repeated(label), Repeated(Port())},
                                             {held[0], held[1]},
                                             {held.begin(), held.end()}};
    for (const std::vector<Repeated>& repeated : written) {
        ASSERT_EQ(repeated.size(), 2U);
        EXPECT_EQ(repeated[0].firstTag(), "-l");
        EXPECT_EQ(repeated[1].firstTag(), "--port");
    }
}

// ---- completers ----

Strings listSessions() { return {"main", "other"}; }

struct Sessions {
    Strings names{"main", "other"};

    [[nodiscard]] Strings all() const { return names; }
    [[nodiscard]] Strings operator()() const { return names; }
};

TEST(Completer, IsAFunctionOrAPointerToOne) {
    EXPECT_EQ(listed({session, listSessions}), listSessions());
    EXPECT_EQ(listed({session, &listSessions}), listSessions());
}

TEST(Completer, IsALambdaWithoutStateOrWithIt) {
    const Strings names{"main", "other"};
    EXPECT_EQ(listed({session, [] { return listSessions(); }}), names);
    EXPECT_EQ(listed({session, [&names] { return names; }}), names);
    EXPECT_EQ(listed({session, [names]() -> const Strings& { return names; }}), names);
    EXPECT_EQ(listed({session, [](bool areAll = true) { return Strings{areAll ? "all" : "one"}; }}),
              Strings{"all"});
}

TEST(Completer, IsAnObjectThatCanBeCalled) {
    const Sessions sessions;
    const std::function<Strings()> function = listSessions;
    EXPECT_EQ(listed({session, sessions}), sessions.names);
    EXPECT_EQ(listed({session, Sessions()}), sessions.names);
    EXPECT_EQ(listed({session, std::cref(sessions)}), sessions.names);
    EXPECT_EQ(listed({session, function}), sessions.names);
}

TEST(Completer, IsAnOperationOfAnObjectThatIsBound) {
    const Sessions sessions;
    EXPECT_EQ(listed({session, std::bind(&Sessions::all, &sessions)}), sessions.names);
    EXPECT_EQ(listed({session, std::bind_front(&Sessions::all, sessions)}), sessions.names);
}

TEST(Completer, ReturnsARangeOfAnyTexts) {
    static const char* const names[] = {"main", "other"};
    const Strings expected{"main", "other"};
    EXPECT_EQ(listed({session, [] { return std::vector<Text>{"main", "other"}; }}), expected);
    EXPECT_EQ(listed({session,
                      [] {
                          return std::array<const char*, 2>{"main", "other"};
                      }}),
              expected);
    EXPECT_EQ(listed({session, [] { return std::list<std::string>{"main", "other"}; }}), expected);
    EXPECT_EQ(listed({session, [] { return std::forward_list<Text>{"main", "other"}; }}), expected);
    EXPECT_EQ(listed({session, [] { return std::set<std::string>{"main", "other"}; }}), expected);
    EXPECT_EQ(listed({session,
                      [] {
                          return std::vector<std::string_view>{"main", "other"};
                      }}),
              expected);
    EXPECT_EQ(listed({session, [] { return std::span(names); }}), expected);
    EXPECT_EQ(listed({session, []() -> const auto& { return names;
}
}  // namespace
), expected);
}

TEST(Completer, ReturnsAListInBracesThatLives) {
    static constexpr std::initializer_list<const char*> names = {"main", "other"};
    EXPECT_EQ(listed({session, [] { return names; }}), (Strings{"main", "other"}));
}

TEST(Completer, MayListNothing) {
    EXPECT_EQ(listed({session, [] { return Strings(); }}), Strings());
}

TEST(Completer, IsOfAParameterThatIsHeld) {
    const ParameterProtocol held = session;
    EXPECT_EQ(listed({held, listSessions}), listSessions());
}

TEST(Completer, HasStateThatCopiesShare) {
    const Completer original(session,
                             [count = 0]() mutable { return Strings{std::to_string(++count)}; });
    const Completer copy = original;  // NOLINT: shares the state
    EXPECT_EQ(original.values(), std::vector<Text>{"1"});
    EXPECT_EQ(copy.values(), std::vector<Text>{"2"});
}

TEST(Completer, OwnsWhatCannotBeCopied) {
    const Completer completer(session,
                              [owned = std::make_unique<Strings>(2, "x")] { return *owned; });
    EXPECT_EQ(completer.values().size(), 2U);
}

TEST(Completer, DestroysItsListerOnceWithTheLastCopyOfTheTool) {
    const auto owned = std::make_shared<Strings>();
    {
        const Tool tool{.completers = {{session, [owned] { return *owned; }}}};
        const Tool copy = tool;  // NOLINT
        EXPECT_EQ(owned.use_count(), 2);
    }
    EXPECT_EQ(owned.use_count(), 1);
}

TEST(Completer, ListsAHundredThousandValues) {
    constexpr std::size_t count = 100'000;
    const auto numbers = [] {
        Strings values;
        for (std::size_t i = 0; i < count; ++i) values.push_back(std::to_string(i));
        return values;
    };
    const Tool tool{.commandLines = commandLines, .completers = {{session, numbers}}};
    EXPECT_EQ(complete(tool, {"show", "--session"}, "").size(), count);
    EXPECT_EQ(complete(tool, {"show", "--session"}, "9999").size(), 11U);
}

// ---- a test of the tool's own ----

// What the test runner would print for a failed expectation.
template <class Code>
std::string failureOf(const Code& code) {
    testing::TestPartResultArray results;
    {
        const testing::ScopedFakeTestPartResultReporter reporter(
            testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &results);
        code();
    }
    return results.size() == 1 ? results.GetTestPartResult(0).message() : "not one failure";
}

TEST(Findings, ShowTheirSentencesWhenATestFails) {
    const ParameterNumber count{{"-n"}, "N", 9, 1, "a count"};
    const Tool tool{.commandLines = {{false, {start}, {count}, "h", false, nothing}}};
    EXPECT_EQ(failureOf([&] { EXPECT_EQ(lint(tool), Findings()); }),
              "Expected equality of these values:\n"
              "  lint(tool)\n"
              "    Which is: { error (bounds): no number holds: the least of '-n' is above the "
              "greatest in declaration 0 ('start') }\n"
              "  Findings()\n"
              "    Which is: {}");
}

TEST(Finding, IsWrittenToAnyStream) {
    std::ostringstream stream;
    stream << Finding{
        .rule = Rule::swallows, .severity = Severity::warning, .sentence = "It does."};
    EXPECT_EQ(stream.str(), "warning (swallows): It does.");
}

}  // namespace
