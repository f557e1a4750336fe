// LogSubsystem.hpp - what the log calls this library; reached by tests, not by tools.

#ifndef OPTRELLA_COMMANDLINEEXITSTATUS_LOGSUBSYSTEM_HPP
#define OPTRELLA_COMMANDLINEEXITSTATUS_LOGSUBSYSTEM_HPP

#include "Optrella/Text.hpp"

namespace Optrella::Internal {

// Returns the bundle identifier of the process, or a fixed text where there is none; asked for
// once.
[[nodiscard]] const Text& subsystem();

}  // namespace Optrella::Internal

#endif
