#include "Optrella/Help.hpp"

#include <string>

#include "Optrella/Internal/CommandLine.hpp"
#include "Optrella/Internal/Help.hpp"
#include "Optrella/Internal/Print.hpp"
#include "Optrella/Internal/Unicode.hpp"

namespace Optrella {

namespace {

using Internal::Declaration;
using Internal::Lines;
using Internal::Listing;

void appendHelpLine(Lines& lines, const CommandLinePossibility& possibility) {
    // Ends the line of the synopses. The blank behind the help text always stands: so there are two
    // before the note and one at the end of a line without it.
    lines.append("\n  ", Declaration::help(possibility), " ");
    if (Declaration::requiresRoot(possibility)) lines.append(" (must be run as root)");
    lines.append("\n");
}

// Shows what of a command was listed before the parameter that cannot be.
[[noreturn]] void stopBehind(const Listing& listing) {
    Internal::print(listing.lines);
    Internal::fatalStop();
}

void appendChoices(Listing& listing, const ListOptions& options) {
    Lines& lines = listing.descriptions;
    lines.append("        Must be one of: ");
    for (const ParameterNone& option : options) {
        if (option.common.tags.empty()) stopBehind(listing);
        lines.append(option.firstTag(), ", ");
    }
    // Without choices this takes the ": " of the fixed text.
    lines.shorten(Internal::sizeOfLastCharacters(lines, 2));
    lines.append("\n");
}

void appendDescription(Listing& listing, const ParameterProtocol& parameter) {
    const commonDetails& common = parameter.common();
    Lines& lines = listing.descriptions;
    if (!common.hasParameter) {
        if (!common.tagHelp.empty()) lines.append("    ", common.tagHelp, "\n");
        return;
    }
    lines.append("    ", common.parameterName, "  -  ", common.tagHelp, "\n");
    if (const auto* list = parameter.as<ParameterList>()) {
        appendChoices(listing, list->validOptions());
    }
}

}  // namespace

namespace Internal {

void formTagHelp(Lines& lines, const ParameterProtocol& option, bool optional) {
    const commonDetails& common = option.common();
    const std::size_t begin = lines.size();
    if (optional) lines.append("[ ");
    for (const Text& tag : common.tags) {
        lines.append(tag, "|");
    }
    // The last bar; without tags, the blank of "[ ".
    lines.shorten(sizeOfLastCharacters(lines.from(begin), 1));
    if (common.hasParameter) lines.append(" <", common.parameterName, "> ");
    if (optional) lines.append(" ]");
}

void displayHelpParameters(Listing& listing, const Parameters& list, bool optional) {
    for (const ParameterProtocol& parameter : list) {
        // It has no last bar to drop.
        if (!optional && parameter.common().tags.empty()) stopBehind(listing);
        formTagHelp(listing.lines, parameter, optional);
        listing.lines.append(" ");
        appendDescription(listing, parameter);
    }
}

}  // namespace Internal

void displayHelp(CommandList commandList) noexcept {
    Internal::print("\n");
    Listing listing;
    for (const CommandLinePossibility& possibility : commandList) {
        if (Declaration::hidden(possibility)) continue;
        Internal::displayHelpParameters(listing, Declaration::required(possibility), false);
        Internal::displayHelpParameters(listing, Declaration::optional(possibility), true);
        appendHelpLine(listing.lines, possibility);
        listing.lines.append(listing.descriptions, "\n");
        Internal::print(listing.lines);
        listing.lines.clear();
        listing.descriptions.clear();
    }
}

}  // namespace Optrella
