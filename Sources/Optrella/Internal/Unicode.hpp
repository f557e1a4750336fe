// Unicode.hpp - what Unicode says about bytes: equivalence, characters, and how to show them.
//
// The one place that meets the Unicode library. Works on any bytes: what is not UTF-8 is never
// repaired. "Character" means a user-perceived one, an extended grapheme cluster; each byte that is
// not part of UTF-8 is a character of its own.

#ifndef OPTRELLA_INTERNAL_UNICODE_HPP
#define OPTRELLA_INTERNAL_UNICODE_HPP

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Optrella::Internal {

[[nodiscard]] bool isASCII(std::string_view bytes) noexcept;
[[nodiscard]] bool isUTF8(std::string_view bytes) noexcept;

// A sequence of bytes: one code point, or a piece of one that is broken.
struct Sequence {
    std::size_t size;
    bool isValid;
};
// The first sequence. What is broken is as long as what could still have become a code point: each
// one is shown as a single replacement character. REQUIRES: not empty.
[[nodiscard]] Sequence firstSequence(std::string_view bytes) noexcept;

// Canonical equivalence. Bytes that are not UTF-8 anywhere in one of them: the same bytes.
[[nodiscard]] bool isCanonicallyEqual(std::string_view left, std::string_view right);

// Compares one text with many others: it is normalised once, where one of them leaves it open.
class CanonicalComparer {
public:
    // REQUIRES: the bytes of the last call's `text` are still there.
    [[nodiscard]] bool areEqual(std::string_view text, std::string_view other) {
        return text == other || areEquivalent(text, other);
    }

private:
    bool areEquivalent(std::string_view text, std::string_view other);

    std::string_view normalised_;
    std::optional<std::vector<std::int32_t>> form_;  // nothing for bytes that are not UTF-8
};

// Equal for canonically equal bytes.
[[nodiscard]] std::size_t canonicalHash(std::string_view bytes);

[[nodiscard]] std::size_t countCharacters(std::string_view bytes) noexcept;

// Of the last `count` characters, or of all there are; in bytes.
[[nodiscard]] std::size_t sizeOfLastCharacters(std::string_view bytes, std::size_t count) noexcept;

// Appends the bytes with escapes for what a terminal must not get and for what ends or starts a
// quotation: \t \n \r \0 \" \' \\, \u{1B} for other control characters, line and paragraph
// separators and bidirectional controls, \x{FF} for a byte that is not part of UTF-8.
void appendEscaped(std::string& to, std::string_view bytes);

}  // namespace Optrella::Internal

#endif
