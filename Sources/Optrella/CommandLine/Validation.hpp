// Validation.hpp - whether a command that fits may run.

#ifndef OPTRELLA_COMMANDLINE_VALIDATION_HPP
#define OPTRELLA_COMMANDLINE_VALIDATION_HPP

#include "Optrella/Parameters.hpp"

namespace Optrella::Internal {

// Asks every given parameter whether its value is acceptable, prints a line for each that is not,
// and returns whether all are.
[[nodiscard]] bool validateParameters(const Parameters& given);

// Returns whether a command may run with the rights that the user has; prints a line when it may
// not. Ends the process with status 0 after the tool has been run again as root.
[[nodiscard]] bool validatePermissions(bool requiresRoot);

}  // namespace Optrella::Internal

#endif
