#include "Support/MatchingModel.hpp"

#include <algorithm>
#include <cstdint>

#include "Optrella/CommandLine/Dispatch.hpp"
#include "Optrella/Text/Unicode.hpp"
#include "Support/FakePlatform.hpp"

namespace Tests {

using namespace Optrella;

namespace {

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

Given givenValue(const ParameterCase& parameter, const std::string& argument, Seen& seen) {
    if (!isOwn(parameter)) return {&parameter, argument};
    seen.stored.push_back(argument);
    return {&parameter, OwnKind<1>::stored(argument)};
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

bool areValid(const std::vector<Given>& list, std::string& printed) {
    bool areValid = true;
    for (const Given& given : list) {
        const std::optional<std::string> message = fault(given);
        if (!message) continue;
        printed += "Validation of parameter " + given.parameter->tags.front() +
                   " failed : " + *message + "\n";
        areValid = false;
    }
    return areValid;
}

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

}  // namespace

bool isSameText(const std::string& left, const std::string& right) {
    return Text(left) == Text(right);
}

std::vector<Given> Fit::all() const {
    std::vector<Given> list = required;
    list.insert(list.end(), optional.begin(), optional.end());
    return list;
}

std::optional<Fit> fitted(const std::vector<CommandCase>& commands, std::size_t number,
                          const std::vector<std::string>& arguments, Seen& seen) {
    const CommandCase& command = commands[number];
    Fit fit{number, {}, {}};
    const ParameterCase* pending = nullptr;
    std::vector<Given>* section = &fit.required;
    for (const std::string& argument : arguments) {
        if (pending != nullptr) {
            section->push_back(givenValue(*pending, argument, seen));
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
        seen.printed += "Missing argument for " + pending->tags.front() + "\n";
        return std::nullopt;
    }
    if (fit.required.size() != command.required.size()) return std::nullopt;
    return fit;
}

Outcome expected(const std::vector<CommandCase>& commands, const std::vector<std::string>& line) {
    Outcome outcome;
    if (line.size() < 2) {
        outcome.result = parsingError::NoCommandLine;
        return outcome;
    }
    const std::vector<std::string> arguments(line.begin() + 1, line.end());
    std::vector<Fit> fits;
    for (std::size_t i = 0; i < commands.size(); ++i) {
        const std::optional<Fit> fit = fitted(commands, i, arguments, outcome.seen);
        if (fit) fits.push_back(*fit);
    }
    std::string& printed = outcome.seen.printed;
    if (fits.empty()) {
        printed += Internal::rendered(std::vector<Text>(arguments.begin(), arguments.end())) +
                   " is not a valid command line.\n Please refer to the help below.\n";
    }
    if (fits.size() != 1 || !areValid(fits.front().all(), printed)) return outcome;
    if (commands[fits.front().command].requiresRoot && !mayRunAsRoot(printed)) return outcome;
    outcome.result = parsingError::NoError;
    outcome.run = fits.front();
    return outcome;
}

bool areGiven(const Parameters& list, const std::vector<Given>& given) {
    return std::equal(list.begin(), list.end(), given.begin(), given.end(),
                      [](const ParameterProtocol& each, const Given& expected) {
                          return each.common().userValue.str() == expected.value &&
                                 each.isEqualTo(made(*expected.parameter));
                      });
}

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

}  // namespace Tests
