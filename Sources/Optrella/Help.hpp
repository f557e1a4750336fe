// Help.hpp - the help listing.
//
// The library never prints it on its own: a tool calls displayHelp when parse did not answer
// NoError, or when its user asks for help.

#ifndef OPTRELLA_HELP_HPP
#define OPTRELLA_HELP_HPP

#include "Optrella/CommandLine.hpp"
#include "Optrella/Export.hpp"

namespace Optrella {

// Prints every declaration that is not hidden to standard output: its tags, its help, and a line
// for each parameter. The bytes are the same in every release.
// STOPS the process at a required parameter without tags, and at a list option without tags.
OPTRELLA_API void displayHelp(CommandList commandList) noexcept;

}  // namespace Optrella

#endif
