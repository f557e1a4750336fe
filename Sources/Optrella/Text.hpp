// Text.hpp - Unicode text as the library compares it: canonically equivalent texts are equal.
//
// A text from a literal views it: nothing is allocated, nothing is copied, the compiler does the
// work. A text from anything else owns its bytes, and copies of it share them. Bytes that are not
// UTF-8 are kept as they came. Copying and reading a text is safe on any thread; one that is being
// changed belongs to one thread. No operation here prints, throws or keeps state between calls.

#ifndef OPTRELLA_TEXT_HPP
#define OPTRELLA_TEXT_HPP

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string_view>
#include <type_traits>
#include <utility>

#include "Optrella/Export.hpp"

namespace Optrella {

class Text;

namespace Internal {

class AtSight;    // what a text tells before anyone looks at its bytes
class TextBlock;  // makes texts that share one block of the heap

// Ends the process at once, without a message.
[[noreturn]] OPTRELLA_API void fatalStop() noexcept;

// Named where a literal that cannot be a text meets the compiler: its name is the error message.
[[noreturn]] OPTRELLA_API void textLiteralHoldsNUL() noexcept;

// Whatever holds characters at run time: std::string, std::string_view, const char*, char*.
template <class S>
concept TextSource = std::convertible_to<const S&, std::string_view> && !std::is_array_v<S> &&
                     !std::same_as<S, std::nullptr_t> && !std::same_as<S, Text>;

// What a text compares with: the same, and arrays.
template <class S>
concept TextComparable =
    std::convertible_to<const S&, std::string_view> && !std::same_as<S, std::nullptr_t> &&
    !std::same_as<S, Text>;

// Always true, and yet a constraint: the overload that has it wins over the one without.
template <std::size_t>
concept AnyLength = true;

}  // namespace Internal

// Unicode text. Implicitly it is made from a literal (viewed), a std::string, a std::string_view or
// a pointer (copied); explicitly from any array of characters (copied). Equal texts hash alike.
class OPTRELLA_API Text {
public:
    // The empty text.
    constexpr Text() noexcept = default;

    // Implicitly, from a literal or another constant array: viewed, by the compiler.
    // REQUIRES: the array lives as long as the process, and no NUL stands before its end.
    template <std::size_t N>
    consteval Text(const char (&literal)[N])
        : bytes_(literal), description_(described(literal, N - 1)) {
        if (std::char_traits<char>::length(literal) != N - 1) Internal::textLiteralHoldsNUL();
    }

    // Explicitly, as in Text("x"), and wherever a template hands an array on (optional, pair,
    // emplace): nobody can know how long it lives, so it is copied, up to its first NUL.
    // The mark gives it a name of its own for the linker: a constraint is part of no name, and
    // clang 14 without optimisation emits the constructor above, too.
    template <std::size_t N>
    requires Internal::AnyLength<N>
    [[gnu::abi_tag("copied")]] explicit Text(const char (&array)[N])
        : Text(viewOf(array), copyOf) {}

    // A buffer: copied up to its first NUL.
    template <std::size_t N>
    Text(char (&buffer)[N]) : Text(viewOf(buffer), copyOf) {}

    // Copied. STOPS the process when `source` is a null pointer.
    template <Internal::TextSource S>
    Text(const S& source) : Text(viewOf(source), copyOf) {}

    // A null pointer is no text.
    Text(std::nullptr_t) = delete;

    // Copies share the bytes. A text that was moved from is empty.
    constexpr Text(const Text& other) noexcept
        : bytes_(other.bytes_), description_(other.description_) {
        if (isShared()) retain();
    }
    constexpr Text(Text&& other) noexcept : bytes_(other.bytes_), description_(other.description_) {
        other.forget();
    }
    constexpr Text& operator=(Text other) noexcept {
        std::swap(bytes_, other.bytes_);
        std::swap(description_, other.description_);
        return *this;
    }
    // Also what a template assigns from an array that was handed on.
    template <std::size_t N>
    Text& operator=(const char (&array)[N]) {
        return *this = Text(array);
    }
    constexpr ~Text() {
        if (isShared()) release();
    }

    // The bytes, as long as this text or a copy of it lives. Beware: std::string_view compares
    // bytes, not texts.
    [[nodiscard]] constexpr operator std::string_view() const noexcept { return {bytes_, size()}; }
    // The bytes with a NUL behind them.
    [[nodiscard]] constexpr const char* c_str() const noexcept { return bytes_; }
    // A copy. Include the header "string" to use it; this one leaves it out, because it would cost
    // every including file.
    [[nodiscard]] std::string str() const;

    // The number of bytes, and whether there are none.
    [[nodiscard]] constexpr std::size_t size() const noexcept { return description_ >> sizePlace; }
    [[nodiscard]] constexpr bool empty() const noexcept { return size() == 0; }
    // Whether all bytes are below 0x80.
    [[nodiscard]] constexpr bool isASCII() const noexcept {
        return (description_ & asciiFlag) != 0;
    }

