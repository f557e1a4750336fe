// Texts of any bytes: equality, hash, characters and the rendering in a diagnostic, against ICU.

#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Law.hpp"
#include "Optrella/CommandLine/Dispatch.hpp"
#include "Optrella/Text.hpp"
#include "Optrella/Text/Unicode.hpp"
#include "Oracle.hpp"
#include "Support/Input.hpp"
#include "Support/UTF8.hpp"

namespace {

using namespace Optrella;
using Tests::Input;
using Tests::law;
using Tests::sameBytes;
namespace Oracle = Tests::Oracle;

// Characters that decompose, are reordered, join their neighbours or are shown as escapes.
constexpr std::u32string_view interesting =
    U"ae;K`|,\"'\\\t\n\r\u001B\u0085\u00A0\u00AD\u00C5\u00DF\u00E9\u00F1\u0130\u0300\u0301\u0307"
    U"\u0308\u030A\u0315\u0323\u0327\u0338\u0340\u0344\u0345\u034F\u035C\u037E\u0387\u03B9\u0600"
    U"\u061C\u0903\u0915\u0937\u094D\u09BE\u09C7\u0B57\u0D4E\u0DD9\u0DCF\u0E33\u0EB3\u0F71\u0F72"
    U"\u0F73\u1100\u1161\u11A8\u115F\u1160\uAC00\uAC01\uD7A3\uD7B0\uD7CB\u1B35\u1E0A\u1E69\u1E9B"
    U"\u1F81\u1FEF\u200B\u200C\u200D\u200E\u200F\u2028\u2029\u202A\u202E\u2066\u2069\u20DD"
    U"\u2126\u212A\u212B\u2260"
    U"\u231A\u2329\u26A0\u2ADC\u302A\u3099\u304B\uA8FA\uF900\uFB1D\uFB2C\uFE0F\uFEFF\uFF9E\uFFFD"
    U"\uFFFF\U000110BD\U00011099\U000110BA\U000111C2\U00011935\U00011930\U0001D15E\U0001D165"
    U"\U0001F1E9\U0001F1EA\U0001F3FB\U0001F468\U0001F469\U0001F984\U0002F800\U000E0001\U000E0061"
    U"\U0010FFFF";

std::string interestingText(std::string_view choices) {
    std::string text;
    for (const char each : choices) {
        text += Tests::utf8(interesting[static_cast<unsigned char>(each) % interesting.size()]);
    }
    return text;
}

std::string anyCodePoints(Input input) {
    std::string text;
    while (!input.empty()) {
        const std::size_t high = input.byte();
        const std::size_t middle = input.byte();
        const auto value = static_cast<char32_t>(high * 0x10000 + middle * 0x100 + input.byte());
        const char32_t c = value % 0x110000;
        if (c < 0xD800 || c > 0xDFFF) text += Tests::utf8(c);
    }
    return text;
}

std::string decoded(Input& input) {
    switch (input.upTo(2)) {
        case 0:
            return input.rest();
        case 1:
            return interestingText(input.rest());
        default:
            return anyCodePoints(input);
    }
}

// ---- Equality ----

bool areEquivalent(std::string_view left, std::string_view right) {
    if (left == right) return true;
    return Oracle::isUTF8(left) && Oracle::isUTF8(right) &&
           Oracle::decomposed(left) == Oracle::decomposed(right);
}

void checkOne(const std::string& bytes) {
    const Text text = bytes;
    const Text copy = text;
    sameBytes(text, bytes, "a text keeps its bytes");
    sameBytes(copy.str(), bytes, "a copy keeps its bytes");
    law(text.c_str()[bytes.size()] == '\0', "a NUL stands after the bytes");
    law(text == copy && text == text, "a text equals itself");
    bool isASCII = true;
    for (const char c : bytes) isASCII = isASCII && static_cast<unsigned char>(c) < 0x80;
    law(text.isASCII() == isASCII, "a text knows whether it is ASCII");
    law(Internal::isUTF8(bytes) == Oracle::isUTF8(bytes), "UTF-8 is what it is elsewhere");
}

void checkPair(const std::string& left, const std::string& right) {
    const Text l = left;
    const Text r = right;
    const bool isEqual = l == r;
    law(isEqual == areEquivalent(left, right), "equal texts are the canonically equivalent ones");
    law(isEqual == (r == l), "equality is symmetric");
    law(isEqual == (l == std::string_view(right)), "a text compares alike with a view");
    const std::hash<Text> hash;
    law(!isEqual || hash(l) == hash(r), "equal texts hash alike");
    if (l.isASCII() && r.isASCII()) law(isEqual == (left == right), "ASCII compares by its bytes");
    // What begins with "e" does not reach back, but takes both off the short way.
    if (!Internal::isUTF8(left) || !Internal::isUTF8(right)) return;
    law(isEqual == (Text(left + "\u00E9") == Text(right + "e\u0301")), "the short way is right");
}

// ---- Characters ----

void checkCharacters(const std::string& bytes) {
    if (Oracle::holdsReserved(bytes)) return;
    const std::vector<std::string_view> expected = Oracle::characters(bytes);
    std::string left = bytes;
    for (auto last = expected.rbegin(); last != expected.rend(); ++last) {
        const std::size_t before = left.size();
        left.resize(left.size() - Internal::sizeOfLastCharacters(left, 1));
        law(left.size() + last->size() == before, "the last character is cut off whole");
        law(bytes.starts_with(left), "what is left is the beginning");
    }
    law(left.empty(), "the characters are all there is");
}

void checkSequences(std::string_view bytes) {
    for (const Oracle::Sequence& expected : Oracle::sequences(bytes)) {
        const Internal::Sequence actual = Internal::firstSequence(bytes);
        law(actual.size == expected.bytes.size(), "a sequence has its size");
        law(actual.isValid == expected.isValid, "a broken sequence is known");
        bytes.remove_prefix(actual.size);
    }
}

// ---- Rendering ----

// Reads a rendered list back; nothing when it is none.
class Reader {
public:
    explicit Reader(std::string_view rendered) : rest_(rendered) {}

