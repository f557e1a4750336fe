#include "Optrella/Tool/OwnOption.hpp"

#include "Optrella/Tool/Conditions.hpp"

namespace Optrella::Internal {

namespace {

struct Entry {
    Text tag;
    OwnOption option;
};
constexpr Entry entries[] = {
    {"-h", OwnOption::help},           {"--help", OwnOption::help},
    {"--version", OwnOption::version}, {"--completion", OwnOption::completion},
    {"--manual", OwnOption::manual},   {"--describe", OwnOption::description},
};

bool has(const Tool& tool, OwnOption option) noexcept {
    return option != OwnOption::version || !tool.version.empty();
}

}  // namespace

std::optional<OwnOption> ownOptionOf(const Tool& tool, std::string_view tag) noexcept {
    for (const Entry& each : entries) {
        if (each.tag == tag && has(tool, each.option)) return each.option;
    }
    return std::nullopt;
}

std::vector<Text> ownTags(const Tool& tool, const Grammar& grammar, OwnOption option) noexcept {
    std::vector<Text> tags;
    for (const Entry& each : entries) {
        if (each.option != option || !has(tool, option)) continue;
        const Symbol symbol = grammar.vocabulary.find(each.tag);
        const auto hasIt = [symbol](const Form& form) { return form.ownerOf(symbol) != noSlot; };
        if (noneOf(grammar.forms, hasIt)) tags.push_back(each.tag);
    }
    return tags;
}

}  // namespace Optrella::Internal
