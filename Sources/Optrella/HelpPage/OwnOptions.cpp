#include "Optrella/HelpPage/OwnOptions.hpp"

#include "Optrella/HelpPage/Entries.hpp"
#include "Optrella/Tool/Conditions.hpp"

namespace Optrella::Internal {

namespace {

constexpr Text helpTags[] = {"-h", "--help"};
constexpr Text versionTag[] = {"--version"};

struct PackagersOption {
    Text tag;
    const char* value;
};
constexpr PackagersOption packagersOptions[] = {
    {"--completion", "bash|zsh|fish"}, {"--manual", ""}, {"--describe", ""}};

}  // namespace

std::vector<Text> OwnOptions::free(std::span<const Text> tags) const noexcept {
    std::vector<Text> free;
    for (const Text& tag : tags) {
        const Symbol symbol = grammar_.vocabulary.find(tag);
        const auto hasIt = [symbol](const Form& form) { return form.ownerOf(symbol) != noSlot; };
        if (noneOf(grammar_.forms, hasIt)) free.push_back(tag);
    }
    return free;
}

std::optional<Text> OwnOptions::help() const noexcept {
    const std::vector<Text> tags = free(helpTags);
    return tags.empty() ? std::nullopt : std::optional(tags.back());
}

void OwnOptions::add(Rows& rows, std::span<const Text> tags, std::string_view help) const noexcept {
    const std::vector<Text> left = free(tags);
    if (left.empty()) return;
    Row& row = addRow(rows);
    row.label = labelOf(left);
    row.help.addText(help);
}

void OwnOptions::addHelp(Rows& rows, std::string_view helpOfHelp) const noexcept {
    add(rows, helpTags, helpOfHelp);
}

void OwnOptions::addVersion(Rows& rows) const noexcept {
    if (!tool_.version.empty()) add(rows, versionTag, "Show the version");
}

Prose OwnOptions::ofPackagers() const noexcept {
    Prose options;
    for (const PackagersOption& option : packagersOptions) {
        if (free({&option.tag, 1}).empty()) continue;
        if (!options.empty()) options.add(",", Style::plain, Join::none);
        options.add(option.tag, Style::typed);
        options.add(option.value, Style::plain, Join::inner);
    }
    if (options.empty()) return options;
    Prose line;
    line.add("For packagers:", Style::heading);
    line.add(options, Join::space);
    return line;
}

}  // namespace Optrella::Internal
