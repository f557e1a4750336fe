#include "Optrella/Tool/Grammar.hpp"

#include <algorithm>

#include "Optrella/Tool/Argument.hpp"

namespace Optrella::Internal {

bool isWord(const Tags& tags) noexcept { return !tags.empty() && !looksLikeOption(tags.front()); }

Form::Form(const CommandLinePossibility& declaration, Vocabulary& vocabulary) noexcept
    : requiresRoot_(Declaration::requiresRoot(declaration)),
      isHidden_(Declaration::hidden(declaration)) {
    const KeptList required = Declaration::required(declaration);
    const KeptList optional = Declaration::optional(declaration);
    slots_.reserve(required.size() + optional.size());
    for (const KeptParameter& each : required) add(each, true, vocabulary);
    requiredCount_ = static_cast<Slot>(slots_.size());
    for (const KeptParameter& each : optional) add(each, false, vocabulary);
    sortOwners();
}

void Form::add(const KeptParameter& parameter, bool isRequired, Vocabulary& vocabulary) noexcept {
    const auto place = static_cast<Slot>(slots_.size());
    const commonDetails& common = parameter.common();
    const bool isRequiredWord = isRequired && !common.hasParameter && isWord(common.tags);
    slots_.push_back({static_cast<const ParameterView&>(parameter),
                      isRequired,
                      common.hasParameter,
                      isRequiredWord,
                      {}});
    if (isRequiredWord) ++requiredWordCount_;
    for (const Text& tag : common.tags) owners_.push_back({vocabulary.add(tag), place});
    if (const auto* list = parameter.as<ParameterList>()) {
        for (const ParameterNone& option : list->validOptions()) {
            if (option.common.tags.empty()) continue;
            slots_.back().choices.push_back(vocabulary.add(option.common.tags.front()));
        }
    }
}

// Of several owners of a tag only one is kept.
void Form::sortOwners() noexcept {
    const auto isBefore = [this](const Owner& left, const Owner& right) {
        if (left.tag != right.tag) return left.tag < right.tag;
        const bool isLeftRequired = left.slot < requiredCount_;
        const bool isRightRequired = right.slot < requiredCount_;
        if (isLeftRequired != isRightRequired) return isLeftRequired;
        return left.slot > right.slot;
    };
    std::sort(owners_.begin(), owners_.end(), isBefore);
    const auto end = std::unique(owners_.begin(), owners_.end(),
                                 [](const Owner& l, const Owner& r) { return l.tag == r.tag; });
    owners_.erase(end, owners_.end());
}

Slot Form::ownerOf(Symbol tag) const noexcept {
    if (tag == Vocabulary::unknown) return noSlot;
    const auto found =
        std::lower_bound(owners_.begin(), owners_.end(), tag,
                         [](const Owner& owner, Symbol of) { return owner.tag < of; });
    return found != owners_.end() && found->tag == tag ? found->slot : noSlot;
}

Slot Form::ownerOfValue(Symbol firstTag) const noexcept {
    const Slot owner = ownerOf(firstTag);
    return owner != noSlot && slot(owner).takesValue ? owner : noSlot;
}

void Form::addOperand(Symbol firstTag, Takes takes) noexcept {
    const Slot owner = ownerOfValue(firstTag);
    if (owner == noSlot) return;
    SlotRules& rules = slots_[static_cast<std::size_t>(owner)];
    if (rules.takes) return;
    operands_.push_back(owner);
    rules.takes = takes;
    if (takes != Takes::one) rules.mayRepeat = true;
}

void Form::addRepeated(Symbol firstTag) noexcept {
    const Slot owner = ownerOfValue(firstTag);
    if (owner != noSlot) slots_[static_cast<std::size_t>(owner)].mayRepeat = true;
}

Grammar::Grammar(const Tool& tool, Spelling readAs) noexcept : spelling(readAs) {
    forms.reserve(tool.commandLines.size());
    for (const CommandLinePossibility& each : tool.commandLines)
        forms.emplace_back(each, vocabulary);
    addWhatTheToolSays(tool);
}

Grammar::Grammar(const Tool& tool, Spelling readAs,
                 std::span<const CommandLinePossibility* const> declarations) noexcept
    : spelling(readAs) {
    forms.reserve(declarations.size());
    for (const CommandLinePossibility* each : declarations) forms.emplace_back(*each, vocabulary);
    addWhatTheToolSays(tool);
}

void Grammar::addWhatTheToolSays(const Tool& tool) noexcept {
    // As parse reads, neither means anything.
    if (isExact()) return;
    for (const Operand& operand : tool.operands) {
        if (!operand.firstTag()) continue;
        const Symbol tag = vocabulary.find(*operand.firstTag());
        for (Form& form : forms) form.addOperand(tag, operand.takes());
    }
    for (const Repeated& repeated : tool.repeated) {
        if (!repeated.firstTag()) continue;
        const Symbol tag = vocabulary.find(*repeated.firstTag());
        for (Form& form : forms) form.addRepeated(tag);
    }
}

}  // namespace Optrella::Internal
