#include "Optrella/CommandLine.hpp"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <string>

#include "Optrella/Internal/CommandLine.hpp"
#include "Optrella/Internal/Print.hpp"
#include "Optrella/Internal/Unicode.hpp"
#include "Optrella/Platform/StartArguments.hpp"
#include "Optrella/Platform/Worker.hpp"
#include "Optrella/PromptForPassword.hpp"

namespace Optrella {

using Internal::Declaration;

// ---- Results ----

Text rawValue(parsingError error) noexcept {
    switch (error) {
        case parsingError::NoError:
            return "Parse successful";
        case parsingError::MissingParameter:
            return "Missing Parameter";
        case parsingError::NoMatchingLine:
            return "Unknown command line";
        case parsingError::NoCommandLine:
            return "No command line specified";
    }
    Internal::fatalStop();
}

template <>
std::optional<parsingError> fromRawValue<parsingError>(const Text& text) noexcept {
    using enum parsingError;
    for (const parsingError error : {NoError, MissingParameter, NoMatchingLine, NoCommandLine}) {
        if (rawValue(error) == text) return error;
    }
    return std::nullopt;
}

// ---- Matching ----

namespace {

using Arguments = std::span<const Text>;

bool owns(const ParameterProtocol& parameter, const Text& argument) {
    const Tags& tags = parameter.common().tags;
    return std::find(tags.begin(), tags.end(), argument) != tags.end();
}

// Of several owners the last one is taken, on purpose; hence backwards. Null when there is none.
const ParameterProtocol* lastOwner(const Parameters& parameters, const Text& argument) {
    const auto owner =
        std::find_if(parameters.rbegin(), parameters.rend(),
                     [&](const ParameterProtocol& each) { return owns(each, argument); });
    return owner != parameters.rend() ? &*owner : nullptr;
}

// Walks the arguments through a declaration and calls `take` for each given parameter: with the
// declared one, whether it is required, and its value, null for a flag. False when an argument
// belongs to no parameter, and, with a line of output, when the last value is missing.
template <class Take>
bool walk(const CommandLinePossibility& declaration, Arguments arguments, Take take) {
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        const ParameterProtocol* owner = lastOwner(Declaration::required(declaration), *argument);
        const bool isRequired = owner != nullptr;
        if (!isRequired) owner = lastOwner(Declaration::optional(declaration), *argument);
        if (owner == nullptr) return false;
        if (!owner->common().hasParameter) {
            take(*owner, isRequired, nullptr);
            continue;
        }
        if (++argument == arguments.end()) {
            Internal::print("Missing argument for " + owner->firstTag().str());
            return false;
        }
        take(*owner, isRequired, &*argument);
    }
    return true;
}

// A declaration that the arguments fit.
struct Fit {
    const CommandLinePossibility* declaration;
    // Copies, with their values, of the given parameters whose kind replaces storeUserValue: a tool
    // may see that call, so it is made during the walk, once, whatever comes of the walk. All other
    // copies wait until it is known that they are needed.
    Parameters stored;
};

std::optional<Fit> fitted(const CommandLinePossibility& declaration, Arguments arguments) {
    std::size_t requiredCount = 0;
    Parameters stored;
    const bool isWhole =
        walk(declaration, arguments,
             [&](const ParameterProtocol& parameter, bool isRequired, const Text* value) {
                 if (isRequired) ++requiredCount;
                 if (value == nullptr || parameter.storesByDefault()) return;
                 stored.push_back(parameter);
                 stored.back().storeUserValue(*value);
             });
    // Only the counts are compared, on purpose: a required tag that is given twice makes up for
    // another one that is missing.
    if (!isWhole || requiredCount != Declaration::required(declaration).size()) return std::nullopt;
    return Fit{&declaration, std::move(stored)};
}

CommandLinePossibility filledIn(Fit fit, Arguments arguments) {
    const CommandLinePossibility& declaration = *fit.declaration;
    Parameters required;
    Parameters optional;
    auto stored = std::make_move_iterator(fit.stored.begin());
    walk(declaration, arguments,
         [&](const ParameterProtocol& parameter, bool isRequired, const Text* value) {
             Parameters& section = isRequired ? required : optional;
             if (value == nullptr) {
                 section.push_back(parameter);
             } else if (parameter.storesByDefault()) {
                 section.push_back(parameter);
                 section.back().storeUserValue(*value);
             } else {
                 section.push_back(*stored++);
             }
         });
    return {Declaration::requiresRoot(declaration),
            std::move(required),
            std::move(optional),
            Declaration::help(declaration),
            false,
            Declaration::run(declaration)};
}

}  // namespace

