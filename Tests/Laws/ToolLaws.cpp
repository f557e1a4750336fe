// What explains a line reads it as parse does, where that is how the tool is spelled.

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "Drawn.hpp"
#include "Optrella/CommandLine.hpp"
#include "Optrella/CommandLine/Matching.hpp"
#include "Optrella/Explain.hpp"
#include "Optrella/Explain/Rejection.hpp"
#include "Optrella/Tool.hpp"
#include "Optrella/Tool/Walk.hpp"
#include "Support/Capture.hpp"
#include "Support/FakePlatform.hpp"

namespace {

using namespace Optrella;
using namespace Tests;

// All that takes a value is an operand and repeated, of which parse knows nothing.
Tool exactTool(const Case& drawn, const Run& run) {
    Tool tool{.commandLines = made(drawn.commands, run), .spelling = Spelling::exact};
    for (const CommandCase& command : drawn.commands) {
        for (const auto* list : {&command.required, &command.optional}) {
            for (const ParameterCase& each : *list) {
                tool.operands.emplace_back(made(each), Takes::rest);
                tool.repeated.emplace_back(made(each));
            }
        }
    }
    return tool;
}

// What the walk takes from the line, or nothing when it does not fit.
std::optional<std::vector<Internal::Gift>> giftsOf(const Internal::Grammar& grammar,
                                                   std::size_t declaration,
                                                   const std::vector<Text>& line) {
    std::vector<Internal::Gift> gifts;
    Internal::Walk walk(grammar.forms[declaration], grammar.spelling);
    walk.record(gifts);
    for (const Text& each : line) {
        const Internal::Argument argument(each, grammar.vocabulary);
        if (walk.read(argument) != Internal::Reading::accepted) return std::nullopt;
    }
    return walk.fits() ? std::optional(gifts) : std::nullopt;
}

bool areSame(const Parameters& left, const Parameters& right) {
    const auto isSame = [](const ParameterProtocol& l, const ParameterProtocol& r) {
        return l.isEqualTo(r) && l.common().userValue.str() == r.common().userValue.str();
    };
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), isSame);
}

// Whether the core finds nothing wrong with the values of the declaration.
bool areValid(const CommandLinePossibility& declaration, const std::vector<Text>& line) {
    const std::optional<Internal::Fit> fit = Internal::Matcher(line).couldRun(declaration);
    return fit && std::none_of(fit->given.begin(), fit->given.end(),
                               [](const ParameterProtocol& each) { return each.validate(); });
}

}  // namespace

TEST(ToolLaws, ALineFitsInExactSpellingAsItFitsForTheCore) {
    EXPECT_TRUE(rc::check("walk", [] {
        const Case drawn = drawnCase();
        const Tool tool = exactTool(drawn, [](std::size_t, const Parameters&) {});
        const std::vector<Text> line = textsOf(drawn.arguments);
        const Internal::Grammar grammar(tool);
        bool anyFits = false;
        for (std::size_t i = 0; i < tool.commandLines.size(); ++i) {
            std::optional<Internal::Fit> fit;
            static_cast<void>(
                printed([&] { fit = Internal::Matcher(line).couldRun(tool.commandLines[i]); }));
            const auto gifts = giftsOf(grammar, i, line);
            RC_ASSERT(gifts.has_value() == fit.has_value());
            if (!gifts) continue;
            anyFits = true;
            RC_ASSERT(areSame(Internal::parametersOf(grammar.forms[i], *gifts), fit->given));
        }
        RC_CLASSIFY(anyFits, "something fits");
    }));
}

// A value that only what surrounds the core rejects does not keep parse from running the action.
TEST(ToolLaws, ParseRunsWhatIsExplainedToRun) {
    EXPECT_TRUE(rc::check("explain", [] {
        const Case drawn = drawnCase();
        platform().groupsOfUser.insert(0);
        std::vector<std::size_t> ran;
        const Tool tool = exactTool(
            drawn, [&ran](std::size_t command, const Parameters&) { ran.push_back(command); });
        const std::vector<Text> line = textsOf(drawn.arguments);
        Explanation explanation;
        RC_ASSERT(printed([&] { explanation = explain(tool, line); }).empty());
        RC_ASSERT(ran.empty());
        static_cast<void>(
            printed([&] { static_cast<void>(parse(tool.commandLines, textsOf(drawn.line()))); }));
        const Outcome outcome = explanation.outcome;
        bool isToRun = outcome == Outcome::runs || outcome == Outcome::parameterMissing;
        if (outcome == Outcome::valueRejected) {
            const std::size_t place = explanation.attempts.front().declaration;
            isToRun = areValid(tool.commandLines[place], line);
        }
        RC_ASSERT(ran.size() == (isToRun ? 1U : 0U));
        if (isToRun) RC_ASSERT(ran.front() == explanation.attempts.front().declaration);
        RC_CLASSIFY(isToRun, "parse runs it");
        RC_CLASSIFY(outcome == Outcome::parameterMissing, "one is missing");
        RC_CLASSIFY(outcome == Outcome::valueRejected, "a value is rejected");
    }));
}
