#include "Optrella/Help.hpp"

#include <string>

#include "Optrella/Internal/CommandLine.hpp"
#include "Optrella/Internal/Help.hpp"
#include "Optrella/Internal/Print.hpp"
#include "Optrella/Internal/Unicode.hpp"

namespace Optrella {

namespace {

using Internal::Declaration;

std::string helpLine(const CommandLinePossibility& possibility) {
    // Ends the line of the synopses. The blank behind the help text always stands: so there are two
    // before the note and one at the end of a line without it.
    std::string line = "\n  ";
    line += Declaration::help(possibility);
    line += " ";
    if (Declaration::requiresRoot(possibility)) line += " (must be run as root)";
    return line;
}

// REQUIRES: `lines` ends in a line feed or is empty.
void appendChoices(std::string& lines, const ListOptions& options) {
    lines += "        Must be one of: ";
    for (const ParameterNone& option : options) {
        lines += option.firstTag();
        lines += ", ";
    }
    // Without choices this takes the ": " of the fixed text.
    Internal::dropLastCharacters(lines, 2);
    lines += '\n';
}

void appendDescription(std::string& lines, const ParameterProtocol& parameter) {
    const commonDetails& common = parameter.common();
    if (!common.hasParameter) {
        if (common.tagHelp.empty()) return;
        lines += "    ";
        lines += common.tagHelp;
        lines += '\n';
        return;
    }
    lines += "    ";
    lines += common.parameterName;
    lines += "  -  ";
    lines += common.tagHelp;
    lines += '\n';
    if (const auto* list = parameter.as<ParameterList>()) {
        appendChoices(lines, list->validOptions());
    }
}

}  // namespace

namespace Internal {

std::string formTagHelp(const ParameterProtocol& option, bool optional) {
    const commonDetails& common = option.common();
    std::string text = optional ? "[ " : "";
    for (const Text& tag : common.tags) {
        text += tag;
        text += '|';
    }
    // The last bar; without tags, the blank of "[ " - and a required parameter has not even that.
    if (text.empty()) fatalStop();
    dropLastCharacters(text, 1);
    if (common.hasParameter) {
        text += " <";
        text += common.parameterName;
        text += "> ";
    }
    if (optional) text += " ]";
    return text;
}

std::string displayHelpParameters(const Parameters& list, bool optional) {
    std::string description;
    for (const ParameterProtocol& parameter : list) {
        print(formTagHelp(parameter, optional), ' ');
        appendDescription(description, parameter);
    }
    return description;
}

}  // namespace Internal

void displayHelp(CommandList commandList) noexcept {
    Internal::print("");
    for (const CommandLinePossibility& possibility : commandList) {
        if (Declaration::hidden(possibility)) continue;
        std::string description =
            Internal::displayHelpParameters(Declaration::required(possibility), false);
        description += Internal::displayHelpParameters(Declaration::optional(possibility), true);
        Internal::print(helpLine(possibility));
        Internal::print(std::move(description));
    }
}

}  // namespace Optrella
