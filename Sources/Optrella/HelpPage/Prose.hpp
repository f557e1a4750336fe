// Prose.hpp - text with the places where a line may end.

#ifndef OPTRELLA_HELPPAGE_PROSE_HPP
#define OPTRELLA_HELPPAGE_PROSE_HPP

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Optrella::Internal {

enum class Style : std::uint8_t {
    plain,
    heading,
    typed,  // what a user types as it stands
};

// What is between a piece and the one before it.
enum class Join : std::uint8_t {
    none,   // nothing: both stay in one line
    inner,  // a space, which ends a line only where both do not fit into one
    space,  // a space, or the end of a line
    seam,   // nothing, or the end of a line
    line,   // the end of a line
};

class Prose {
public:
    // Of the bytes, which are as a terminal may get them.
    struct Piece {
        std::size_t begin;
        std::size_t size;
        std::size_t columns;
        std::size_t indent;  // of the line that it begins
        Style style;
        Join join;
    };

    // Appends what the author wrote: words and lines, which may begin with spaces.
    void addText(std::string_view text, Style style = Style::plain) noexcept;
    // Appends what stays together, spaces included, where a line is wide enough.
    void add(std::string_view text, Style style = Style::plain, Join join = Join::space) noexcept;
    // Appends all of another one.
    void add(const Prose& other, Join join) noexcept;

    [[nodiscard]] bool empty() const noexcept { return pieces_.empty(); }
    [[nodiscard]] std::span<const Piece> pieces() const noexcept { return pieces_; }
    [[nodiscard]] std::string_view textOf(const Piece& piece) const noexcept {
        const std::string_view bytes = bytes_;
        return bytes.substr(piece.begin, piece.size);
    }
    // Returns the number of columns in one line.
    [[nodiscard]] std::size_t columns() const noexcept;

private:
    void addPiece(std::string_view text, Style style, Join join) noexcept;
    void addLine(std::string_view line, Style style, Join join) noexcept;

    std::string bytes_;
    std::vector<Piece> pieces_;
};

}  // namespace Optrella::Internal

#endif
