// HandToSudo.hpp - root rights by sudo alone, as if the user had typed it before the command.
//
// Beside PromptForPassword; a tool that does not hand over does not link it. Here nobody is asked
// by us, nothing is relayed, and whatever sudo says, reads and answers with is what the user meets.

#ifndef OPTRELLA_ELEVATION_HANDTOSUDO_HPP
#define OPTRELLA_ELEVATION_HANDTOSUDO_HPP

#include <optional>
#include <span>
#include <string>

#include "Optrella/Text.hpp"

namespace Optrella::HandToSudo {

// Returns nothing when a root command may run in this process. Where it may not, puts sudo in its
// place, which starts the running program as root with these arguments (without the program name);
// it does not return then. Returns a sentence, for the user, when that is not possible.
[[nodiscard]] std::optional<std::string> refusal(std::span<const Text> arguments) noexcept;

}  // namespace Optrella::HandToSudo

#endif