namespace Internal {

std::optional<CommandLinePossibility> couldRun(const CommandLinePossibility& commandLine,
                                               std::span<const Text> passedLine) {
    std::optional<Fit> fit = fitted(commandLine, passedLine);
    if (!fit) return std::nullopt;
    return filledIn(*std::move(fit), passedLine);
}

// ---- Validation ----

bool validateParameters(const CommandLinePossibility& commandLine) {
    bool isValid = true;
    for (const Parameters* section :
         {&Declaration::required(commandLine), &Declaration::optional(commandLine)}) {
        for (const ParameterProtocol& parameter : *section) {
            const std::optional<Text> message = parameter.validate();
            if (!message) continue;
            print("Validation of parameter " + parameter.firstTag().str() +
                  " failed : " + message->str());
            isValid = false;
        }
    }
    return isValid;
}

bool validatePermissions(const CommandLinePossibility& commandLine) {
    if (!Declaration::requiresRoot(commandLine)) return true;
    // The group alone decides, not the process's user id.
    constexpr std::int64_t groupOfRoot = 0;
    if (PromptForPassword::validateGroupMembership(groupOfRoot)) return true;
    if (std::optional<Platform::Password> password = PromptForPassword::prompt()) {
        PromptForPassword::rerun(*std::move(password), Platform::startArguments());
        // The tool has run, as root: this process has nothing left to do, whatever came of it.
        std::exit(0);  // NOLINT(concurrency-mt-unsafe)
    }
    print("Requested command line must be run as root. Try using sudo.");
    return false;
}

// ---- Diagnostics ----

std::string rendered(std::span<const Text> arguments) {
    std::string list = "[";
    const char* separator = "";
    for (const Text& argument : arguments) {
        list += separator;
        list += '"';
        appendEscaped(list, argument);
        list += '"';
        separator = ", ";
    }
    list += ']';
    return list;
}

}  // namespace Internal

// ---- Parse ----

namespace {

void runAction(void* context) {
    const auto& commandLine = *static_cast<const CommandLinePossibility*>(context);
    const Parameters& optional = Declaration::optional(commandLine);
    Parameters given = Declaration::required(commandLine);
    given.insert(given.end(), optional.begin(), optional.end());
    Declaration::run(commandLine)(given);
}

parsingError run(CommandLinePossibility commandLine) {
    if (!Internal::validateParameters(commandLine)) return parsingError::NoMatchingLine;
    if (!Internal::validatePermissions(commandLine)) return parsingError::NoMatchingLine;
    if (!Platform::runOnWorker(runAction, &commandLine)) Internal::fatalStop();
    return parsingError::NoError;
}

}  // namespace

parsingError parse(CommandList commandList, std::span<const Text> passedIn) noexcept {
    if (passedIn.size() < 2) return parsingError::NoCommandLine;
    const Arguments arguments = passedIn.subspan(1);
    std::optional<Fit> onlyFit;
    std::size_t fits = 0;
    for (const CommandLinePossibility& declaration : commandList) {
        std::optional<Fit> fit = fitted(declaration, arguments);
        if (fit && ++fits == 1) onlyFit = std::move(fit);
    }
    if (fits == 0) {
        Internal::print(Internal::rendered(arguments) +
                        " is not a valid command line.\n Please refer to the help below.");
    }
    if (fits != 1) return parsingError::NoMatchingLine;
    return run(filledIn(*std::move(onlyFit), arguments));
}

parsingError parse(CommandList commandList, int argc, const char* const* argv) noexcept {
    if (argc < 2) return parsingError::NoCommandLine;
    return parse(commandList, std::vector<Text>(argv, argv + argc));
}

}  // namespace Optrella
