#include "Optrella/HelpPage/Entries.hpp"

#include <algorithm>

#include "Optrella/Tool/Argument.hpp"
#include "Optrella/Tool/Bounds.hpp"
#include "Optrella/Tool/Conditions.hpp"
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

    // Begins a note, and goes on with it.
    void add(std::string_view note) noexcept {
        help_.add(isOpen_ ? ";" : "(", Style::plain, isOpen_ ? Join::none : Join::space);
        help_.add(note, Style::plain, isOpen_ ? Join::space : Join::none);
        isOpen_ = true;
    }
    void goOn(std::string_view note) noexcept { help_.add(note, Style::plain, Join::inner); }

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
    void addBounds(const ParameterNumber& number) noexcept {
        const Bounds bounds(number);
        if (!bounds.least && !bounds.greatest) return add("a whole number");
        add(bounds.least ? *bounds.least : *bounds.greatest);
        if (!bounds.greatest) return goOn("or more");
        if (!bounds.least) return goOn("or less");
        goOn("to");
        goOn(*bounds.greatest);
    }
    void addPath(const ParameterFileURL& path) noexcept {
        using urlType = ParameterFileURL::urlType;
        using existState = ParameterFileURL::existState;
        if (path.state == existState::vague) {
            add("a");
        } else {
            add(path.state == existState::exist ? "an existing" : "a new");
        }
        if (path.type != urlType::folder) goOn("file");
        if (path.type == urlType::fileOrFolder) goOn("or");
        if (path.type != urlType::file) goOn("directory");
    }
    void close() noexcept {
        if (isOpen_) help_.add(")", Style::plain, Join::none);
    }

private:
    Prose& help_;
    bool isOpen_ = false;
};

bool hasHelp(const ListOptions& choices) noexcept {
    return anyOf(choices,
                 [](const ParameterNone& choice) { return !choice.common.tagHelp.empty(); });
}

void addChoices(Rows& rows, const ListOptions& choices) noexcept {
    for (const ParameterNone& choice : choices) {
        if (choice.common.tags.empty()) continue;
        Row& row = addRow(rows);
        row.label.add(typed(choice.common.tags.front()), Style::typed);
        row.help.addText(choice.common.tagHelp);
    }
}

bool isOption(const SlotRules& rules) noexcept { return !rules.takes && !isWord(rules.tags()); }

void addNotes(Row& row, const SlotRules& rules) noexcept {
    Notes notes(row.help);
    if (const auto* list = rules.parameter.as<ParameterList>()) {
        if (hasHelp(list->validOptions())) {
            addChoices(row.details, list->validOptions());
        } else {
            notes.addChoices(list->validOptions());
        }
    }
    if (const auto* number = rules.parameter.as<ParameterNumber>()) notes.addBounds(*number);
    if (const auto* path = rules.parameter.as<ParameterFileURL>()) notes.addPath(*path);
    if (rules.parameter.as<ParameterUUID>() != nullptr) notes.add("a UUID");
    // Of words and operands the usage tells.
    if (isOption(rules) && rules.isRequired) notes.add("required");
    if (isOption(rules) && rules.mayRepeat) notes.add("may be repeated");
    notes.close();
}

void addParameter(Rows& rows, const SlotRules& rules) noexcept {
    Row& row = addRow(rows);
    if (!rules.takes) row.label = labelOf({rules.tags().begin(), rules.tags().size()});
    if (rules.takesValue) row.label.add(valueName(rules), Style::plain, Join::inner);
    if (rules.mayRepeat) row.label.add("...", Style::plain, Join::none);
    row.help.addText(rules.parameter.common().tagHelp);
    addNotes(row, rules);
}

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

void addArguments(Rows& rows, const Form& form) noexcept {
    for (const bool isRequired : {true, false}) {
        for (const SlotRules& rules : form.slots()) {
            if (rules.takes || isOption(rules) || rules.isRequired != isRequired) continue;
            if (saysMore(rules)) addParameter(rows, rules);
        }
    }
    for (const Slot operand : form.operands()) addParameter(rows, form.slot(operand));
}

void addOptions(Rows& rows, const Form& form) noexcept {
    for (const SlotRules& rules : form.slots()) {
        // Without tags nobody can give it.
        if (isOption(rules) && !rules.tags().empty()) addParameter(rows, rules);
    }
}

void alignLongTags(std::span<Row> options) noexcept {
    constexpr std::size_t ofShortTag = 4;  // "-s, "
    const auto isShort = [](const Row& row) { return dashesOf(row) == 1; };
    if (noneOf(options, isShort)) return;
    for (Row& row : options) {
        if (dashesOf(row) > 1) row.indent = ofShortTag;
    }
}

}  // namespace Optrella::Internal
