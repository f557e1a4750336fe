// parse with root commands in the hands of sudo: in a file of its own, so that a tool that does not
// use it does not link it.

#include "Optrella/CommandLine.hpp"
#include "Optrella/CommandLine/Dispatch.hpp"
#include "Optrella/CommandLine/Validation.hpp"
#include "Optrella/Elevation/HandToSudo.hpp"
#include "Optrella/Platform/StandardStreams.hpp"

namespace Optrella {

namespace {

parsingError runTheOnlyFit(CommandList commandList, std::span<const Text> passedLine) noexcept {
    std::optional<Internal::Fit> fit = Internal::onlyFit(commandList, passedLine);
    if (!fit) return parsingError::NoMatchingLine;
    // First: root judges the values, who may see what the user may not.
    if (fit->requiresRoot) {
        if (const std::optional<std::string> refusal = HandToSudo::refusal(passedLine)) {
            Platform::writeStandardError(*refusal + "\n");
            return parsingError::NoMatchingLine;
        }
    }
    if (!Internal::validateParameters(fit->given)) return parsingError::NoMatchingLine;
    return Internal::run(*fit);
}

}  // namespace

parsingError parse(CommandList commandList, ArgumentList passedIn, RootCommands) noexcept {
    if (passedIn.texts().size() < 2) return parsingError::NoCommandLine;
    return runTheOnlyFit(commandList, passedIn.texts().subspan(1));
}

parsingError parse(CommandList commandList, int argc, const char* const* argv,
                   RootCommands) noexcept {
    if (argc < 2) return parsingError::NoCommandLine;
    const Internal::TextBlock arguments(std::span(argv, static_cast<std::size_t>(argc)).subspan(1));
    return runTheOnlyFit(commandList, arguments.texts());
}

}  // namespace Optrella
