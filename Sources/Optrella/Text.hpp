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
#include <iosfwd>
#include <string_view>
#include <type_traits>
#include <utility>

namespace Optrella {

class Text;

namespace Internal {

// Ends the process at once, without a message.
[[noreturn]] void fatalStop() noexcept;

// Named where a literal that cannot be a text meets the compiler: its name is the error message.
[[noreturn]] void textLiteralHoldsNUL() noexcept;

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

class Text {
public:
    constexpr Text() noexcept = default;

    // Implicitly, from a literal or another constant array: viewed, by the compiler.
    // REQUIRES: the array lives as long as the process, and no NUL stands before its end.
    template <std::size_t N>
    consteval Text(const char (&literal)[N])
        : bytes_(literal), sizeAndFlags_(described(N - 1, isASCII(literal, N - 1))) {
        if (std::char_traits<char>::length(literal) != N - 1) Internal::textLiteralHoldsNUL();
    }

    // Explicitly, as in Text("x"), and wherever a template hands an array on (optional, pair,
    // emplace): nobody can know how long it lives, so it is copied, up to its first NUL.
    template <std::size_t N>
    requires Internal::AnyLength<N>
    explicit Text(const char (&array)[N]) : Text(viewOf(array), copyOf) {}

    // A buffer: copied up to its first NUL.
    template <std::size_t N>
    Text(char (&buffer)[N]) : Text(viewOf(buffer), copyOf) {}

    // Copied. STOPS the process when `source` is a null pointer.
    template <Internal::TextSource S>
    Text(const S& source) : Text(viewOf(source), copyOf) {}

    Text(std::nullptr_t) = delete;

    constexpr Text(const Text& other) noexcept
        : bytes_(other.bytes_), sizeAndFlags_(other.sizeAndFlags_) {
        if (isShared()) retain();
    }
    constexpr Text(Text&& other) noexcept
        : bytes_(other.bytes_), sizeAndFlags_(other.sizeAndFlags_) {
        other.forget();
    }
    constexpr Text& operator=(Text other) noexcept {
        std::swap(bytes_, other.bytes_);
        std::swap(sizeAndFlags_, other.sizeAndFlags_);
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
    // A copy. Include <string> to use it; this header leaves it out, because it would cost every
    // including file.
    [[nodiscard]] std::string str() const;

    // In bytes.
    [[nodiscard]] constexpr std::size_t size() const noexcept { return sizeAndFlags_ / flagRoom; }
    [[nodiscard]] constexpr bool empty() const noexcept { return size() == 0; }
    [[nodiscard]] constexpr bool isASCII() const noexcept {
        return (sizeAndFlags_ & asciiFlag) != 0;
    }

    // Whether both are canonically equivalent: case counts, blanks count, the way in which an
    // accented letter is written does not. A text with bytes that are not UTF-8 equals only itself.
    // STOPS the process when compared with a null pointer.
    friend bool operator==(const Text& left, const Text& right) noexcept {
        return equal(left, right);
    }
    template <Internal::TextComparable S>
    friend bool operator==(const Text& left, const S& right) noexcept {
        return equal(left, viewOf(right));
    }

    template <class Traits>
    friend std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& stream,
                                                        const Text& text) {
        return stream << static_cast<std::string_view>(text);
    }

private:
    enum CopyOf { copyOf };
    Text(std::string_view bytes, CopyOf);

    static constexpr std::size_t sharedFlag = 1;
    static constexpr std::size_t asciiFlag = 2;
    static constexpr std::size_t flagRoom = 4;

    static constexpr std::size_t described(std::size_t size, bool ascii) noexcept {
        return size * flagRoom + (ascii ? asciiFlag : 0);
    }
    static constexpr bool isASCII(const char* bytes, std::size_t size) noexcept {
        for (std::size_t i = 0; i < size; ++i) {
            if (static_cast<unsigned char>(bytes[i]) >= 0x80) return false;
        }
        return true;
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

    static bool equal(const Text& left, const Text& right) noexcept;
    static bool equal(const Text& left, std::string_view right) noexcept;

    [[nodiscard]] constexpr bool isShared() const noexcept {
        return (sizeAndFlags_ & sharedFlag) != 0;
    }
    constexpr void forget() noexcept {
        bytes_ = "";
        sizeAndFlags_ = asciiFlag;
    }
    void retain() const noexcept;
    void release() noexcept;

    const char* bytes_ = "";  // always ends in NUL; stands behind a shared block's count if shared
    // One number: clang 14 crashes on a consteval constructor of bit-fields.
    std::size_t sizeAndFlags_ = asciiFlag;
};

}  // namespace Optrella

// Equal texts hash alike.
template <>
struct std::hash<Optrella::Text> {
    std::size_t operator()(const Optrella::Text& text) const noexcept;
};

#endif
