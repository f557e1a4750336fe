// TextSources.hpp - what a text is made from and compared with, and the bytes that it reads there.

#ifndef OPTRELLA_TEXT_TEXTSOURCES_HPP
#define OPTRELLA_TEXT_TEXTSOURCES_HPP

#include <concepts>
#include <cstddef>
#include <string_view>
#include <type_traits>

#include "Optrella/Export.hpp"

namespace Optrella {

class Text;

namespace Internal {

// Ends the process at once, without a message.
[[noreturn]] OPTRELLA_API void fatalStop() noexcept;

// Named where a literal that cannot be a text meets the compiler: its name is the error message.
[[noreturn]] OPTRELLA_API void textLiteralHoldsNUL() noexcept;

// What a text compares with: all that it is made from.
template <class S>
concept TextComparable =
    std::convertible_to<const S&, std::string_view> && !std::same_as<S, std::nullptr_t> &&
    !std::same_as<S, Text>;

// Whatever holds characters at run time: std::string, std::string_view, const char*, char*.
template <class S>
concept TextSource = TextComparable<S> && !std::is_array_v<S>;

// Always true, and yet a constraint: the overload that has it wins over the one without.
template <std::size_t>
concept AnyLength = true;

// Returns the bytes up to the first NUL; an array need not hold one.
template <std::size_t N>
std::string_view viewOf(const char (&array)[N]) noexcept {
    const char* nul = std::char_traits<char>::find(array, N, '\0');
    return {array, nul != nullptr ? static_cast<std::size_t>(nul - array) : N};
}
// Returns the bytes of anything else. STOPS the process when it is a null pointer.
template <class S>
std::string_view viewOf(const S& source) noexcept {
    if constexpr (std::is_pointer_v<S>) {
        if (source == nullptr) fatalStop();
    }
    return static_cast<std::string_view>(source);
}

}  // namespace Internal

}  // namespace Optrella

#endif
