#include "Optrella/CommandLine/Dispatch.hpp"

#include <algorithm>
#include <utility>

#include "Optrella/CommandLine.hpp"
#include "Optrella/CommandLine/Matching.hpp"
#include "Optrella/CommandLine/Validation.hpp"
#include "Optrella/Platform/Worker.hpp"
#include "Optrella/Text/Escapes.hpp"
#include "Optrella/Text/Print.hpp"

namespace Optrella {

std::string Internal::rendered(std::span<const Text> arguments) noexcept {
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

namespace {

using Internal::Fit;

// Returns the one fit, or nothing when there is none or more than one. All declarations are tried,
// whether one has fitted or not: each may have something to say.
std::optional<Fit> onlyFit(CommandList commandList, std::span<const Text> passedLine) noexcept {
    Internal::Matcher matcher(passedLine);
    const auto mayFit = [&matcher](const auto& each) { return matcher.mayFit(each); };
    const auto end = commandList.end();
    std::optional<Fit> first;
    bool isOnly = true;
    for (auto candidate = std::find_if(commandList.begin(), end, mayFit); candidate != end;
         candidate = std::find_if(candidate + 1, end, mayFit)) {
        std::optional<Fit> fit = matcher.couldRun(*candidate);
        if (!fit) continue;
        if (first) isOnly = false;
        first = std::move(fit);
    }
    if (!first) {
        Internal::printLine({Internal::rendered(passedLine),
                             " is not a valid command line.\n Please refer to the help below."});
    }
    if (!isOnly) first.reset();
    return first;
}

void callAction(void* context) {
    const Fit& fit = *static_cast<const Fit*>(context);
    fit.run(fit.given);
}

parsingError runTheOnlyFit(CommandList commandList, std::span<const Text> passedLine) noexcept {
    std::optional<Fit> fit = onlyFit(commandList, passedLine);
    if (!fit || !Internal::validateParameters(fit->given) ||
        !Internal::validatePermissions(fit->requiresRoot)) {
        return parsingError::NoMatchingLine;
    }
    if (!Platform::runOnWorker(callAction, &*fit)) Internal::fatalStop();
    return parsingError::NoError;
}

}  // namespace

parsingError parse(CommandList commandList, ArgumentList passedIn) noexcept {
    if (passedIn.texts().size() < 2) return parsingError::NoCommandLine;
    return runTheOnlyFit(commandList, passedIn.texts().subspan(1));
}

parsingError parse(CommandList commandList, int argc, const char* const* argv) noexcept {
    if (argc < 2) return parsingError::NoCommandLine;
    const Internal::TextBlock arguments(std::span(argv, static_cast<std::size_t>(argc)).subspan(1));
    return runTheOnlyFit(commandList, arguments.texts());
}

}  // namespace Optrella
