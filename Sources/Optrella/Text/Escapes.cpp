#include "Optrella/Text/Escapes.hpp"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "Optrella/Text/Unicode.hpp"

namespace Optrella::Internal {

namespace {

constexpr CodePoint::Value zeroWidthNonJoiner = 0x200C;
constexpr CodePoint::Value zeroWidthJoiner = 0x200D;
constexpr CodePoint::Value emojiSelector = 0xFE0F;

// A number in upper-case hexadecimal with at least two digits, in braces after a backslash and a
// letter. Holds the bytes that it views.
class BracedNumber {
public:
    std::string_view operator()(char letter, std::uint32_t value) noexcept {
        constexpr char digits[] = "0123456789ABCDEF";
        char* const end = std::end(bytes_) - 1;
        char* first = end;
        *end = '}';
        do {
            *--first = digits[value % 16];
            value /= 16;
        } while (value != 0 || end - first < 2);
        *--first = '{';
        *--first = letter;
        *--first = '\\';
        return {first, std::end(bytes_)};
    }

private:
    char bytes_[12];
};

struct Range {
    CodePoint::Value first, last;
};

// Default_Ignorable_Code_Point, with what is reserved for more of them: a terminal shows nothing of
// these whether its Unicode is older or newer than ours, hence no table of a version.
constexpr Range ignorable[] = {
    {0x00AD, 0x00AD},   {0x034F, 0x034F},   {0x061C, 0x061C}, {0x115F, 0x1160}, {0x17B4, 0x17B5},
    {0x180B, 0x180F},   {0x200B, 0x200F},   {0x202A, 0x202E}, {0x2060, 0x206F}, {0x3164, 0x3164},
    {0xFE00, 0xFE0F},   {0xFEFF, 0xFEFF},   {0xFFA0, 0xFFA0}, {0xFFF0, 0xFFF8}, {0x1BCA0, 0x1BCA3},
    {0x1D173, 0x1D17A}, {0xE0000, 0xE0FFF},
};

bool isIgnorable(CodePoint::Value c) noexcept {
    return std::any_of(std::begin(ignorable), std::end(ignorable),
                       [c](Range range) { return c >= range.first && c <= range.last; });
}

bool isNoncharacter(CodePoint::Value c) noexcept {
    return (c >= 0xFDD0 && c <= 0xFDEF) || (c & 0xFFFE) == 0xFFFE;
}

bool isControl(CodePoint::Value c) noexcept {
    const bool isSeparator = c == 0x2028 || c == 0x2029;
    return c < 0x20 || (c >= 0x7F && c <= 0x9F) || isSeparator;
}

// Within words of many scripts; elsewhere without effect.
bool isShaping(CodePoint::Value c) noexcept {
    const bool isSelector = c >= 0xFE00 && c <= 0xFE0F;
    return isSelector || c == zeroWidthJoiner || c == zeroWidthNonJoiner;
}

bool isSkinTone(CodePoint::Value c) noexcept { return c >= 0x1F3FB && c <= 0x1F3FF; }

const char* shortEscape(CodePoint::Value c) noexcept {
    switch (c) {
        case '\0':
            return "\\0";
        case '\t':
            return "\\t";
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        default:
            return nullptr;
    }
}

const char* escapeInQuotation(CodePoint::Value c) noexcept {
    switch (c) {
        case '"':
            return "\\\"";
        case '\'':
            return "\\'";
        case '\\':
            return "\\\\";
        default:
            return shortEscape(c);
    }
}

// Follows a text through its emoji sequences: a pictograph, a skin tone or the selector of colours
// after it, and then a joiner and the next one.
class EmojiSequence {
public:
    // Takes the next code point. Returns whether it is a selector or a joiner with an effect.
    bool continues(CodePoint::Value c, std::string_view rest) noexcept {
        const Place before = place_;
        if (isPictograph(c)) {
            place_ = afterPictograph;
        } else if (before == afterPictograph && (isSkinTone(c) || c == emojiSelector)) {
            place_ = afterItsLook;
        } else {
            place_ = outside;
        }
        if (c == emojiSelector) return before == afterPictograph;
        return c == zeroWidthJoiner && before != outside && !rest.empty() &&
               isPictograph(firstCodePoint(rest).value);
    }

private:
    enum Place { outside, afterPictograph, afterItsLook };
    Place place_ = outside;
};

// Rarely called: small rather than fast.
[[gnu::cold]] void append(std::string& to, std::string_view bytes, bool isQuotation) noexcept {
    EmojiSequence emoji;
    BracedNumber braced;
    while (!bytes.empty()) {
        const CodePoint next = firstCodePoint(bytes);
        const CodePoint::Value c = next.value;
        std::string_view shown = bytes.substr(0, next.size);
        bytes.remove_prefix(next.size);
        const bool mayStay = emoji.continues(c, bytes) || (!isQuotation && isShaping(c));
        if (!next.isValid()) {
            shown = braced('x', static_cast<unsigned char>(shown.front()));
        } else if (const char* escape = isQuotation ? escapeInQuotation(c) : shortEscape(c)) {
            shown = escape;
        } else if (isControl(c) || isNoncharacter(c) || (isIgnorable(c) && !mayStay)) {
            shown = braced('u', static_cast<std::uint32_t>(c));
        }
        to += shown;
    }
}

}  // namespace

void appendEscaped(std::string& to, std::string_view bytes) noexcept { append(to, bytes, true); }

void appendPrintable(std::string& to, std::string_view bytes) noexcept { append(to, bytes, false); }

}  // namespace Optrella::Internal
