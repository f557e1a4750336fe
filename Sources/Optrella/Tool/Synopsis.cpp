#include "Optrella/Tool/Synopsis.hpp"

#include <algorithm>
#include <string_view>

#include "Optrella/Text/Characters.hpp"
#include "Optrella/Text/Escapes.hpp"
#include "Optrella/Tool/Conditions.hpp"

namespace Optrella::Internal {

namespace {

void append(std::string& to, const std::string& piece) noexcept {
    if (!to.empty() && !piece.empty()) to += ' ';
    to += piece;
}

std::string tags(const SlotRules& rules) noexcept {
    std::string written;
    for (const Text& tag : rules.tags()) {
        if (!written.empty()) written += '|';
        written += static_cast<std::string_view>(tag);
    }
    return written;
}

std::string tagsAndValue(const SlotRules& rules) noexcept {
    std::string written = tags(rules);
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

bool hasOptions(const Form& form) noexcept {
    return anyOf(form.slots(),
                 [](const SlotRules& rules) { return !rules.isRequired && !rules.takes; });
}

std::string synopsis(const Form& form, Extent extent) noexcept {
    std::string line;
    for (const SynopsisPart& part : synopsisParts(form, extent)) append(line, part.text);
    return line;
}

}  // namespace

std::vector<SynopsisPart> synopsisParts(const Form& form, Extent extent) noexcept {
    std::vector<SynopsisPart> parts;
    const auto addAll = [&parts, &form](auto condition) {
        for (const SlotRules& rules : form.slots()) {
            if (rules.takes || !condition(rules)) continue;
            const bool isCommandWord = rules.isRequired && isWord(rules.tags());
            parts.push_back({written(rules), isCommandWord ? tags(rules).size() : 0});
        }
    };
    addAll([](const SlotRules& rules) { return rules.isRequiredWord; });
    addAll([](const SlotRules& rules) { return rules.isRequired && !rules.isRequiredWord; });
    if (extent == Extent::whole) {
        addAll([](const SlotRules& rules) { return !rules.isRequired; });
    } else if (hasOptions(form)) {
        parts.push_back({"[OPTIONS]", 0});
    }
    for (const Slot operand : form.operands()) {
        parts.push_back({written(form.slot(operand)), 0});
    }
    return parts;
}

std::string synopsis(const Form& form, std::size_t width) noexcept {
    std::string line = synopsis(form, Extent::whole);
    return columns(line) <= width ? line : synopsis(form, Extent::shortened);
}

std::string valueName(const SlotRules& rules) noexcept {
    const Text& name = rules.parameter.common().parameterName;
    return name.empty() ? "VALUE" : upperCase(name);
}

std::string commandName(const Form& form) noexcept {
    std::string name;
    for (const SlotRules& rules : form.slots()) {
        if (rules.isRequired && !rules.takes && isWord(rules.tags())) {
            append(name, rules.tags().front().str());
        }
    }
    return name.empty() ? synopsis(form, Extent::whole) : name;
}

std::vector<std::string> distinctNames(std::span<const Form* const> forms,
                                       std::string_view nothing) noexcept {
    std::vector<std::string> names;
    for (const Form* form : forms) names.push_back(commandName(*form));
    const auto isThereTwice = [&names](const std::string& name) {
        return anyOf(
            names, [&name](const std::string& other) { return &other != &name && other == name; });
    };
    if (anyOf(names, isThereTwice)) {
        names.clear();
        for (const Form* form : forms) names.push_back(synopsis(*form, Extent::whole));
    }
    for (std::string& name : names) name = quoted(name.empty() ? nothing : name);
    return names;
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
