#include "Optrella/HelpPage/Sheet.hpp"

#include <algorithm>

namespace Optrella::Internal {

namespace {

using Pieces = std::span<const Prose::Piece>;

constexpr std::size_t gap = 2;         // between the columns of a table
constexpr std::size_t widest = 40;     // of a first column
constexpr std::size_t belowLabel = 6;  // how far help is indented in lines of its own
constexpr std::size_t labelGoesOn = 4;

bool isSpace(Join join) noexcept { return join == Join::inner || join == Join::space; }

// The first pieces up to the next join that is one of the more willing ones.
Pieces firstUpTo(Pieces pieces, Join least) noexcept {
    const auto end = std::find_if(pieces.begin() + 1, pieces.end(),
                                  [least](const auto& piece) { return piece.join >= least; });
    return pieces.first(static_cast<std::size_t>(end - pieces.begin()));
}

}  // namespace

Row& addRow(Rows& rows) noexcept { return rows.emplace_back(); }

std::size_t Sheet::indentation(std::size_t columns) const noexcept {
    return std::min(columns, width_ / 4);
}

void Sheet::beginSection() noexcept {
    if (!bytes_.empty()) bytes_ += '\n';
}

void Sheet::endLine() noexcept {
    setStyle(Style::plain);
    bytes_ += '\n';
    column_ = 0;
    begin_ = 0;
}

// Spaces are written when something comes after them: no line ends in any.
void Sheet::moveTo(std::size_t column) noexcept { begin_ = column; }

void Sheet::setStyle(Style style) noexcept {
    if (style == style_) return;
    style_ = style;
    if (emphasis_ == Emphasis::none) return;
    switch (style) {
        case Style::plain:
            bytes_ += "\x1b[0m";
            break;
        case Style::heading:
            bytes_ += "\x1b[1m";
            break;
        case Style::typed:
            bytes_ += "\x1b[36m";
            break;
    }
}

void Sheet::put(const Prose::Piece& piece, std::string_view text) noexcept {
    if (text.empty()) return;
    if (style_ != piece.style) setStyle(Style::plain);
    if (column_ > begin_) {
        if (isSpace(piece.join)) {
            bytes_ += ' ';
            ++column_;
        }
    } else {
        bytes_.append(begin_ - column_, ' ');
        column_ = begin_;
    }
    setStyle(piece.style);
    bytes_ += text;
    column_ += piece.columns;
}

bool Sheet::fits(Pieces pieces) const noexcept {
    std::size_t end = std::max(column_, begin_);
    for (const Prose::Piece& piece : pieces) {
        if (isSpace(piece.join) && end > begin_) ++end;
        end += piece.columns;
    }
    return end <= width_;
}

void Sheet::write(const Prose& prose, std::size_t begin, std::size_t hanging) noexcept {
    moveTo(begin);
    const auto breakLine = [this](std::size_t column) {
        endLine();
        moveTo(column);
    };
    std::size_t indented = hanging;
    for (Pieces rest = prose.pieces(); !rest.empty();) {
        Pieces together = firstUpTo(rest, Join::space);
        rest = rest.subspan(together.size());
        const Prose::Piece& first = together.front();
        if (first.join == Join::line) {
            indented = hanging + indentation(first.indent);
            breakLine(indented);
        } else if (column_ > begin_ && !fits(together)) {
            breakLine(indented);
        }
        while (!together.empty()) {
            const Pieces word = firstUpTo(together, Join::inner);
            together = together.subspan(word.size());
            // Nothing stands beside a word that is too wide, not even a label.
            if (column_ > 0 && !fits(word)) breakLine(indented);
            for (const Prose::Piece& piece : word) put(piece, prose.textOf(piece));
        }
    }
}

std::size_t Sheet::columnAfter(std::span<const Row> rows, std::size_t begin) const noexcept {
    const std::size_t room = std::min((width_ - std::min(begin, width_)) * 2 / 5, widest);
    std::size_t most = 0;
    std::size_t fitting = 0;
    for (const Row& row : rows) {
        const std::size_t columns = row.indent + row.label.columns() + gap;
        if (columns > room) continue;
        most = std::max(most, columns);
        ++fitting;
    }
    // With more exceptions it would be no column.
    return begin + (2 * fitting >= rows.size() ? most : indentation(belowLabel));
}

void Sheet::write(std::span<const Row> rows, std::size_t begin, std::size_t column) noexcept {
    const std::size_t detail = column + indentation(gap);
    for (const Row& row : rows) {
        write(row, begin, column);
        const std::size_t detailColumn = columnAfter(row.details, detail);
        for (const Row& each : row.details) write(each, detail, detailColumn);
    }
}

void Sheet::write(const Row& row, std::size_t begin, std::size_t column) noexcept {
    const std::size_t label = begin + row.indent;
    write(row.label, label, label + indentation(labelGoesOn));
    if (!row.help.empty()) {
        if (label + row.label.columns() + gap > column) endLine();
        write(row.help, column);
    }
    endLine();
}

}  // namespace Optrella::Internal
