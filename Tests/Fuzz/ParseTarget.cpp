// parse of any arguments against any declarations: what it prints, returns and runs, against the
// model, and what the action fetches of it.

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "Law.hpp"
#include "Optrella/CommandLine.hpp"
#include "Optrella/Fetch.hpp"
#include "Output.hpp"
#include "Support/FakePlatform.hpp"
#include "Support/Kinds.hpp"
#include "Support/MatchingModel.hpp"

namespace {

using namespace Optrella;
using namespace Tests;

// ---- What the action fetches ----

bool areSameTexts(const std::vector<std::string>& left, const std::vector<std::string>& right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), isSameText);
}

const Given* firstEqual(const std::vector<Given>& list, const ParameterCase& wanted) {
    for (const Given& each : list) {
        const ParameterCase& other = *each.parameter;
        if (other.kind == wanted.kind && other.takesValue == wanted.takesValue &&
            areSameTexts(other.tags, wanted.tags) && isSameText(other.help, wanted.help)) {
            return &each;
        }
    }
    return nullptr;
}

// Asks for the parameter by its declaration, and compares with what the model says was given.
void checkFetched(const ParameterCase& wanted, const Parameters& list, const Given* given) {
    const ParameterProtocol type = made(wanted);
    law(hasOptional(type, list) == (given != nullptr), "hasOptional tells what was given");
    forEachKind([&]<class Kind>() {
        if (wanted.kind != numberOf<Kind>) return;
        const auto fetched = KindEntry<Kind>::fetchOptional(*type.as<Kind>(), list);
        law(static_cast<bool>(fetched) == (given != nullptr),
            "what was given is fetched, and nothing else");
        if constexpr (!std::is_same_v<Kind, ParameterNone>) {
            if (given == nullptr) return;
            law(KindEntry<Kind>::isValue(fieldsOf(wanted), given->value, *fetched),
                "what is fetched is what was typed");
        }
    });
}

void checkGiven(const std::vector<CommandCase>& commands, const Fit& fit, const Parameters& list) {
    const std::vector<Given> given = fit.all();
    law(areGiven(list, given), "the action gets what was given, as declared and in its order");
    for (const CommandCase& command : commands) {
        for (const auto* section : {&command.required, &command.optional}) {
            for (const ParameterCase& each : *section) {
                checkFetched(each, list, firstEqual(given, each));
            }
        }
    }
}

// ---- The run ----

parsingError parsed(const std::vector<CommandLinePossibility>& declarations,
                    const std::vector<std::string>& line, bool asArray) {
    if (!asArray) return parse(declarations, line);
    std::vector<const char*> array;
    for (const std::string& argument : line) array.push_back(argument.c_str());
    const int count = static_cast<int>(array.size());
    array.push_back(nullptr);
    return parse(declarations, count, array.data());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    setUpPlatform(input);
    const bool asArray = input.flag();
    const std::vector<CommandCase> cases = commands(input, false);
    std::vector<std::string> line = arguments(input, cases);
    if (!line.empty() || input.flag()) line.insert(line.begin(), "tool");
    if (asArray) {
        for (std::string& argument : line) argument = argument.c_str();
    }
    const Outcome outcome = expected(cases, line);

    std::size_t runs = 0;
    const Run run = [&](std::size_t command, const Parameters& given) {
        ++runs;
        law(outcome.run && outcome.run->command == command, "the command that fits is run");
        checkGiven(cases, *outcome.run, given);
    };
    const auto declarations = made(cases, run);
    const auto untouched = made(cases, run);
    takePrinted();
    storedValues().clear();
    law(parsed(declarations, line, asArray) == outcome.result, "the result says what happened");
    sameBytes(takePrinted(), outcome.seen.printed, "what is printed is what happened");
    law(storedValues() == outcome.seen.stored, "own kinds store what was given, each once");
    law(runs == (outcome.run ? 1U : 0U), "one command is run, or none");
    law(platform().threadsStarted == static_cast<int>(runs), "an action has a thread of its own");
    for (std::size_t i = 0; i < declarations.size(); ++i) {
        law(areIdentical(declarations[i], untouched[i]), "declarations stay as they were");
    }
    return 0;
}
