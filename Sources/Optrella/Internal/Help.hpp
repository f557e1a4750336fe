// Help.hpp - the pieces of the help listing.

#ifndef OPTRELLA_INTERNAL_HELP_HPP
#define OPTRELLA_INTERNAL_HELP_HPP

#include <string>

#include "Optrella/Parameters.hpp"

namespace Optrella::Internal {

// Prints the synopsis of each parameter with a blank behind it, and returns the description lines
// of all of them.
[[nodiscard]] std::string displayHelpParameters(const Parameters& list, bool optional);

// The synopsis of one parameter. STOPS the process when a required one has no tags.
[[nodiscard]] std::string formTagHelp(const ParameterProtocol& option, bool optional);

}  // namespace Optrella::Internal

#endif
