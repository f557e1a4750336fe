// parse of any arguments against any declarations: what it prints, returns and runs, against a
// plain model, and what the action fetches of it.

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "Declarations.hpp"
#include "Input.hpp"
#include "Optrella/CommandLine.hpp"
#include "Optrella/CommandLine/Dispatch.hpp"
#include "Optrella/Fetch.hpp"
#include "Optrella/Text/Unicode.hpp"
#include "Output.hpp"
#include "Support/FakePlatform.hpp"
#include "Support/Kinds.hpp"

namespace {

using namespace Optrella;
using namespace Tests;

// ---- The model ----

struct Given {
    const ParameterCase* parameter;
    std::string value;
};

struct Fit {
    std::size_t command;
    std::vector<Given> required;
    std::vector<Given> optional;

    [[nodiscard]] std::vector<Given> all() const {
        std::vector<Given> list = required;
        list.insert(list.end(), optional.begin(), optional.end());
        return list;
    }
};

bool isSameText(const std::string& left, const std::string& right) {
    return Text(left) == Text(right);
}

bool areSameTexts(const std::vector<std::string>& left, const std::vector<std::string>& right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), isSameText);
}

const ParameterCase* lastOwner(const std::vector<ParameterCase>& list,
                               const std::string& argument) {
    const ParameterCase* found = nullptr;
    for (const ParameterCase& each : list) {
        for (const std::string& tag : each.tags) {
            if (isSameText(tag, argument)) found = &each;
        }
    }
    return found;
}

bool isOwn(const ParameterCase& parameter) {
    return parameter.kind == ownKind || parameter.kind == largeKind;
}

std::optional<Fit> fitted(const std::vector<CommandCase>& commands, std::size_t number,
                          const std::vector<std::string>& arguments, std::string& printed) {
    const CommandCase& command = commands[number];
    Fit fit{number, {}, {}};
    const ParameterCase* pending = nullptr;
    std::vector<Given>* section = &fit.required;
    for (const std::string& argument : arguments) {
        if (pending != nullptr) {
            section->push_back(
                {pending, isOwn(*pending) ? OwnKind<1>::stored(argument) : argument});
            pending = nullptr;
            continue;
        }
        section = &fit.required;
        pending = lastOwner(command.required, argument);
        if (pending == nullptr) {
            section = &fit.optional;
            pending = lastOwner(command.optional, argument);
        }
        if (pending == nullptr) return std::nullopt;
        if (pending->takesValue) continue;
        section->push_back({pending, ""});
        pending = nullptr;
    }
    if (pending != nullptr) {
        printed += "Missing argument for " + pending->tags.front() + "\n";
        return std::nullopt;
    }
    if (fit.required.size() != command.required.size()) return std::nullopt;
    return fit;
}

// What the model of a kind is told.
KindFields fieldsOf(const ParameterCase& parameter) {
    KindFields fields = parameter.fields;
    fields.exists = [](const std::string& path) { return platform().existingPaths.contains(path); };
    fields.currentDirectory = "/here";
    fields.withoutLast = [](std::size_t count, std::string text) {
        text.resize(text.size() - Internal::sizeOfLastCharacters(text, count));
        return text;
    };
    return fields;
}

std::optional<std::string> fault(const Given& given) {
    if (isOwn(*given.parameter)) return OwnKind<1>::fault(given.value);
    std::optional<std::string> message;
    forEachKind([&]<class Kind>() {
        if (given.parameter->kind != numberOf<Kind>) return;
        message = KindEntry<Kind>::fault(fieldsOf(*given.parameter), given.value);
    });
    return message;
}

// Whether the user, who never knows the password, may run a root command.
bool mayRunAsRoot(std::string& printed) {
    if (platform().groupsOfUser.contains(0)) return true;
    if (platform().groupsOfUser.contains(80)) {
        for (std::size_t i = 0; i < 3 && i < platform().typedLines.size(); ++i) {
            if (platform().typedLines[i]) printed += "Sorry, try again.\n";
        }
    }
    printed += "Requested command line must be run as root. Try using sudo.\n";
    return false;
}

struct Outcome {
    parsingError result = parsingError::NoMatchingLine;
    std::string printed;
    std::optional<Fit> run;
};

Outcome expected(const std::vector<CommandCase>& commands, const std::vector<std::string>& line) {
    Outcome outcome;
    if (line.size() < 2) {
        outcome.result = parsingError::NoCommandLine;
        return outcome;
    }
    const std::vector<std::string> arguments(line.begin() + 1, line.end());
    std::vector<Fit> fits;
    for (std::size_t i = 0; i < commands.size(); ++i) {
        const std::optional<Fit> fit = fitted(commands, i, arguments, outcome.printed);
        if (fit) fits.push_back(*fit);
    }
    if (fits.empty()) {
        outcome.printed +=
            Internal::rendered(std::vector<Text>(arguments.begin(), arguments.end())) +
            " is not a valid command line.\n Please refer to the help below.\n";
    }
    if (fits.size() != 1) return outcome;
    bool isValid = true;
    for (const Given& given : fits.front().all()) {
        const std::optional<std::string> message = fault(given);
        if (!message) continue;
        outcome.printed += "Validation of parameter " + given.parameter->tags.front() +
                           " failed : " + *message + "\n";
        isValid = false;
    }
    if (!isValid) return outcome;
    if (commands[fits.front().command].requiresRoot && !mayRunAsRoot(outcome.printed)) {
        return outcome;
    }
    outcome.result = parsingError::NoError;
    outcome.run = fits.front();
    return outcome;
}

// ---- What the action fetches ----

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
    law(list.size() == given.size(), "the action gets what was given");
    for (std::size_t i = 0; i < list.size(); ++i) {
        sameBytes(list[i].common().userValue, given[i].value, "the action gets it in its order");
        law(list[i].isEqualTo(made(*given[i].parameter)), "the action gets what was declared");
    }
    for (const CommandCase& command : commands) {
        for (const auto* section : {&command.required, &command.optional}) {
            for (const ParameterCase& each : *section) {
                checkFetched(each, list, firstEqual(given, each));
            }
        }
    }
}

// ---- The run ----

void setUpPlatform(Input& input) {
    platform() = FakePlatform();
    platform().existingPaths = {"/there", "x", ""};
    const std::uint8_t rights = input.byte();
    if ((rights & 1) != 0) platform().groupsOfUser.insert(0);
    if ((rights & 2) != 0) platform().groupsOfUser.insert(80);
    // With the right one the process would end; what is typed is always made a text.
    platform().rightPassword = "\xFF";
    if ((rights & 4) != 0) platform().typedLines = {"a\xC3z", std::nullopt, "b", "c"};
}

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
    law(parsed(declarations, line, asArray) == outcome.result, "the result says what happened");
    sameBytes(takePrinted(), outcome.printed, "what is printed is what happened");
    law(runs == (outcome.run ? 1U : 0U), "one command is run, or none");
    law(platform().threadsStarted == static_cast<int>(runs), "an action has a thread of its own");
    for (std::size_t i = 0; i < declarations.size(); ++i) {
        law(areIdentical(declarations[i], untouched[i]), "declarations stay as they were");
    }
    return 0;
}
