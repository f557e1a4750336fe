// ShortBytes.hpp - copies and compares bytes where a call would cost more than the work.
//
// Most tags, arguments and pieces of a listing are that short.

#ifndef OPTRELLA_TEXT_SHORTBYTES_HPP
#define OPTRELLA_TEXT_SHORTBYTES_HPP

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace Optrella::Internal {

// Visits parts of 8, 4, 2 or 1 bytes that together are all of them: a part's place and a value of
// its type. The last two overlap. Ends early with false where a visit returns it.
template <class Visit>
inline bool visitParts(std::size_t size, Visit visit) noexcept {
    const auto firstAndLast = [&](auto part) {
        return visit(std::size_t{0}, part) && visit(size - sizeof part, part);
    };
    if (size >= 8) {
        for (std::size_t i = 0; i + 8 < size; i += 8) {
            if (!visit(i, std::uint64_t())) return false;
        }
        return visit(size - 8, std::uint64_t());
    }
    if (size >= 4) return firstAndLast(std::uint32_t());
    if (size >= 2) return firstAndLast(std::uint16_t());
    return size == 0 || visit(std::size_t{0}, std::uint8_t());
}

// Returns where the copy ends. REQUIRES: they do not overlap; a place, unless there are no bytes.
inline char* copyBytes(std::string_view bytes, char* to) noexcept {
    constexpr std::size_t longest = 64;
    if (bytes.size() > longest) {
        // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker)
        std::memcpy(to, bytes.data(), bytes.size());
        return to + bytes.size();
    }
    visitParts(bytes.size(), [&](std::size_t place, auto part) {
        std::memcpy(&part, bytes.data() + place, sizeof part);
        // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker)
        std::memcpy(to + place, &part, sizeof part);
        return true;
    });
    return to + bytes.size();
}

// Returns whether both are the same bytes.
[[nodiscard]] inline bool areSameBytes(std::string_view left, std::string_view right) noexcept {
    if (left.size() != right.size()) return false;
    return visitParts(left.size(), [&](std::size_t place, auto part) {
        auto other = part;
        std::memcpy(&part, left.data() + place, sizeof part);
        std::memcpy(&other, right.data() + place, sizeof other);
        return part == other;
    });
}

}  // namespace Optrella::Internal

#endif
