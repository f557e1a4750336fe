// CommandTable.hpp - many commands, each in a line.

#ifndef OPTRELLA_HELPPAGE_COMMANDTABLE_HPP
#define OPTRELLA_HELPPAGE_COMMANDTABLE_HPP

#include <cstddef>
#include <span>
#include <vector>

#include "Optrella/HelpPage/Command.hpp"
#include "Optrella/HelpPage/Sheet.hpp"

namespace Optrella::Internal {

// Those that begin with the same word stand together, where the first of them is declared.
class CommandTable {
public:
    CommandTable(std::span<const Command> commands, std::size_t width) noexcept;

    // Returns whether one of them has a name.
    [[nodiscard]] bool hasNames() const noexcept { return hasNames_; }
    // Appends the names, each with the first sentence of the help.
    void addRows(Rows& rows) const noexcept;
    // Writes these rows, with empty lines around those that begin with the same word.
    void writeTo(Sheet& sheet, std::span<const Row> rows, std::size_t begin,
                 std::size_t column) const noexcept;

private:
    [[nodiscard]] Prose nameOf(const Command& command) const noexcept;

    std::span<const Command> commands_;
    std::size_t width_;
    std::vector<std::vector<const Command*>> groups_;
    bool hasNames_ = false;
};

}  // namespace Optrella::Internal

#endif
