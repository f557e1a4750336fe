// Strings.hpp - texts as Core Foundation has them, and back.

#ifndef OPTRELLA_PLATFORM_MACOS_STRINGS_HPP
#define OPTRELLA_PLATFORM_MACOS_STRINGS_HPP

#include <string>
#include <string_view>

#include "Optrella/Platform/MacOS/Owned.hpp"

namespace Optrella::Platform {

// Returns the text as a string; none when the text is not UTF-8, or without memory.
[[nodiscard]] Owned<CFStringRef> stringOf(std::string_view text) noexcept;

// Returns the string in UTF-8, with a question mark for what is half of a character.
[[nodiscard]] std::string textOf(CFStringRef string);

}  // namespace Optrella::Platform

#endif
