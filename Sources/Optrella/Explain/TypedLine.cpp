#include "Optrella/Explain/TypedLine.hpp"

#include "Optrella/Explain/Rejection.hpp"
#include "Optrella/Explain/Tries.hpp"
#include "Optrella/Tool/Conditions.hpp"
#include "Optrella/Tool/Synopsis.hpp"

namespace Optrella::Internal {

TypedLine::TypedLine(const Grammar& grammar, std::span<const Text> arguments) noexcept
    : grammar_(grammar), arguments_(argumentsOf(arguments, grammar_.vocabulary)) {}

const SlotRules* TypedLine::rulesOf(const Attempt& attempt, const Text& tag) const noexcept {
    const Form& form = formOf(attempt);
    // By the first tag, which may choose another parameter.
    for (const SlotRules& rules : form.slots()) {
        if (!rules.tags().empty() && rules.tags().front() == tag) return &rules;
    }
    const Slot owner = form.ownerOf(grammar_.vocabulary.find(tag));
    return owner != noSlot ? &form.slot(owner) : nullptr;
}

std::size_t TypedLine::given(const Attempt& attempt) const noexcept {
    return static_cast<std::size_t>(formOf(attempt).requiredCount()) - attempt.missing.size();
}

std::vector<Text> TypedLine::missingWords(const Attempt& attempt) const noexcept {
    std::vector<Text> words;
    for (const Text& tag : attempt.missing) {
        const SlotRules* rules = rulesOf(attempt, tag);
        if (rules != nullptr && rules->isRequiredWord) words.push_back(tag);
    }
    return words;
}

bool TypedLine::isMeant(const Attempt& attempt) const noexcept {
    if (given(attempt) > 0 || attempt.missing.empty()) return true;
    return anyOf(attempt.near, [&](const Text& tag) {
        const SlotRules* rules = rulesOf(attempt, tag);
        return rules != nullptr && rules->isRequired;
    });
}

std::string TypedLine::labelOf(const Attempt& attempt, const Text& firstTag) const noexcept {
    const SlotRules* rules = rulesOf(attempt, firstTag);
    if (rules != nullptr) return label(*rules);
    return firstTag.empty() ? "a parameter without a name" : quoted(firstTag);
}

std::string TypedLine::typedLabel(const Attempt& attempt, const Text& firstTag) const noexcept {
    const std::vector<Text> typed = typedTags(attempt, firstTag);
    const SlotRules* rules = rulesOf(attempt, firstTag);
    const bool isOperand = rules != nullptr && rules->takes;
    return typed.empty() || isOperand ? labelOf(attempt, firstTag) : quoted(typed.back());
}

std::vector<Text> TypedLine::typedTags(const Attempt& attempt,
                                       const Text& firstTag) const noexcept {
    const Form& form = formOf(attempt);
    const Slot wanted = form.ownerOf(grammar_.vocabulary.find(firstTag));
    std::vector<Text> typed;
    Walk walk(form, grammar_.spelling);
    for (const Argument& argument : arguments_) {
        Reading reading = walk.read(argument);
        if (reading == Reading::valueMissing) {
            if (attempt.valueMissing) break;
            reading = walk.read(argument);
        }
        if (reading != Reading::accepted || walk.role() != Role::tags) continue;
        if (form.ownerOf(argument.symbol) == wanted) typed.push_back(argument.text);
        if (argument.assignment.value > 0 && form.ownerOf(argument.assignment.name) == wanted) {
            typed.emplace_back(argument.bytes().substr(0, argument.assignment.value - 1));
        }
    }
    return typed;
}

Walk TypedLine::walkToUnknown(const Attempt& attempt) const noexcept {
    Walk walk(formOf(attempt), grammar_.spelling);
    for (const Argument& argument : std::span(arguments_).first(*attempt.unknown)) {
        if (walk.read(argument) == Reading::valueMissing) {
            static_cast<void>(walk.read(argument));
        }
    }
    return walk;
}

bool TypedLine::fitsWith(const Attempt& attempt, Unknown unknown) const noexcept {
    const Argument endOfOptions("--", grammar_.vocabulary);
    Walk walk(formOf(attempt), grammar_.spelling);
    std::vector<Gift> gifts;
    walk.record(gifts);
    for (std::size_t i = 0; i < arguments_.size(); ++i) {
        if (i == *attempt.unknown) {
            if (unknown == Unknown::leftOut) continue;
            if (walk.read(endOfOptions) != Reading::accepted) return false;
        }
        if (walk.read(arguments_[i]) != Reading::accepted) return false;
    }
    const Parameters given = parametersOf(formOf(attempt), gifts);
    return walk.fits() && noneOf(given, rejection);
}

bool TypedLine::isMissedAsValue(const Attempt& attempt) const noexcept {
    return !grammar_.isExact() && fitsWith(attempt, Unknown::asValue) &&
           !fitsWith(attempt, Unknown::leftOut);
}

std::optional<Text> TypedLine::laterWord(const Attempt& attempt) const noexcept {
    const Form& form = formOf(attempt);
    for (const Argument& argument : std::span(arguments_).subspan(*attempt.unknown + 1)) {
        const Slot owner = form.ownerOf(argument.symbol);
        if (owner != noSlot && form.slot(owner).isRequiredWord) return argument.text;
    }
    return std::nullopt;
}

}  // namespace Optrella::Internal
