#include "Optrella/HelpPage/OwnOptions.hpp"

#include "Optrella/HelpPage/Entries.hpp"

namespace Optrella::Internal {

namespace {

struct PackagersOption {
    OwnOption option;
    const char* value;
};
constexpr PackagersOption packagersOptions[] = {{OwnOption::completion, "bash|zsh|fish"},
                                                {OwnOption::manual, ""},
                                                {OwnOption::description, ""}};

}  // namespace

std::optional<Text> OwnOptions::help() const noexcept {
    const std::vector<Text> tags = ownTags(tool_, grammar_, OwnOption::help);
    return tags.empty() ? std::nullopt : std::optional(tags.back());
}

void OwnOptions::add(Rows& rows, OwnOption option, std::string_view help) const noexcept {
    const std::vector<Text> tags = ownTags(tool_, grammar_, option);
    if (tags.empty()) return;
    Row& row = addRow(rows);
    row.label = labelOf(tags);
    row.help.addText(help);
}

void OwnOptions::addHelp(Rows& rows, std::string_view helpOfHelp) const noexcept {
    add(rows, OwnOption::help, helpOfHelp);
}

void OwnOptions::addVersion(Rows& rows) const noexcept {
    add(rows, OwnOption::version, "Show the version");
}

Prose OwnOptions::ofPackagers() const noexcept {
    Prose options;
    for (const PackagersOption& option : packagersOptions) {
        const std::vector<Text> tags = ownTags(tool_, grammar_, option.option);
        if (tags.empty()) continue;
        if (!options.empty()) options.add(",", Style::plain, Join::none);
        options.add(tags.front(), Style::typed);
        options.add(option.value, Style::plain, Join::inner);
    }
    if (options.empty()) return options;
    Prose line;
    line.add("For packagers:", Style::heading);
    line.add(options, Join::space);
    return line;
}

}  // namespace Optrella::Internal
