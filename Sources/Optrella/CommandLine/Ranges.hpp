// Ranges.hpp - what a list of declarations, and one of arguments, is made of.

#ifndef OPTRELLA_COMMANDLINE_RANGES_HPP
#define OPTRELLA_COMMANDLINE_RANGES_HPP

#include <concepts>
#include <span>
#include <string_view>
#include <type_traits>
#include <vector>

#include "Optrella/Text.hpp"

namespace Optrella {

class CommandLinePossibility;

namespace Internal {

template <class Range>
concept Declarations = std::convertible_to<const Range&, std::span<const CommandLinePossibility>>;

template <class Range>
concept TextsInARow = std::convertible_to<const Range&, std::span<const Text>>;

// Strings whose bytes stay where they are while the range is read: no string that the range makes.
template <class String>
concept ReadableString = std::convertible_to<String, std::string_view> &&
                         !std::is_array_v<std::remove_cvref_t<String>> &&
                         (std::is_reference_v<String> || std::is_trivially_copyable_v<String>);

// Strings of another type, such as a vector of std::string or an array of pointers.
template <class Range>
concept StringRange = !TextsInARow<Range> && requires(const Range& range) {
    { *std::begin(range) } -> ReadableString;
    std::end(range);
};

template <StringRange Range>
std::vector<std::string_view> viewsOf(const Range& strings) {
    std::vector<std::string_view> views;
    // A range need not know its size. NOLINTNEXTLINE(performance-inefficient-vector-operation)
    for (const auto& string : strings) views.push_back(viewOf(string));
    return views;
}

}  // namespace Internal

}  // namespace Optrella

#endif
