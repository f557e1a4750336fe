// Screen.hpp - the terminal that a stream leads to.

#ifndef OPTRELLA_PLATFORM_SCREEN_HPP
#define OPTRELLA_PLATFORM_SCREEN_HPP

#include <cstddef>
#include <cstdint>
#include <optional>

namespace Optrella::Platform {

enum class Stream : std::uint8_t { output, error };

// Returns whether the standard stream leads to a terminal.
[[nodiscard]] bool isTerminal(Stream stream) noexcept;

// Returns how many columns that terminal has, nothing when it is none or does not say.
[[nodiscard]] std::optional<std::size_t> screenColumns(Stream stream) noexcept;

}  // namespace Optrella::Platform

#endif