    // Whether both are canonically equivalent: case counts, blanks count, the way in which an
    // accented letter is written does not. A text with bytes that are not UTF-8 equals only itself.
    // STOPS the process when compared with a null pointer.
    friend bool operator==(const Text& left, const Text& right) noexcept {
        return !differAtSight(left.description_, right.description_) && equal(left, right);
    }
    template <Internal::TextComparable S>
    friend bool operator==(const Text& left, const S& right) noexcept {
        return equal(left, viewOf(right));
    }

    // The bytes, to any stream of characters. Include the stream's own header to use it.
    template <class Traits>
    friend std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& stream,
                                                        const Text& text) {
        return stream << static_cast<std::string_view>(text);
    }

private:
    friend class Internal::AtSight;
    friend class Internal::TextBlock;

    enum CopyOf { copyOf };
    Text(std::string_view bytes, CopyOf);
    // Copied into the block, to the place, which has roomFor the bytes.
    inline Text(void* block, char* place, std::string_view bytes) noexcept;
    // In a block a text stands behind its distance from the block's beginning, and zeros behind it.
    static constexpr std::size_t roomFor(std::size_t size) noexcept {
        return sizeof(std::size_t) + (size / wordSize + 1) * wordSize;
    }

    // What a text is described by: from the lowest bit on, whether its bytes are shared, whether
    // they are ASCII, their fingerprint, their number.
    static constexpr std::uint64_t sharedFlag = 1;
    static constexpr std::uint64_t asciiFlag = 2;
    static constexpr unsigned fingerprintPlace = 2;
    static constexpr unsigned fingerprintSize = 24;
    static constexpr unsigned sizePlace = fingerprintPlace + fingerprintSize;

    // Whether texts that are described so are not equal, whatever their bytes. Of ASCII texts that
    // are not equal it is false for one in many.
    static constexpr bool differAtSight(std::uint64_t left, std::uint64_t right) noexcept {
        return ((left ^ right) & ~sharedFlag) != 0 && (left & right & asciiFlag) != 0;
    }

    // The bytes are described eight at a time, as a number with the first one lowest and zeros
    // behind the last.
    static constexpr std::size_t wordSize = 8;

    class Description {
    public:
        constexpr void add(std::uint64_t word) noexcept {
            hash_ = (hash_ ^ word) * 0x9E3779B97F4A7C15;
            allBits_ |= word;
        }
        [[nodiscard]] constexpr std::uint64_t of(std::size_t size) const noexcept {
            const bool isASCII = (allBits_ & 0x8080808080808080) == 0;
            return static_cast<std::uint64_t>(size) << sizePlace |
                   hash_ >> (64 - fingerprintSize) << fingerprintPlace | (isASCII ? asciiFlag : 0);
        }

    private:
        std::uint64_t hash_ = 0;
        std::uint64_t allBits_ = 0;
    };

    static consteval std::uint64_t described(const char* bytes, std::size_t size) noexcept {
        Description description;
        for (std::size_t i = 0; i < size; i += wordSize) {
            std::uint64_t word = 0;
            for (std::size_t j = 0; j < wordSize && i + j < size; ++j) {
                word |= static_cast<std::uint64_t>(static_cast<unsigned char>(bytes[i + j]))
                        << 8 * j;
            }
            description.add(word);
        }
        return description.of(size);
    }
    // An array need not hold a NUL.
    template <std::size_t N>
    static std::string_view viewOf(const char (&array)[N]) noexcept {
        const char* nul = std::char_traits<char>::find(array, N, '\0');
        return {array, nul != nullptr ? static_cast<std::size_t>(nul - array) : N};
    }
    template <class S>
    static std::string_view viewOf(const S& source) noexcept {
        if constexpr (std::is_pointer_v<S>) {
            if (source == nullptr) Internal::fatalStop();
        }
        return static_cast<std::string_view>(source);
    }

    static bool equal(std::string_view left, std::string_view right) noexcept;

    [[nodiscard]] constexpr bool isShared() const noexcept {
        return (description_ & sharedFlag) != 0;
    }
    constexpr void forget() noexcept {
        bytes_ = "";
        description_ = asciiFlag;
    }
    void retain() const noexcept;
    void release() noexcept;

    const char* bytes_ = "";  // always ends in NUL; stands in a shared block if shared
    // One number: clang 14 crashes on a consteval constructor of bit-fields.
    std::uint64_t description_ = asciiFlag;
};

}  // namespace Optrella

// Equal texts hash alike.
template <>
struct OPTRELLA_API std::hash<Optrella::Text> {
    std::size_t operator()(const Optrella::Text& text) const noexcept;
};

#endif