    std::optional<std::vector<std::string>> list() {
        std::vector<std::string> texts;
        if (!skip("[")) return std::nullopt;
        while (!skip("]")) {
            if (!texts.empty() && !skip(", ")) return std::nullopt;
            std::optional<std::string> text = quoted();
            if (!text) return std::nullopt;
            texts.push_back(*text);
        }
        return rest_.empty() ? std::optional(texts) : std::nullopt;
    }

private:
    bool skip(std::string_view expected) {
        if (!rest_.starts_with(expected)) return false;
        rest_.remove_prefix(expected.size());
        return true;
    }
    std::optional<std::string> quoted() {
        std::string text;
        if (!skip("\"")) return std::nullopt;
        while (!skip("\"")) {
            if (rest_.empty() || !element(text)) return std::nullopt;
        }
        return text;
    }
    bool element(std::string& text) {
        if (!skip("\\")) {
            text += rest_.front();
            rest_.remove_prefix(1);
            return true;
        }
        if (rest_.empty()) return false;
        const char escape = rest_.front();
        rest_.remove_prefix(1);
        constexpr std::string_view shorts = "0tnr\"'\\";
        const std::size_t place = shorts.find(escape);
        if (place != std::string_view::npos) {
            text += std::string_view("\0\t\n\r\"'\\", 7)[place];
            return true;
        }
        const std::size_t end = rest_.find('}');
        if (!skip("{") || end == std::string_view::npos) return false;
        const std::string digits(rest_.substr(0, end - 1));
        rest_.remove_prefix(end);
        const unsigned long value = std::stoul(digits, nullptr, 16);
        text += escape == 'x' ? std::string(1, static_cast<char>(value))
                              : Tests::utf8(static_cast<char32_t>(value));
        return escape == 'x' || escape == 'u';
    }

    std::string_view rest_;
};

void checkRendered(const std::vector<std::string>& list) {
    const std::string rendered = Internal::rendered(std::vector<Text>(list.begin(), list.end()));
    char32_t before = 0;
    for (const Oracle::Sequence& each : Oracle::sequences(rendered)) {
        law(each.isValid, "what is shown is UTF-8");
        const char32_t shown = Oracle::codePoint(each.bytes);
        law(Oracle::isVisible(shown, before), "what is shown controls nothing and is seen");
        before = shown;
    }
    law(Reader(rendered).list() == list, "a rendered list tells what it was");
}

// With two neighbours exchanged: equal only if both are marks of different classes, or the same.
std::string withExchanged(std::size_t place, const std::string& text) {
    std::vector<Oracle::Sequence> codePoints = Oracle::sequences(text);
    if (codePoints.size() < 2) return text;
    place %= codePoints.size() - 1;
    std::swap(codePoints[place], codePoints[place + 1]);
    std::string exchanged;
    for (const Oracle::Sequence& each : codePoints) exchanged += each.bytes;
    return exchanged;
}

void check(const std::vector<std::string>& texts, std::size_t place) {
    for (const std::string& text : texts) {
        checkOne(text);
        checkCharacters(text);
        checkSequences(text);
        for (const std::string& other : texts) checkPair(text, other);
        checkPair(text, withExchanged(place, text));
        if (!Oracle::isUTF8(text)) continue;
        // The same text in other bytes.
        checkPair(text, Oracle::decomposed(text));
        checkPair(text, Oracle::composed(text));
        checkCharacters(Oracle::decomposed(text));
    }
    for (const Text a : texts) {
        for (const Text b : texts) {
            for (const Text c : texts) {
                law(!(a == b && b == c) || a == c, "equality is transitive");
            }
        }
    }
    checkRendered(texts);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    law(Oracle::knowsTheSameUnicode(), "both know the same Unicode");
    Input input(data, size);
    const std::size_t firstCut = input.byte();
    const std::size_t secondCut = input.byte();
    const std::string bytes = decoded(input);
    const std::size_t first = std::min(firstCut, bytes.size());
    const std::size_t second = std::min(first + secondCut, bytes.size());
    check({bytes.substr(0, first), bytes.substr(first, second - first), bytes.substr(second)},
          secondCut);
    return 0;
}
