// Listing.hpp - the pieces of the help listing.

#ifndef OPTRELLA_HELP_LISTING_HPP
#define OPTRELLA_HELP_LISTING_HPP

#include "Optrella/CommandLine.hpp"
#include "Optrella/Text/StringBuilder.hpp"

namespace Optrella::Internal {

// One command of the listing. It is printed when all of it is known, or before the process stops.
struct Listing {
    StringBuilder text;
    StringBuilder descriptions;  // stand after the synopses
};

// Lists the synopsis of each parameter with a space after it, and its description.
// STOPS the process when a required one has no tags, and when a choice has none.
void displayHelpParameters(Listing& listing, KeptList list, bool optional);

// Appends the synopsis of one parameter. REQUIRES: a tag, when it is required.
void formTagHelp(StringBuilder& text, const ParameterView& option, bool optional);

}  // namespace Optrella::Internal

#endif
