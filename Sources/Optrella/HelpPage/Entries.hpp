// Entries.hpp - what a page says of parameters.

#ifndef OPTRELLA_HELPPAGE_ENTRIES_HPP
#define OPTRELLA_HELPPAGE_ENTRIES_HPP

#include <span>

#include "Optrella/HelpPage/Sheet.hpp"
#include "Optrella/Tool/Grammar.hpp"

namespace Optrella::Internal {

// Returns "-s, --sort".
[[nodiscard]] Prose labelOf(std::span<const Text> tags) noexcept;

// Append the words of a command, where there is something to say of them, and its operands; and its
// options: what begins with a dash.
void addArguments(Rows& rows, const Form& form) noexcept;
void addOptions(Rows& rows, const Form& form) noexcept;

// Indents options without a short tag, so that all long ones begin at one column.
void alignLongTags(std::span<Row> options) noexcept;

}  // namespace Optrella::Internal

#endif
