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

namespace Internal {

// Rarely called: small rather than fast.
[[gnu::cold]] std::string rendered(std::span<const Text> arguments) noexcept {
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

std::optional<Fit> onlyFit(CommandList commandList, std::span<const Text> passedLine) noexcept {
    Matcher matcher(passedLine);
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
        printLine({rendered(passedLine),
                   " is not a valid command line.\n Please refer to the help below."});
    }
    if (!isOnly) first.reset();
    return first;
}

parsingError run(Fit& fit) noexcept {
    const auto callAction = [](void* context) {
        const Fit& chosen = *static_cast<const Fit*>(context);
        chosen.run(chosen.given);
    };
    if (!Platform::runOnWorker(callAction, &fit)) fatalStop();
    return parsingError::NoError;
}

}  // namespace Internal

namespace {

parsingError runTheOnlyFit(CommandList commandList, std::span<const Text> passedLine) noexcept {
    std::optional<Internal::Fit> fit = Internal::onlyFit(commandList, passedLine);
    if (!fit || !Internal::validateParameters(fit->given) ||
        !Internal::validatePermissions(fit->requiresRoot)) {
        return parsingError::NoMatchingLine;
    }
    return Internal::run(*fit);
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
