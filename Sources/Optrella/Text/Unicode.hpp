// Unicode.hpp - what Unicode says about bytes: equivalence, and characters.
//
// The one place that meets the Unicode library. Works on any bytes: what is not UTF-8 is never
// repaired. "Character" means a user-perceived one, an extended grapheme cluster; each byte that is
// not part of UTF-8 is a character of its own.

#ifndef OPTRELLA_TEXT_UNICODE_HPP
#define OPTRELLA_TEXT_UNICODE_HPP

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Optrella/Text/ShortBytes.hpp"

namespace Optrella::Internal {

// Return whether all bytes are below 0x80, and whether all are parts of code points.
[[nodiscard]] bool isASCII(std::string_view bytes) noexcept;
[[nodiscard]] bool isUTF8(std::string_view bytes) noexcept;

// The code point that bytes begin with.
struct CodePoint {
    using Value = std::int32_t;

    Value value;       // negative for a byte that is not part of UTF-8
    std::size_t size;  // in bytes

    [[nodiscard]] bool isValid() const noexcept { return value >= 0; }
};
// REQUIRES: not empty.
[[nodiscard]] CodePoint firstCodePoint(std::string_view bytes) noexcept;

// Returns whether an emoji sequence may begin with the code point (Extended_Pictographic).
[[nodiscard]] bool isPictograph(CodePoint::Value value) noexcept;

// A sequence of bytes: one code point, or a piece of one that is broken.
struct Sequence {
    std::size_t size;
    bool isValid;
};
// Returns the first sequence. What is broken is as long as what could still have become a code
// point: each one is shown as a single replacement character. REQUIRES: not empty.
[[nodiscard]] Sequence firstSequence(std::string_view bytes) noexcept;

// Returns whether both are canonically equivalent; where one of them holds bytes that are not
// UTF-8, whether both are the same bytes.
[[nodiscard]] bool isCanonicallyEqual(std::string_view left, std::string_view right) noexcept;

// Reads the canonical decomposition (NFD) of a text, no further than it is asked to. Keeps its room
// from text to text.
class CanonicalReader {
public:
    static constexpr CodePoint::Value end = -1;
    static constexpr CodePoint::Value broken = -2;  // a byte that is not part of UTF-8

    // Begins to read a text, which must stay where it is.
    CanonicalReader& operator=(std::string_view bytes) noexcept {
        rest_ = bytes;
        segment_.clear();
        place_ = 0;
        return *this;
    }
    // Returns the next code point. What comes after `end` and `broken` is of no use.
    [[nodiscard]] CodePoint::Value next() noexcept;

private:
    void readSegment() noexcept;

    std::string_view rest_;
    // What marks are put in order within: up to the next code point that is none.
    std::vector<CodePoint::Value> segment_;
    std::size_t place_ = 0;
};

// Compares texts, and keeps its room from one comparison to the next.
class CanonicalComparer {
public:
    // Returns whether both are canonically equivalent.
    [[nodiscard]] bool areEqual(std::string_view left, std::string_view right) noexcept {
        return areSameBytes(left, right) || areEquivalent(left, right);
    }

private:
    bool areEquivalent(std::string_view left, std::string_view right) noexcept;

    CanonicalReader left_;
    CanonicalReader right_;
};

// Returns false for what is not ASCII and equivalent to no ASCII text: for almost all such texts.
[[nodiscard]] bool mayBeEquivalentToASCII(std::string_view bytes) noexcept;

// Returns the same hash for canonically equivalent bytes.
[[nodiscard]] std::size_t canonicalHash(std::string_view bytes) noexcept;

// Returns the number of bytes in the first character. REQUIRES: not empty.
[[nodiscard]] std::size_t firstCharacterSize(std::string_view bytes) noexcept;

// Returns the number of bytes in the last `count` characters, or in all that there are.
[[nodiscard]] std::size_t sizeOfLastCharacters(std::string_view bytes, std::size_t count) noexcept;
// The same of one.
[[nodiscard]] inline std::size_t sizeOfLastCharacter(std::string_view bytes) noexcept {
    // Between ASCII characters, line ends apart, two bytes tell.
    const std::size_t size = bytes.size();
    const bool isPlain = size > 1 && bytes[size - 1] >= ' ' && bytes[size - 2] >= ' ' &&
                         static_cast<unsigned char>(bytes[size - 1] | bytes[size - 2]) < 0x80;
    return isPlain ? 1 : sizeOfLastCharacters(bytes, 1);
}

}  // namespace Optrella::Internal

#endif
