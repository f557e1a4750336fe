#include "Optrella/Help.hpp"

#include "Optrella/CommandLine/Declaration.hpp"
#include "Optrella/Help/Listing.hpp"
#include "Optrella/Text/Print.hpp"
#include "Optrella/Text/Unicode.hpp"

namespace Optrella {

namespace {

using Internal::Declaration;
using Internal::Listing;
using Internal::StringBuilder;

void appendHelpLine(StringBuilder& text, const CommandLinePossibility& possibility) {
    // Ends the line of the synopses. The space after the help text always stands: so there are two
    // before the note and one at the end of a line without it.
    text.append("\n  ", Declaration::help(possibility), " ");
    if (Declaration::requiresRoot(possibility)) text.append(" (must be run as root)");
    text.append("\n");
}

// Shows what of a command was listed before the parameter that cannot be.
[[noreturn]] void stopAfter(const Listing& listing) {
    Internal::print(listing.text);
    Internal::fatalStop();
}

void appendChoices(Listing& listing, const ListOptions& options) {
    StringBuilder& text = listing.descriptions;
    text.append("        Must be one of: ");
    for (const ParameterNone& option : options) {
        if (option.common.tags.empty()) stopAfter(listing);
        text.append(option.firstTag(), ", ");
    }
    // Without choices this takes the ": " of the fixed text.
    for (int i = 0; i < 2; ++i) text.removeLast(Internal::sizeOfLastCharacter(text));
    text.append("\n");
}

void appendDescription(Listing& listing, const Internal::ParameterView& parameter) {
    const commonDetails& common = parameter.common();
    StringBuilder& text = listing.descriptions;
    if (!common.hasParameter) {
        if (!common.tagHelp.empty()) text.append("    ", common.tagHelp, "\n");
        return;
    }
    text.append("    ", common.parameterName, "  -  ", common.tagHelp, "\n");
    if (const auto* list = parameter.as<ParameterList>()) {
        appendChoices(listing, list->validOptions());
    }
}

}  // namespace

namespace Internal {

void formTagHelp(StringBuilder& text, const ParameterView& option, bool optional) {
    const commonDetails& common = option.common();
    const std::size_t begin = text.size();
    if (optional) text.append("[ ");
    for (const Text& tag : common.tags) {
        text.append(tag, "|");
    }
    // The last bar; without tags, the space of "[ ".
    text.removeLast(sizeOfLastCharacter(text.from(begin)));
    if (common.hasParameter) text.append(" <", common.parameterName, "> ");
    if (optional) text.append(" ]");
}

void displayHelpParameters(Listing& listing, KeptList list, bool optional) {
    for (const KeptParameter& parameter : list) {
        // It has no last bar to drop.
        if (!optional && parameter.common().tags.empty()) stopAfter(listing);
        formTagHelp(listing.text, parameter, optional);
        listing.text.append(" ");
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
        appendHelpLine(listing.text, possibility);
        listing.text.append(listing.descriptions, "\n");
        Internal::print(listing.text);
        listing.text.clear();
        listing.descriptions.clear();
    }
}

}  // namespace Optrella
