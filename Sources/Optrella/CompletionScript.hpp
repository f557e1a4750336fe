// CompletionScript.hpp - what a shell must be told so that TAB completes a tool's words.

#ifndef OPTRELLA_COMPLETIONSCRIPT_HPP
#define OPTRELLA_COMPLETIONSCRIPT_HPP

#include <cstdint>

#include "Optrella/Export.hpp"
#include "Optrella/Text.hpp"
#include "Optrella/Tool.hpp"

namespace Optrella {

// The shells: bash 4.4 or later, zsh 5, fish 3.
enum class Shell : std::uint8_t { bash, zsh, fish };

// Returns a script for the shell, to be sourced or installed. It knows nothing of the tool but its
// name: at each TAB it starts the command that is typed, with OPTRELLA_COMPLETE=1, the words before
// the cursor and the one at it, and offers what is answered. Empty when the name is one that would
// have to be quoted where it is typed, or of a path: anything but letters, digits, + - . _ : @ and
// what is not ASCII, or a dash at its beginning.
[[nodiscard]] OPTRELLA_API Text completionScript(const Tool& tool, Shell shell) noexcept;

}  // namespace Optrella

#endif
