#include "Optrella/ManualPage/Mdoc.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "Optrella/Text/Unicode.hpp"

namespace Optrella::Internal {

namespace {

// What mandoc thinks too long for a line of text.
constexpr std::size_t longestLine = 80;

constexpr std::string_view replacement = "\\[uFFFD]";
constexpr std::string_view nothing = "\\&";

constexpr bool isSpace(char byte) noexcept { return byte == ' ' || (byte >= '\t' && byte <= '\r'); }

// What formatters take for punctuation between arguments.
constexpr bool isDelimiter(char byte) noexcept {
    return std::string_view(".,:;()[]?!|").find(byte) != std::string_view::npos;
}

constexpr bool isLowerCase(char byte) noexcept { return byte >= 'a' && byte <= 'z'; }

bool isShown(CodePoint::Value c) noexcept {
    const bool isControl = c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0x2028 || c == 0x2029;
    const bool isNoncharacter = (c >= 0xFDD0 && c <= 0xFDEF) || (c & 0xFFFE) == 0xFFFE;
    return !isControl && !isNoncharacter;
}

// Formatters show each of these as another character, if as any.
std::string_view escapeOf(char byte) noexcept {
    switch (byte) {
        case '\\':
            return "\\e";
        case '-':
            return "\\-";
        case '"':
            return "\\(dq";
        case '\'':
            return "\\(aq";
        case '`':
            return "\\(ga";
        case '^':
            return "\\(ha";
        case '~':
            return "\\(ti";
        default:
            return {};
    }
}

// Returns 0 for what is no ASCII character. Three of them have a second number: groff finds that
// out, and then does not find the character.
char asciiOf(CodePoint::Value value) noexcept {
    switch (value) {
        case 0x037E:
            return ';';
        case 0x1FEF:
            return '`';
        case 0x212A:
            return 'K';
        default:
            return value > 0x7F ? '\0' : static_cast<char>(value);
    }
}

// Of four to six digits.
void appendCodePoint(std::string& to, CodePoint::Value value) noexcept {
    constexpr char digits[] = "0123456789ABCDEF";
    const auto bits = static_cast<std::uint32_t>(value);
    to += "\\[u";
    for (int shift = 20; shift >= 0; shift -= 4) {
        if (shift < 16 || bits >> shift != 0) to += digits[(bits >> shift) % 16];
    }
    to += ']';
}

// The style check of mandoc looks for names of functions and of systems, which have macros.
bool wouldBeAdvised(std::string_view rest) noexcept {
    return rest.starts_with("()") || rest.starts_with("BSD") || rest.starts_with("Fly");
}

// The characters of a word, which holds no white space.
std::string escaped(std::string_view word) noexcept {
    std::string to;
    while (!word.empty()) {
        const Sequence next = firstSequence(word);
        const CodePoint::Value value = next.isValid ? firstCodePoint(word).value : -1;
        const char ascii = asciiOf(value);
        if (value < 0 || !isShown(value)) {
            to += replacement;
        } else if (ascii == '\0') {
            appendCodePoint(to, value);
        } else {
            if (!to.empty() && wouldBeAdvised(word)) to += nothing;
            const std::string_view escape = escapeOf(ascii);
            to += escape.empty() ? std::string_view(&ascii, 1) : escape;
        }
        word.remove_prefix(next.size);
    }
    return to;
}

std::vector<std::string_view> words(std::string_view bytes) noexcept {
    std::vector<std::string_view> words;
    while (true) {
        bytes.remove_prefix(static_cast<std::size_t>(
            std::find_if_not(bytes.begin(), bytes.end(), isSpace) - bytes.begin()));
        if (bytes.empty()) return words;
        const auto* const end = std::find_if(bytes.begin(), bytes.end(), isSpace);
        const auto size = static_cast<std::size_t>(end - bytes.begin());
        words.push_back(bytes.substr(0, size));
        bytes.remove_prefix(size);
    }
}

constexpr bool isCapital(char byte) noexcept { return byte >= 'A' && byte <= 'Z'; }

// Macros have names of two or three characters: "Fl", "D1", "Bsx", "%A".
bool mayBeMacro(std::string_view argument) noexcept {
    const bool isNameSize = argument.size() == 2 || argument.size() == 3;
    if (!isNameSize) return false;
    return argument.front() == '%' || (isCapital(argument[0]) && !isCapital(argument[1]));
}

std::string argumentOf(std::string_view word) noexcept {
    std::string argument = escaped(word);
    // That of an escape is taken for one, too.
    if (isDelimiter(argument.back())) argument += nothing;
    if (isDelimiter(argument.front()) || mayBeMacro(argument)) argument.insert(0, nothing);
    return argument;
}

bool isOneOf(std::string_view set, char byte) noexcept {
    return set.find(byte) != std::string_view::npos;
}

// As in: (It ends.) "It ends."
bool isEndOfSentence(std::string_view word) noexcept {
    while (!word.empty() && isOneOf(")]'\"", word.back())) word.remove_suffix(1);
    return !word.empty() && isOneOf(".?!", word.back());
}

// One of the author's lines, in lines that are short enough, each sentence on one of its own.
class Line {
public:
    explicit Line(std::string& page) noexcept : page_(page) {}

