// Print.hpp - the ordinary print facility: standard output, one write of C's `stdout` each.
//
// So the library's lines keep their order with what a tool prints by printf or std::cout, and lines
// of several threads do not run into one another.

#ifndef OPTRELLA_TEXT_PRINT_HPP
#define OPTRELLA_TEXT_PRINT_HPP

#include <initializer_list>
#include <string_view>

namespace Optrella::Internal {

// Prints the text as it is.
void print(std::string_view text) noexcept;

// Prints the pieces and a line end.
void printLine(std::initializer_list<std::string_view> pieces) noexcept;

// Hands on what has been printed so far, whatever standard output is.
void flushPrinted() noexcept;

}  // namespace Optrella::Internal

#endif
