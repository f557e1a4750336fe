#include "Drawn.hpp"

#include <rapidcheck.h>

#include <cstdint>
#include <utility>

#include "Support/FakePlatform.hpp"
#include "Support/Input.hpp"
#include "Support/MatchingModel.hpp"

namespace Tests {

using namespace Optrella;

namespace {

// How a failed law shows its case.
std::string shown(const std::vector<ParameterCase>& list) {
    std::string text;
    for (const ParameterCase& each : list) {
        text += " (" + std::to_string(each.kind) + (each.takesValue ? ", value:" : ", flag:");
        for (const std::string& tag : each.tags) text += " '" + tag + "'";
        text += ")";
    }
    return text;
}
std::string shown(const Case& drawn) {
    std::string text;
    for (const CommandCase& each : drawn.commands) {
        text += "required:" + shown(each.required) + " optional:" + shown(each.optional) + "\n";
    }
    text += "arguments:";
    for (const std::string& argument : drawn.arguments) text += " '" + argument + "'";
    return text;
}

// The same text in other bytes, where the drawn words have one.
std::string otherSpelling(const std::string& text) {
    for (const auto& [left, right] : {std::pair{"-\u00E9", "-e\u0301"}, {"K", "\u212A"}}) {
        if (text == left) return right;
        if (text == right) return left;
    }
    return text;
}

// A value that the kind takes, on the platform of the model.
std::string goodValue(const ParameterCase& parameter) {
    if (!parameter.fields.options.empty()) return parameter.fields.options.front().front();
    const auto state = parameter.fields.words.find("state");
    const bool isAbsent = state != parameter.fields.words.end() && state->second == "absent";
    return isAbsent ? "nowhere" : "x";
}

// Arguments that get far: mostly tags of the command, and values after those that take one.
std::vector<std::string> argumentsFor(const CommandCase& command, const std::string& value) {
    std::vector<ParameterCase> given = command.required;
    if (!command.optional.empty() && isDrawn(1, 2)) {
        given.push_back(*rc::gen::elementOf(command.optional));
    }
    if (!given.empty() && isDrawn(1, 4)) {
        given.push_back(given[*rc::gen::inRange<std::size_t>(0, given.size())]);
    }
    std::vector<std::string> arguments;
    for (const ParameterCase& parameter : given) {
        if (parameter.tags.empty()) continue;
        const std::string tag = *rc::gen::elementOf(parameter.tags);
        arguments.push_back(isDrawn(1, 2) ? tag : otherSpelling(tag));
        if (parameter.takesValue) {
            arguments.push_back(isDrawn(1, 4) ? value : goodValue(parameter));
        }
    }
    if (!arguments.empty() && isDrawn(1, 5)) arguments.pop_back();
    return arguments;
}

}  // namespace

bool isDrawn(std::size_t times, std::size_t of) {
    return *rc::gen::weightedElement<bool>({{times, true}, {of - times, false}});
}

// Bytes for a few commands, however small the case: after the end there are zeros.
Case drawnCase() {
    const auto bytes = *rc::gen::resize(
        3 * rc::kNominalSize,
        rc::gen::container<std::vector<std::uint8_t>>(rc::gen::arbitrary<std::uint8_t>()));
    Input input(bytes.data(), bytes.size());
    setUpPlatform(input);
    if (isDrawn(1, 2)) platform().groupsOfUser.insert(0);
    Case drawn;
    const std::string value = word(input);
    drawn.commands = commands(input, isDrawn(3, 4));
    drawn.arguments = arguments(input, drawn.commands);
    if (!drawn.commands.empty() && isDrawn(9, 10)) {
        const std::size_t place = *rc::gen::inRange<std::size_t>(0, drawn.commands.size());
        drawn.arguments = argumentsFor(drawn.commands[place], value);
    }
    RC_LOG(shown(drawn));
    return drawn;
}

std::vector<Text> textsOf(const std::vector<std::string>& texts) {
    return {texts.begin(), texts.end()};
}

}  // namespace Tests
