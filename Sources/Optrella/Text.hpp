// Text.hpp - Unicode text as the library compares it: canonically equivalent texts are equal.
//
// A text from a literal views it: nothing is allocated, nothing is copied, the compiler does the
// work. A text from anything else owns its bytes, and copies of it share them. Bytes that are not
// UTF-8 are kept as they came. Copying and reading a text is safe on any thread; one that is being
// changed belongs to one thread. No operation here prints, throws or keeps state between calls:
// lack of memory STOPS the process.

#ifndef OPTRELLA_TEXT_HPP
#define OPTRELLA_TEXT_HPP

#include <cstddef>
#include <iosfwd>
#include <string_view>
#include <utility>

#include "Optrella/Export.hpp"
#include "Optrella/Text/TextDigest.hpp"
#include "Optrella/Text/TextSources.hpp"

namespace Optrella {

namespace Internal {
class TextBlock;  // makes texts that share one block of the heap
}

// Unicode text. Implicitly it is made from a literal (viewed), a std::string, a std::string_view or
// a pointer (copied); explicitly from any array of characters (copied). Equal texts hash alike.
class OPTRELLA_API Text {
public:
    // Makes the empty text.
    constexpr Text() noexcept = default;

    // Views a literal or another constant array; implicit, done by the compiler.
    // REQUIRES: the array lives as long as the process, and no NUL stands before its end.
    template <std::size_t N>
    consteval Text(const char (&literal)[N])
        : bytes_(N > 1 ? literal : nullptr),
          digest_(Internal::TextDigest::ofLiteral(literal, N - 1)) {
        if (std::char_traits<char>::length(literal) != N - 1) Internal::textLiteralHoldsNUL();
    }

    // Copies an array up to its first NUL; explicit, as in Text("x"), and wherever a template hands
    // an array on (optional, pair, emplace): nobody can know how long it lives.
    // The mark gives it a name of its own for the linker: a constraint is part of no name, and
    // clang 14 without optimisation emits the constructor above, too.
    template <std::size_t N>
    requires Internal::AnyLength<N>
    [[gnu::abi_tag("copied")]] explicit Text(const char (&array)[N]) noexcept
        : Text(Internal::viewOf(array), copyOf) {}

    // Copies a buffer up to its first NUL.
    template <std::size_t N>
    Text(char (&buffer)[N]) noexcept : Text(Internal::viewOf(buffer), copyOf) {}

    // Copies the bytes. STOPS the process when `source` is a null pointer.
    template <Internal::TextSource S>
    Text(const S& source) noexcept : Text(Internal::viewOf(source), copyOf) {}

    // A null pointer is no text.
    Text(std::nullptr_t) = delete;

    // Copies share the bytes. A text that was moved from is empty.
    constexpr Text(const Text& other) noexcept : bytes_(other.bytes_), digest_(other.digest_) {
        if (digest_.isShared()) retain(bytes_);
    }
    constexpr Text(Text&& other) noexcept : bytes_(other.bytes_), digest_(other.digest_) {
        other.forget();
    }
    constexpr Text& operator=(Text other) noexcept {
        std::swap(bytes_, other.bytes_);
        std::swap(digest_, other.digest_);
        return *this;
    }
    // Copies an array, which a template may have handed on.
    template <std::size_t N>
    Text& operator=(const char (&array)[N]) noexcept {
        return *this = Text(array);
    }
    constexpr ~Text() {
        if (digest_.isShared()) release(bytes_);
    }

    // Views the bytes, as long as this text or a copy of it lives. Beware: std::string_view
    // compares bytes, not texts.
    [[nodiscard]] constexpr operator std::string_view() const noexcept { return {c_str(), size()}; }
    // Returns the bytes with a NUL after them.
    [[nodiscard]] constexpr const char* c_str() const noexcept {
        return bytes_ != nullptr ? bytes_ : "";
    }
    // Returns a copy. Include the header "string" to use it; this one leaves it out, because it
    // would cost every including file.
    [[nodiscard]] std::string str() const noexcept;

    // Returns the number of bytes, and whether there are none.
    [[nodiscard]] constexpr std::size_t size() const noexcept { return digest_.size(); }
    [[nodiscard]] constexpr bool empty() const noexcept { return size() == 0; }
    // Returns whether all bytes are below 0x80.
    [[nodiscard]] constexpr bool isASCII() const noexcept { return digest_.isASCII(); }

    // Returns whether both are canonically equivalent: case counts, spaces count, the way in which
    // an accented letter is written does not. A text with bytes that are not UTF-8 equals only
    // itself. STOPS the process when compared with a null pointer.
    friend bool operator==(const Text& left, const Text& right) noexcept {
        // Copies share their bytes; so do equal literals, mostly.
        if (left.bytes_ == right.bytes_) return true;
        return !left.digest_.provesDifferent(right.digest_) && equal(left, right);
    }
    // Returns the same for anything that a text is made from; copies nothing.
    template <Internal::TextComparable S>
    friend bool operator==(const Text& left, const S& right) noexcept {
        return equal(left, Internal::viewOf(right));
    }

    // Writes the bytes to any stream of characters. Include the stream's own header to use it.
    template <class Traits>
    friend std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& stream,
                                                        const Text& text) {
        return stream << static_cast<std::string_view>(text);
    }

private:
    friend class Internal::TextBlock;
    friend class Internal::TextDigest;

    enum CopyOf { copyOf };
    Text(std::string_view bytes, CopyOf) noexcept;
    // Copies the bytes into a block, to the place that has room for them.
    inline Text(void* block, char* place, std::string_view bytes) noexcept;

    static bool equal(std::string_view left, std::string_view right) noexcept;

    constexpr void forget() noexcept {
        bytes_ = nullptr;
        digest_ = {};
    }
    // By value, so that a text need not stand in memory to be copied.
    static void retain(const char* bytes) noexcept;
    static void release(const char* bytes) noexcept;

    // Ends in NUL; stands in a shared block if shared. Null when empty: what the compiler makes
    // holds many empty texts, and every pointer in it costs the start of the process.
    const char* bytes_ = nullptr;
    Internal::TextDigest digest_;
};

constexpr Internal::TextDigest Internal::TextDigest::of(const Text& text) noexcept {
    return text.digest_;
}

}  // namespace Optrella

// Equal texts hash alike.
template <>
struct OPTRELLA_API std::hash<Optrella::Text> {
    std::size_t operator()(const Optrella::Text& text) const noexcept;
};

#endif
