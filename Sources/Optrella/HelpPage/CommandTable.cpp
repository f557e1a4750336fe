#include "Optrella/HelpPage/CommandTable.hpp"

#include <algorithm>

namespace Optrella::Internal {

namespace {

bool beginAlike(const Command& left, const Command& right) noexcept {
    if (left.words().empty() || right.words().empty()) return false;
    return left.words().front() == right.words().front();
}

}  // namespace

CommandTable::CommandTable(std::span<const Command> commands, std::size_t width) noexcept
    : commands_(commands), width_(width) {
    for (const Command& command : commands) {
        if (!command.words().empty()) hasNames_ = true;
        const auto group = std::find_if(groups_.begin(), groups_.end(), [&](const auto& each) {
            return beginAlike(*each.front(), command);
        });
        (group != groups_.end() ? *group : groups_.emplace_back()).push_back(&command);
    }
}

void CommandTable::addRows(Rows& rows) const noexcept {
    for (const auto& group : groups_) {
        for (const Command* each : group) {
            Row& row = addRow(rows);
            row.label = nameOf(*each);
            row.help = each->summary();
        }
    }
}

// What tells it from the others: its words, as far as these do.
Prose CommandTable::nameOf(const Command& command) const noexcept {
    if (command.words().empty()) return command.usage(width_);
    const auto isNamesake = [&command](const Command& each) {
        return each.words() == command.words();
    };
    if (std::count_if(commands_.begin(), commands_.end(), isNamesake) > 1) {
        return command.synopsis(Extent::shortened);
    }
    Prose name;
    for (const Text& word : command.words()) name.add(word, Style::typed, Join::inner);
    return name;
}

void CommandTable::writeTo(Sheet& sheet, std::span<const Row> rows, std::size_t begin,
                           std::size_t column) const noexcept {
    std::size_t sizeBefore = 0;
    for (const auto& group : groups_) {
        const bool isFirst = sizeBefore == 0;
        if (!isFirst && (group.size() > 1 || sizeBefore > 1)) sheet.beginSection();
        sheet.write(rows.first(group.size()), begin, column);
        rows = rows.subspan(group.size());
        sizeBefore = group.size();
    }
}

}  // namespace Optrella::Internal
