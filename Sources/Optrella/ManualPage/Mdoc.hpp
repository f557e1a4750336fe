// Mdoc.hpp - any texts in the language of manual pages, mdoc: shown as they are, whatever they
// hold.
//
// Lines that begin with a dot are macros, whose arguments may be macros, too, and a backslash
// begins an escape. Everything that could be one of these is written in a way that cannot.

#ifndef OPTRELLA_MANUALPAGE_MDOC_HPP
#define OPTRELLA_MANUALPAGE_MDOC_HPP

#include <string>
#include <string_view>

namespace Optrella::Internal {

// Returns an argument of a macro: '' for a text that has nothing to show.
[[nodiscard]] std::string mdocArgument(std::string_view bytes) noexcept;

// Returns the words as arguments of their own.
[[nodiscard]] std::string mdocArguments(std::string_view bytes) noexcept;

// Appends lines of text, as the author has broken and indented them, and paragraphs where lines are
// empty. Nothing when there is nothing to show.
void appendProse(std::string& page, std::string_view bytes) noexcept;

}  // namespace Optrella::Internal

#endif
