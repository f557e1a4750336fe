// Print.hpp - the ordinary print facility: standard output, one write of C's `stdout` each.
//
// So the library's lines keep their order with what a tool prints by printf or std::cout, and lines
// of several threads do not run into one another.

#ifndef OPTRELLA_INTERNAL_PRINT_HPP
#define OPTRELLA_INTERNAL_PRINT_HPP

#include <string>

namespace Optrella::Internal {

// Prints the text and the terminator behind it.
void print(std::string text, char terminator = '\n');

// Hands on what has been printed so far, whatever standard output is.
void flushPrinted() noexcept;

}  // namespace Optrella::Internal

#endif
