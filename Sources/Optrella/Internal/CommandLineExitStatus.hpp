// CommandLineExitStatus.hpp - what the log calls this library; reached by tests, not by tools.

#ifndef OPTRELLA_INTERNAL_COMMANDLINEEXITSTATUS_HPP
#define OPTRELLA_INTERNAL_COMMANDLINEEXITSTATUS_HPP

#include "Optrella/Text.hpp"

namespace Optrella::Internal {

// The bundle identifier of the process, or a fixed text where there is none; asked for once.
[[nodiscard]] const Text& subsystem();

}  // namespace Optrella::Internal

#endif
