#include "Optrella/Tool/Synopsis.hpp"

#include <algorithm>
#include <set>
#include <string_view>

#include "Optrella/Text/Characters.hpp"
#include "Optrella/Text/Escapes.hpp"

namespace Optrella::Internal {

namespace {

void append(std::string& to, const std::string& piece) noexcept {
    if (!to.empty() && !piece.empty()) to += ' ';
    to += piece;
}

std::string tagsAndValue(const SlotRules& rules) noexcept {
    std::string written;
    for (const Text& tag : rules.tags()) {
        if (!written.empty()) written += '|';
        written += static_cast<std::string_view>(tag);
    }
    if (rules.takesValue) append(written, valueName(rules));
    return written;
}

std::string written(const SlotRules& rules) noexcept {
    const bool isOperand = rules.takes.has_value();
    std::string piece = isOperand ? valueName(rules) : tagsAndValue(rules);
    const bool isMany = isOperand && rules.takes != Takes::one;
    if (isMany) piece += "...";
    if (!rules.isRequired) piece = '[' + piece + ']';
    if (rules.mayRepeat && !isMany) piece += "...";
    return piece;
}

template <class Condition>
void appendAll(std::string& to, const Form& form, Condition condition) noexcept {
    for (const SlotRules& rules : form.slots()) {
        if (!rules.takes && condition(rules)) append(to, written(rules));
    }
}

std::string synopsis(const Form& form, bool isShort) noexcept {
    std::string line;
    appendAll(line, form, [](const SlotRules& rules) { return rules.isRequiredWord; });
    appendAll(line, form,
              [](const SlotRules& rules) { return rules.isRequired && !rules.isRequiredWord; });
    if (isShort) {
        append(line, "[OPTIONS]");
    } else {
        appendAll(line, form, [](const SlotRules& rules) { return !rules.isRequired; });
    }
    for (const Slot operand : form.operands()) append(line, written(form.slot(operand)));
    return line;
}

bool hasOptions(const Form& form) noexcept {
    return std::any_of(form.slots().begin(), form.slots().end(),
                       [](const SlotRules& rules) { return !rules.isRequired && !rules.takes; });
}

}  // namespace

std::string synopsis(const Form& form, std::size_t width) noexcept {
    std::string line = synopsis(form, false);
    if (columns(line) <= width || !hasOptions(form)) return line;
    return synopsis(form, true);
}

std::string commandName(const Form& form) noexcept {
    std::string name;
    for (const SlotRules& rules : form.slots()) {
        if (rules.isRequired && !rules.takes && isWord(rules.tags())) {
            append(name, rules.tags().front().str());
        }
    }
    return name.empty() ? synopsis(form, false) : name;
}

std::vector<std::string> distinctNames(std::span<const Form* const> forms,
                                       std::string_view nothing) noexcept {
    std::vector<std::string> names;
    for (const Form* form : forms) names.push_back(commandName(*form));
    const std::set<std::string> different(names.begin(), names.end());
    if (different.size() < names.size()) {
        names.clear();
        for (const Form* form : forms) names.push_back(synopsis(*form, false));
    }
    for (std::string& name : names) name = quoted(name.empty() ? nothing : name);
    return names;
}

std::string valueName(const SlotRules& rules) noexcept {
    const Text& name = rules.parameter.common().parameterName;
    return name.empty() ? "VALUE" : upperCase(name);
}

std::string label(const SlotRules& rules) noexcept {
    if (rules.takes || rules.tags().empty()) return valueName(rules);
    return quoted(rules.tags().front());
}

std::string quoted(std::string_view bytes) noexcept {
    std::string text = "'";
    appendEscaped(text, bytes);
    return text + "'";
}

}  // namespace Optrella::Internal