    // Appends a word. `next` is the one after it, empty at the end.
    void add(std::string_view word, std::string_view next) noexcept {
        std::string text = escaped(word);
        if (text.front() == '.') text.insert(0, nothing);
        const bool isEnd = isEndOfSentence(word);
        // Else the end of the line would be taken for that of a sentence.
        const bool goesOn = isEnd && !next.empty() && isLowerCase(next.front());
        if (goesOn) text += nothing;
        if (size_ > 0) separate(text.size());
        page_ += text;
        size_ += text.size();
        if (next.empty() || (isEnd && !goesOn)) end();
    }
    // Moves the next word to the right.
    void indent(std::size_t spaces) noexcept {
        for (; spaces > 0; --spaces) page_ += "\\ ";
    }

private:
    void separate(std::size_t next) noexcept {
        if (size_ + 1 + next > longestLine) return end();
        page_ += ' ';
        ++size_;
    }
    void end() noexcept {
        page_ += '\n';
        size_ = 0;
    }

    std::string& page_;
    std::size_t size_ = 0;
};

std::string_view firstLine(std::string_view bytes) noexcept {
    return bytes.substr(0, bytes.find('\n'));
}

}  // namespace

std::string mdocArgument(std::string_view bytes) noexcept {
    const std::vector<std::string_view> parts = words(bytes);
    if (parts.empty()) return "\\(aq\\(aq";
    if (parts.size() == 1) return argumentOf(parts.front());
    std::string argument = "\"";
    for (const std::string_view part : parts) {
        if (argument.size() > 1) argument += ' ';
        argument += argumentOf(part);
    }
    return argument + '"';
}

std::string mdocArguments(std::string_view bytes) noexcept {
    std::string arguments;
    for (const std::string_view word : words(bytes)) {
        if (!arguments.empty()) arguments += ' ';
        arguments += argumentOf(word);
    }
    return arguments;
}

void appendProse(std::string& page, std::string_view bytes) noexcept {
    // What stands between a line and the one before it.
    std::string_view between;
    while (!bytes.empty()) {
        const std::string_view line = firstLine(bytes);
        bytes.remove_prefix(std::min(line.size() + 1, bytes.size()));
        const std::vector<std::string_view> all = words(line);
        if (all.empty()) {
            if (!between.empty()) between = ".Pp\n";
            continue;
        }
        page += between;
        Line lines(page);
        if (!between.empty()) {
            lines.indent(static_cast<std::size_t>(all.front().data() - line.data()));
        }
        for (std::size_t i = 0; i < all.size(); ++i) {
            lines.add(all[i], i + 1 < all.size() ? all[i + 1] : std::string_view());
        }
        between = ".br\n";
    }
}

}  // namespace Optrella::Internal
