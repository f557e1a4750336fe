// TextDigest.hpp - what is known of a text before anyone looks at its bytes: their number, whether
// they are ASCII, and a fingerprint. It rules out most comparisons.

#ifndef OPTRELLA_TEXT_TEXTDIGEST_HPP
#define OPTRELLA_TEXT_TEXTDIGEST_HPP

#include <cstddef>
#include <cstdint>

#include "Optrella/Export.hpp"

namespace Optrella {

class Text;

namespace Internal {

class OPTRELLA_API TextDigest {
public:
    // Makes that of the empty text, whose bytes are not shared.
    constexpr TextDigest() noexcept = default;
    // Returns that of a text.
    [[nodiscard]] static constexpr TextDigest of(const Text& text) noexcept;
    // Returns that of bytes that the compiler knows. Not consteval, or clang 14 would miss it when
    // it links.
    [[nodiscard]] static constexpr TextDigest ofLiteral(const char* bytes,
                                                        std::size_t size) noexcept;

    [[nodiscard]] constexpr std::size_t size() const noexcept {
        return static_cast<std::size_t>(bits_ >> sizePlace);
    }
    // Returns whether all bytes are below 0x80.
    [[nodiscard]] constexpr bool isASCII() const noexcept { return (bits_ & asciiFlag) != 0; }
    // Returns whether the text shares its bytes with its copies.
    [[nodiscard]] constexpr bool isShared() const noexcept { return (bits_ & sharedFlag) != 0; }
    // Returns some bits of a hash of the bytes: ASCII texts that differ in them are not equal.
    [[nodiscard]] constexpr unsigned fingerprint() const noexcept {
        return static_cast<unsigned>(bits_ >> fingerprintPlace) & ((1U << fingerprintSize) - 1);
    }
    // Returns the fingerprint with some bits of the size: ASCII texts that differ in it are not
    // equal. Even, and of ASCII texts never 0.
    [[nodiscard]] constexpr std::uint32_t mark() const noexcept {
        return static_cast<std::uint32_t>(bits_ & ~sharedFlag);
    }
    // Returns whether the texts are not equal, whatever their bytes. Of ASCII texts that are not
    // equal it is false for one in many.
    [[nodiscard]] constexpr bool provesDifferent(TextDigest other) const noexcept {
        return ((bits_ ^ other.bits_) & ~sharedFlag) != 0 && (bits_ & other.bits_ & asciiFlag) != 0;
    }

    // The bytes are digested eight at a time, as a number with the first one lowest and zeros after
    // the last.
    static constexpr std::size_t wordSize = 8;

    class Builder {
    public:
        constexpr void add(std::uint64_t word) noexcept {
            hash_ = (hash_ ^ word) * 0x9E3779B97F4A7C15;
            allBits_ |= word;
        }
        [[nodiscard]] constexpr TextDigest digest(std::size_t size, bool isShared) const noexcept {
            const bool isASCII = (allBits_ & 0x8080808080808080) == 0;
            TextDigest digest;
            digest.bits_ = static_cast<std::uint64_t>(size) << sizePlace |
                           hash_ >> (64 - fingerprintSize) << fingerprintPlace |
                           (isASCII ? asciiFlag : 0) | (isShared ? sharedFlag : 0);
            return digest;
        }

    private:
        std::uint64_t hash_ = 0;
        std::uint64_t allBits_ = 0;
    };

private:
    // From the lowest bit on: the flags, the fingerprint, the number of bytes.
    static constexpr std::uint64_t sharedFlag = 1;
    static constexpr std::uint64_t asciiFlag = 2;
    static constexpr unsigned fingerprintPlace = 2;
    static constexpr unsigned fingerprintSize = 24;
    static constexpr unsigned sizePlace = fingerprintPlace + fingerprintSize;

    // One number: clang 14 crashes on a consteval constructor of bit-fields.
    std::uint64_t bits_ = asciiFlag;
};

constexpr TextDigest TextDigest::ofLiteral(const char* bytes, std::size_t size) noexcept {
    Builder builder;
    for (std::size_t i = 0; i < size; i += wordSize) {
        std::uint64_t word = 0;
        for (std::size_t j = 0; j < wordSize && i + j < size; ++j) {
            word |= static_cast<std::uint64_t>(static_cast<unsigned char>(bytes[i + j])) << 8 * j;
        }
        builder.add(word);
    }
    return builder.digest(size, false);
}

}  // namespace Internal

}  // namespace Optrella

#endif
