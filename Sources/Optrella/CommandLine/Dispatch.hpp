// Dispatch.hpp - the pieces of parse that stand between matching and the action.

#ifndef OPTRELLA_COMMANDLINE_DISPATCH_HPP
#define OPTRELLA_COMMANDLINE_DISPATCH_HPP

#include <span>
#include <string>

#include "Optrella/Text.hpp"

namespace Optrella::Internal {

// Returns the arguments as they are shown in a diagnostic: ["add", "say \"x\""].
[[nodiscard]] std::string rendered(std::span<const Text> arguments) noexcept;

}  // namespace Optrella::Internal

#endif
