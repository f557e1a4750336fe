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
    : commands_(commands) {
    for (const Command& command : commands) {
        if (!command.words().empty()) hasNames_ = true;
        const auto group = std::find_if(groups_.begin(), groups_.end(), [&](const auto& each) {
            return beginAlike(*each.front(), command);
        });
        (group != groups_.end() ? *group : groups_.emplace_back()).push_back(&command);
    }
    for (const auto& group : groups_) {
        for (const Command* each : group) rows_.push_back({nameOf(*each, width), each->summary()});
    }
}

// What tells it from the others: its words, as far as these do.
Prose CommandTable::nameOf(const Command& command, std::size_t width) const noexcept {
    if (command.words().empty()) return command.usage(width);
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

void CommandTable::writeTo(Sheet& sheet, std::size_t begin, std::size_t column) const noexcept {
    std::span<const Row> rest = rows_;
    std::size_t sizeBefore = 1;
    for (const auto& group : groups_) {
        const bool isFirst = rest.size() == rows_.size();
        if (!isFirst && (group.size() > 1 || sizeBefore > 1)) sheet.beginSection();
        sheet.write(rest.first(group.size()), begin, column);
        rest = rest.subspan(group.size());
        sizeBefore = group.size();
    }
}

}  // namespace Optrella::Internal
