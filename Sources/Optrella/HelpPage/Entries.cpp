#include "Optrella/HelpPage/Entries.hpp"

#include <algorithm>
#include <limits>
#include <string>

#include "Optrella/Tool/Argument.hpp"
#include "Optrella/Tool/Synopsis.hpp"

namespace Optrella::Internal {

namespace {

// A tag as it is to be typed.
std::string_view typed(const Text& tag) noexcept {
    const std::string_view bytes = tag;
    return bytes.find_first_not_of(' ') == std::string_view::npos ? "''" : bytes;
}

// What cannot be seen from the label, in parentheses after the help.
class Notes {
public:
    explicit Notes(Prose& help) noexcept : help_(help) {}

    void add(std::string_view note) noexcept {
        if (isOpen_) help_.add(";", Style::plain, Join::none);
        help_.add(std::string(isOpen_ ? "" : "(").append(note));
        isOpen_ = true;
    }
    void addChoices(const ListOptions& choices) noexcept {
        bool isFirst = true;
        for (const ParameterNone& choice : choices) {
            if (choice.common.tags.empty()) continue;
            if (isFirst) {
                add("one of");
            } else {
                help_.add(",", Style::plain, Join::none);
            }
            help_.add(typed(choice.common.tags.front()), Style::typed);
            isFirst = false;
        }
    }
    void close() noexcept {
        if (isOpen_) help_.add(")", Style::plain, Join::none);
    }

private:
    Prose& help_;
    bool isOpen_ = false;
};

std::string boundsOf(const ParameterNumber& number) noexcept {
    using Limits = std::numeric_limits<std::int64_t>;
    const std::string least = std::to_string(*number.rangeMin());
    const std::string greatest = std::to_string(*number.rangeMax());
    const bool hasLeast = *number.rangeMin() != Limits::min();
    const bool hasGreatest = *number.rangeMax() != Limits::max();
    if (hasLeast && hasGreatest) return least + " to " + greatest;
    if (hasLeast) return least + " or more";
    return hasGreatest ? greatest + " or less" : "a whole number";
}

std::string pathOf(const ParameterFileURL& path) noexcept {
    using Type = ParameterFileURL::urlType;
    using State = ParameterFileURL::existState;
    std::string what = "file or directory";
    if (path.type == Type::file) what = "file";
    if (path.type == Type::folder) what = "directory";
    if (path.state == State::exist) return "an existing " + what;
    return (path.state == State::absent ? "a new " : "a ") + what;
}

bool hasHelp(const ListOptions& choices) noexcept {
    return std::any_of(choices.begin(), choices.end(),
                       [](const ParameterNone& choice) { return !choice.common.tagHelp.empty(); });
}

std::vector<Row> rowsOf(const ListOptions& choices) noexcept {
    std::vector<Row> rows;
    for (const ParameterNone& choice : choices) {
        if (choice.common.tags.empty()) continue;
        Row& row = rows.emplace_back();
        row.label.add(typed(choice.common.tags.front()), Style::typed);
        row.help.addText(choice.common.tagHelp);
    }
    return rows;
}

void addValue(Prose& label, const SlotRules& rules) noexcept {
    if (!rules.takesValue) return;
    label.add(valueName(rules) + (rules.mayRepeat ? "..." : ""), Style::plain, Join::inner);
}

Row rowOf(const SlotRules& rules) noexcept {
    Row row;
    if (!rules.takes) row.label = labelOf(rules.tags());
    addValue(row.label, rules);
    row.help.addText(rules.parameter.common().tagHelp);
    Notes notes(row.help);
    if (const auto* list = rules.parameter.as<ParameterList>()) {
        if (hasHelp(list->validOptions())) {
            row.details = rowsOf(list->validOptions());
        } else {
            notes.addChoices(list->validOptions());
        }
    }
    if (const auto* number = rules.parameter.as<ParameterNumber>()) notes.add(boundsOf(*number));
    if (const auto* path = rules.parameter.as<ParameterFileURL>()) notes.add(pathOf(*path));
    if (rules.parameter.as<ParameterUUID>() != nullptr) notes.add("a UUID");
    // Of words and operands the usage tells.
    if (!rules.takes && !isWord(rules.tags())) {
        if (rules.isRequired) notes.add("required");
        if (rules.mayRepeat) notes.add("may be repeated");
    }
    notes.close();
    return row;
}

bool isOption(const SlotRules& rules) noexcept { return !rules.takes && !isWord(rules.tags()); }

// The word alone says nothing that the usage does not.
bool saysMore(const SlotRules& rules) noexcept {
    return rules.takesValue || !rules.isRequired || !rules.parameter.common().tagHelp.empty();
}

std::size_t dashesOf(const Row& row) noexcept {
    const std::string_view first = row.label.textOf(row.label.pieces().front());
    return std::min(first.find_first_not_of('-'), first.size());
}

}  // namespace

Prose labelOf(std::span<const Text> tags) noexcept {
    Prose label;
    for (const Text& tag : tags) {
        if (!label.empty()) label.add(",", Style::plain, Join::none);
        label.add(typed(tag), Style::typed, Join::inner);
    }
    return label;
}

std::vector<Row> argumentsOf(const Form& form) noexcept {
    std::vector<Row> rows;
    for (const bool isRequired : {true, false}) {
        for (const SlotRules& rules : form.slots()) {
            if (rules.takes || isOption(rules) || rules.isRequired != isRequired) continue;
            if (saysMore(rules)) rows.push_back(rowOf(rules));
        }
    }
    for (const Slot operand : form.operands()) rows.push_back(rowOf(form.slot(operand)));
    return rows;
}

std::vector<Row> optionsOf(const Form& form) noexcept {
    std::vector<Row> rows;
    for (const SlotRules& rules : form.slots()) {
        // Without tags nobody can give it.
        if (isOption(rules) && !rules.tags().empty()) rows.push_back(rowOf(rules));
    }
    return rows;
}

void alignLongTags(std::span<Row> options) noexcept {
    constexpr std::size_t ofShortTag = 4;  // "-s, "
    const auto isShort = [](const Row& row) { return dashesOf(row) == 1; };
    if (std::none_of(options.begin(), options.end(), isShort)) return;
    for (Row& row : options) {
        if (dashesOf(row) > 1) row.indent = ofShortTag;
    }
}

}  // namespace Optrella::Internal
