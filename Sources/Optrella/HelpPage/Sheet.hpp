// Sheet.hpp - lines of a terminal.

#ifndef OPTRELLA_HELPPAGE_SHEET_HPP
#define OPTRELLA_HELPPAGE_SHEET_HPP

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "Optrella/HelpPage.hpp"
#include "Optrella/HelpPage/Prose.hpp"

namespace Optrella::Internal {

// A line of a table, and those below it that say more, which have no more below them.
struct Row {
    Prose label;
    Prose help;
    std::vector<Row> details;
    std::size_t indent = 0;  // of the label
};
using Rows = std::vector<Row>;

// Appends an empty row, and returns it. Apart, because it is much code.
Row& addRow(Rows& rows) noexcept;

class Sheet {
public:
    Sheet(std::size_t width, Emphasis emphasis) noexcept : width_(width), emphasis_(emphasis) {}

    // Return the number of columns, and of those that indent by so many where that is not too much.
    [[nodiscard]] std::size_t width() const noexcept { return width_; }
    [[nodiscard]] std::size_t indentation(std::size_t columns) const noexcept;

    // Begins what an empty line sets apart from what there is.
    void beginSection() noexcept;
    // Writes from a column on; further lines begin at another one, or at the same.
    void write(const Prose& prose, std::size_t begin, std::size_t hanging) noexcept;
    void write(const Prose& prose, std::size_t begin = 0) noexcept { write(prose, begin, begin); }
    // Ends the line.
    void endLine() noexcept;

    // Returns where the second column of these rows begins: after the widest label that leaves room
    // enough, or below the labels where most of them do not.
    [[nodiscard]] std::size_t columnAfter(std::span<const Row> rows,
                                          std::size_t begin) const noexcept;
    // Writes rows, and ends each line.
    void write(std::span<const Row> rows, std::size_t begin, std::size_t column) noexcept;

    [[nodiscard]] Text text() const noexcept { return bytes_; }

private:
    void write(const Row& row, std::size_t begin, std::size_t column) noexcept;
    void put(const Prose::Piece& piece, std::string_view text) noexcept;
    void setStyle(Style style) noexcept;
    void moveTo(std::size_t column) noexcept;
    [[nodiscard]] bool fits(std::span<const Prose::Piece> pieces) const noexcept;

    std::string bytes_;
    std::size_t width_;
    std::size_t column_ = 0;
    std::size_t begin_ = 0;  // where the text in this line begins that is being written
    Emphasis emphasis_;
    Style style_ = Style::plain;
};

}  // namespace Optrella::Internal

#endif
