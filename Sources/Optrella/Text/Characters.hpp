// Characters.hpp - texts as a person sees them: characters, cases, columns.
//
// Apart from Unicode.hpp, because few tools need it.

#ifndef OPTRELLA_TEXT_CHARACTERS_HPP
#define OPTRELLA_TEXT_CHARACTERS_HPP

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Optrella::Internal {

// Returns the user-perceived characters, each in canonical decomposition: those that are
// canonically equivalent are the same bytes. A byte that is not part of UTF-8 is one as it is.
[[nodiscard]] std::vector<std::string> canonicalCharacters(std::string_view bytes) noexcept;

// Returns a text that is the same for texts that differ in case alone.
[[nodiscard]] std::string withoutCase(std::string_view bytes) noexcept;

// Returns the text in capital letters, where a letter has one that is one code point.
[[nodiscard]] std::string upperCase(std::string_view bytes) noexcept;

// Returns the number of a terminal's columns.
[[nodiscard]] std::size_t columns(std::string_view bytes) noexcept;

// Returns whether something in there is a control character, or shows nothing.
[[nodiscard]] bool holdsUnprintable(std::string_view bytes) noexcept;

}  // namespace Optrella::Internal

#endif
