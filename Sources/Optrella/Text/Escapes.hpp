// Escapes.hpp - how bytes are shown, so that a user sees what there is and a terminal obeys
// nothing.

#ifndef OPTRELLA_TEXT_ESCAPES_HPP
#define OPTRELLA_TEXT_ESCAPES_HPP

#include <string>
#include <string_view>

namespace Optrella::Internal {

// Appends the bytes with escapes for what a terminal must not get, what shows nothing, and what
// ends or starts a quotation: \t \n \r \0 \" \' \\, \x{FF} for a byte that is not part of UTF-8,
// and \u{1B} for other control characters, line and paragraph separators, noncharacters, and what
// Unicode calls ignorable: invisible characters and those that turn the direction of writing.
// Within an emoji sequence the joiner and the selector of colours have an effect and stay.
void appendEscaped(std::string& to, std::string_view bytes) noexcept;

// Does the same for what is no quotation: quotation marks and backslashes stay, and so does what
// joins letters or chooses their shape.
void appendPrintable(std::string& to, std::string_view bytes) noexcept;

}  // namespace Optrella::Internal

#endif
