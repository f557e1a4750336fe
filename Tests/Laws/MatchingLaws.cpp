// Matching against the model of its rules, and what holds whatever is declared and given.

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Drawn.hpp"
#include "Optrella/CommandLine.hpp"
#include "Optrella/CommandLine/Matching.hpp"
#include "Optrella/Help.hpp"
#include "Support/Capture.hpp"
#include "Support/FakePlatform.hpp"
#include "Support/MatchingModel.hpp"

namespace {

using namespace Optrella;
using namespace Tests;

void runNothing(std::size_t, const Parameters&) {}

// What can be seen of a parse. The platform is as before then.
struct Parsed {
    parsingError result{};
    std::string printed;
    std::vector<std::string> stored;
    std::vector<std::size_t> ran;
    Parameters given;

    explicit Parsed(const Case& source) {
        const FakePlatform before = platform();
        const auto declarations =
            made(source.commands, [this](std::size_t command, const auto& list) {
                ran.push_back(command);
                given = list;
            });
        storedValues().clear();
        printed = Tests::printed([&] { result = parse(declarations, textsOf(source.line())); });
        stored = storedValues();
        platform() = before;
    }
};

std::vector<std::size_t> drawnOrder(std::size_t count) {
    std::vector<std::size_t> order(count);
    for (std::size_t i = 0; i < count; ++i) {
        order[i] = i;
        std::swap(order[i], order[*rc::gen::inRange<std::size_t>(0, i + 1)]);
    }
    return order;
}

std::multiset<std::string> linesOf(const std::string& text) {
    std::istringstream stream(text);
    std::multiset<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.insert(line);
    return lines;
}

}  // namespace

TEST(MatchingLaws, CouldRunAnswersAsTheModelDoes) {
    EXPECT_TRUE(rc::check("couldRun", [] {
        const Case drawn = drawnCase();
        const auto declarations = made(drawn.commands, runNothing);
        const std::vector<Text> arguments = textsOf(drawn.arguments);
        Internal::Matcher matcher(arguments);
        int fits = 0;
        for (std::size_t i = 0; i < declarations.size(); ++i) {
            Seen seen;
            const std::optional<Fit> model = fitted(drawn.commands, i, drawn.arguments, seen);
            storedValues().clear();
            std::optional<Internal::Fit> fit;
            const std::string output = printed([&] { fit = matcher.couldRun(declarations[i]); });
            if (!matcher.mayFit(declarations[i])) RC_ASSERT(!fit && output.empty());
            RC_ASSERT(output == seen.printed);
            RC_ASSERT(storedValues() == seen.stored);
            RC_ASSERT(fit.has_value() == model.has_value());
            if (!model) continue;
            ++fits;
            RC_ASSERT(areGiven(fit->given, model->all()));
        }
        RC_CLASSIFY(fits > 0, "something fits");
    }));
}

TEST(MatchingLaws, ParseDoesAsTheModelDoes) {
    EXPECT_TRUE(rc::check("parse", [] {
        const Case drawn = drawnCase();
        RC_PRE(!drawn.arguments.empty());
        const Outcome model = expected(drawn.commands, drawn.line());
        const Parsed parsed(drawn);
        RC_ASSERT(parsed.result == model.result);
        RC_ASSERT(parsed.printed == model.seen.printed);
        RC_ASSERT(parsed.stored == model.seen.stored);
        RC_ASSERT(parsed.ran.size() == (model.run ? 1U : 0U));
        if (!model.run) return;
        RC_ASSERT(parsed.ran.front() == model.run->command);
        RC_ASSERT(areGiven(parsed.given, model.run->all()));
        RC_TAG("one fit");
    }));
}

TEST(MatchingLaws, DeclarationsAndHelpStayAsTheyWere) {
    EXPECT_TRUE(rc::check("declarations", [] {
        Case drawn = drawnCase();
        for (CommandCase& command : drawn.commands) {  // what help can show
            std::erase_if(command.required, [](const auto& each) { return each.tags.empty(); });
        }
        const auto declarations = made(drawn.commands, runNothing);
        const auto untouched = made(drawn.commands, runNothing);
        const std::string help = printed([&] { displayHelp(declarations); });
        static_cast<void>(
            printed([&] { static_cast<void>(parse(declarations, textsOf(drawn.line()))); }));
        RC_ASSERT(printed([&] { displayHelp(declarations); }) == help);
        for (std::size_t i = 0; i < declarations.size(); ++i) {
            RC_ASSERT(areIdentical(declarations[i], untouched[i]));
        }
    }));
}

TEST(MatchingLaws, TheOrderOfDeclarationsDecidesNothing) {
    EXPECT_TRUE(rc::check("order", [] {
        const Case drawn = drawnCase();
        RC_PRE(!drawn.arguments.empty());
        const std::vector<std::size_t> order = drawnOrder(drawn.commands.size());
        Case reordered{{}, drawn.arguments};
        for (const std::size_t place : order) reordered.commands.push_back(drawn.commands[place]);
        const Parsed before(drawn);
        const Parsed after(reordered);
        RC_ASSERT(after.result == before.result);
        RC_ASSERT(linesOf(after.printed) == linesOf(before.printed));
        RC_ASSERT(after.ran.size() == before.ran.size());
        if (!before.ran.empty()) RC_ASSERT(order[after.ran.front()] == before.ran.front());
        RC_CLASSIFY(!before.ran.empty(), "one fit");
    }));
}
