// HelpPage.hpp - what a tool shows when it is asked for help.
//
// A page is whole lines for a terminal: nothing is printed. What the declarations say is data: line
// ends within it end lines, other control characters are shown and not obeyed. A line is wider than
// the page only where a word is; no character is divided.

#ifndef OPTRELLA_HELPPAGE_HPP
#define OPTRELLA_HELPPAGE_HPP

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>

#include "Optrella/Export.hpp"
#include "Optrella/Text.hpp"
#include "Optrella/Tool.hpp"

namespace Optrella {

// What sets headings, and what is typed as it stands, apart.
enum class Emphasis : std::uint8_t {
    none,      // nothing
    terminal,  // bold type and colour, by escape sequences that each line ends
};

// Returns the overview: the tool, its visible commands, and what runTool answers by itself. Up to
// three commands are shown with their parameters; of more each has a line. `width` counts a
// terminal's columns.
[[nodiscard]] OPTRELLA_API Text helpPage(const Tool& tool, std::size_t width = 80,
                                         Emphasis emphasis = Emphasis::none) noexcept;

// Returns the page of these declarations, hidden ones as well: one to three with their parameters,
// or what they are, in a line each. REQUIRES: indices of the tool's declarations.
[[nodiscard]] OPTRELLA_API Text helpPage(const Tool& tool,
                                         std::span<const std::size_t> declarations,
                                         std::size_t width = 80,
                                         Emphasis emphasis = Emphasis::none) noexcept;
// In braces, {2}, they would be a width.
[[nodiscard]] inline Text helpPage(const Tool& tool,
                                   std::initializer_list<std::size_t> declarations,
                                   std::size_t width = 80,
                                   Emphasis emphasis = Emphasis::none) noexcept {
    return helpPage(tool, std::span(declarations.begin(), declarations.size()), width, emphasis);
}

}  // namespace Optrella

#endif
