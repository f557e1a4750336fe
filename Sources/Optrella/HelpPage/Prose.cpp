#include "Optrella/HelpPage/Prose.hpp"

#include <algorithm>
#include <iterator>

#include "Optrella/Text/Characters.hpp"
#include "Optrella/Text/Escapes.hpp"
#include "Optrella/Text/Unicode.hpp"

namespace Optrella::Internal {

namespace {

// Marks that no line begins with, of what is written without spaces.
constexpr CodePoint::Value neverFirst[] = {
    '!',    '%',    ')',    ',',    '.',    ':',    ';',    '?',    ']',    '}',    0x2019,
    0x201D, 0x2026, 0x3001, 0x3002, 0x3005, 0x3009, 0x300B, 0x300D, 0x300F, 0x3011, 0x3015,
    0x3017, 0x3041, 0x3043, 0x3045, 0x3047, 0x3049, 0x3063, 0x3083, 0x3085, 0x3087, 0x308E,
    0x30A1, 0x30A3, 0x30A5, 0x30A7, 0x30A9, 0x30C3, 0x30E3, 0x30E5, 0x30E7, 0x30EE, 0x30FB,
    0x30FC, 0xFF01, 0xFF09, 0xFF0C, 0xFF0E, 0xFF1A, 0xFF1B, 0xFF1F, 0xFF3D, 0xFF5D};
// And those that no line ends with.
constexpr CodePoint::Value neverLast[] = {'(',    '[',    '{',    0x2018, 0x201C,
                                          0x3008, 0x300A, 0x300C, 0x300E, 0x3010,
                                          0x3014, 0x3016, 0xFF08, 0xFF3B, 0xFF5B};

template <std::size_t N>
bool isOneOf(const CodePoint::Value (&marks)[N], std::string_view character) noexcept {
    const CodePoint::Value first = firstCodePoint(character).value;
    return std::find(std::begin(marks), std::end(marks), first) != std::end(marks);
}

// Reads a line, and knows where it may be divided.
class Characters {
public:
    explicit Characters(std::string_view bytes) noexcept : rest_(bytes) {}

    [[nodiscard]] bool next() noexcept {
        if (rest_.empty()) return false;
        before_ = character_;
        wasWide_ = isWide_;
        character_ = rest_.substr(0, firstCharacterSize(rest_));
        rest_.remove_prefix(character_.size());
        isWide_ = columns(character_) > 1;
        return true;
    }
    [[nodiscard]] std::string_view character() const noexcept { return character_; }
    // A mark that combines with a space makes it a character of its own, which divides nothing.
    [[nodiscard]] bool isSpace() const noexcept { return character_ == " "; }
    // REQUIRES: it is not the first one.
    [[nodiscard]] bool isAfterSeam() const noexcept {
        return (wasWide_ || isWide_) && !isOneOf(neverFirst, character_) &&
               !isOneOf(neverLast, before_);
    }

private:
    std::string_view rest_;
    std::string_view character_;
    std::string_view before_;
    bool isWide_ = false;
    bool wasWide_ = false;
};

std::string printable(std::string_view text) noexcept {
    std::string shown;
    appendPrintable(shown, text);
    return shown;
}

std::string_view withoutSpaceAtEnd(std::string_view text) noexcept {
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    return text.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

}  // namespace

void Prose::addPiece(std::string_view text, Style style, Join join) noexcept {
    pieces_.push_back({bytes_.size(), text.size(), Internal::columns(text), 0, style, join});
    bytes_ += text;
}

void Prose::add(std::string_view text, Style style, Join join) noexcept {
    const std::string shown = printable(text);
    std::string word;
    for (Characters characters(shown); characters.next();) {
        if (!characters.isSpace()) {
            word += characters.character();
        } else if (!word.empty()) {
            addPiece(word, style, join);
            word.clear();
            join = Join::inner;
        }
    }
    if (!word.empty()) addPiece(word, style, join);
}

void Prose::add(const Prose& other, Join join) noexcept {
    const std::size_t place = pieces_.size();
    for (Piece piece : other.pieces_) {
        piece.begin += bytes_.size();
        pieces_.push_back(piece);
    }
    bytes_ += other.bytes_;
    if (place < pieces_.size()) pieces_[place].join = join;
}

void Prose::addText(std::string_view text, Style style) noexcept {
    text = withoutSpaceAtEnd(text);
    // An empty first line says nothing.
    Join join = Join::space;
    while (!text.empty()) {
        const std::size_t size = std::min(text.find('\n'), text.size());
        const std::string_view line = withoutSpaceAtEnd(text.substr(0, size));
        if (!line.empty() || join == Join::line) {
            addLine(line, style, join);
            join = Join::line;
        }
        text.remove_prefix(std::min(size + 1, text.size()));
    }
}

void Prose::addLine(std::string_view line, Style style, Join join) noexcept {
    std::string spaced(line);
    std::replace(spaced.begin(), spaced.end(), '\t', ' ');
    const std::string shown = printable(spaced);
    const std::size_t indent = std::min(shown.find_first_not_of(' '), shown.size());
    const std::size_t place = pieces_.size();
    std::string word;
    for (Characters characters(shown); characters.next();) {
        if (!word.empty() && (characters.isSpace() || characters.isAfterSeam())) {
            addPiece(word, style, join);
            word.clear();
            join = Join::seam;
        }
        if (characters.isSpace()) {
            if (place < pieces_.size()) join = Join::space;
        } else {
            word += characters.character();
        }
    }
    // An empty line is a piece as well.
    addPiece(word, style, join);
    if (pieces_[place].join == Join::line) pieces_[place].indent = indent;
}

std::size_t Prose::columns() const noexcept {
    std::size_t sum = 0;
    for (const Piece& piece : pieces_) {
        const bool isAfterSpace = piece.join == Join::inner || piece.join == Join::space;
        if (isAfterSpace && &piece != &pieces_.front()) ++sum;
        sum += piece.columns;
    }
    return sum;
}

}  // namespace Optrella::Internal
