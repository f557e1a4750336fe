// Help.hpp - the pieces of the help listing.

#ifndef OPTRELLA_INTERNAL_HELP_HPP
#define OPTRELLA_INTERNAL_HELP_HPP

#include "Optrella/Internal/Lines.hpp"
#include "Optrella/Parameters.hpp"

namespace Optrella::Internal {

// One command of the listing. It is printed when all of it is known, or before the process stops.
struct Listing {
    Lines lines;
    Lines descriptions;  // stand behind the synopses
};

// Lists the synopsis of each parameter with a blank behind it, and its description.
// STOPS the process when a required one has no tags, and when a choice has none.
void displayHelpParameters(Listing& listing, const Parameters& list, bool optional);

// Appends the synopsis of one parameter. REQUIRES: a tag, when it is required.
void formTagHelp(Lines& lines, const ParameterProtocol& option, bool optional);

}  // namespace Optrella::Internal

#endif
