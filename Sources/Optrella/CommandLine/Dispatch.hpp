// Dispatch.hpp - the pieces of parse that stand between matching and the action.

#ifndef OPTRELLA_COMMANDLINE_DISPATCH_HPP
#define OPTRELLA_COMMANDLINE_DISPATCH_HPP

#include <optional>
#include <span>
#include <string>

#include "Optrella/CommandLine.hpp"
#include "Optrella/CommandLine/Matching.hpp"

namespace Optrella::Internal {

// Returns the arguments as they are shown in a diagnostic: ["add", "say \"x\""].
[[nodiscard]] std::string rendered(std::span<const Text> arguments) noexcept;

// Returns the one fit, or nothing when there is none, which is printed, or more than one. All
// declarations are tried, whether one has fitted or not: each may have something to say.
[[nodiscard]] std::optional<Fit> onlyFit(CommandList commandList,
                                         std::span<const Text> passedLine) noexcept;

// Runs the action on a worker and waits for its end. STOPS the process when there is no worker.
[[nodiscard]] parsingError run(Fit& fit) noexcept;

}  // namespace Optrella::Internal

#endif
