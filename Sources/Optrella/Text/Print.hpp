// Print.hpp - the ordinary print facility: standard output, each text in one piece and at once.

#ifndef OPTRELLA_TEXT_PRINT_HPP
#define OPTRELLA_TEXT_PRINT_HPP

#include <initializer_list>
#include <string_view>

namespace Optrella::Internal {

// Prints the text as it is.
void print(std::string_view text) noexcept;

// Prints the pieces and a line end.
void printLine(std::initializer_list<std::string_view> pieces) noexcept;

}  // namespace Optrella::Internal

#endif
