#include "Optrella/Tool/Contender.hpp"

#include "Optrella/Tool/Conditions.hpp"

namespace Optrella::Internal {

bool Contender::read(const Argument& argument) noexcept {
    if (walk_.read(argument) != Reading::accepted || isTooOften()) return false;
    return !isGood_ || holdsChoice();
}

bool Contender::isTooOften() const noexcept {
    const WalkState& state = walk_.state();
    if (walk_.isExact() && !isGood_) return state.requiredGifts > form().requiredCount();
    if (state.again.empty()) return false;
    const auto count = static_cast<Slot>(form().slots().size());
    for (Slot slot = 0; slot < count; ++slot) {
        if (isGood_ ? state.again.contains(slot) && !form().slot(slot).mayRepeat
                    : walk_.isGivenTooOften(slot)) {
            return true;
        }
    }
    return false;
}

bool Contender::holdsChoice() const noexcept {
    if (walk_.valued() == noSlot) return true;
    const auto* list = form().slot(walk_.valued()).parameter.as<ParameterList>();
    if (list == nullptr) return true;
    return anyOf(list->validOptions(), [this](const ParameterNone& option) {
        return !option.common.tags.empty() && option.common.tags.front() == walk_.value();
    });
}

bool Contender::fits() const noexcept {
    if (!walk_.fits()) return false;
    if (!isGood_ || !walk_.isExact()) return true;
    for (Slot slot = 0; slot < form().requiredCount(); ++slot) {
        if (!walk_.state().given.contains(slot)) return false;
    }
    return true;
}

bool Contender::takesWords() const noexcept {
    const WalkState& state = walk_.state();
    return state.due != noSlot || state.rest != noSlot ||
           (!walk_.isExact() && walk_.takerOfPlain() != noSlot);
}

bool Contender::mayGive(Slot slot) const noexcept {
    if (!walk_.state().given.contains(slot)) return true;
    const SlotRules& rules = form().slot(slot);
    if (rules.mayRepeat) return true;
    if (isGood_) return false;
    return walk_.isExact() || !(rules.isRequired || rules.takesValue);
}

void Contender::appendState(std::string& key) const noexcept {
    const WalkState& state = walk_.state();
    for (const Slot part :
         {static_cast<Slot>(declaration_), state.due, state.waiting, state.rest}) {
        key.append(reinterpret_cast<const char*>(&part), sizeof part);
    }
    key += state.isPlain ? 'p' : '-';
}

void Contender::appendKey(std::string& key) const noexcept {
    appendState(key);
    const WalkState& state = walk_.state();
    if (walk_.isExact() && !isGood_) {
        key += std::to_string(std::int64_t{state.requiredGifts});
        return;
    }
    for (Slot slot = 0; slot < static_cast<Slot>(form().slots().size()); ++slot) {
        const SlotRules& rules = form().slot(slot);
        // A flag that need not be given may be given as often as one likes.
        const bool isFree = !isGood_ && !rules.isRequired && !rules.takesValue;
        if (!isFree) key += state.given.contains(slot) ? '1' : '0';
    }
}

void Contender::appendEssence(std::string& key) const noexcept {
    appendState(key);
    const WalkState& state = walk_.state();
    if (walk_.isExact() && !isGood_) key += std::to_string(std::int64_t{state.requiredGifts});
    for (Slot slot = 0; slot < static_cast<Slot>(form().slots().size()); ++slot) {
        const SlotRules& rules = form().slot(slot);
        if (rules.isRequired || rules.takes) key += state.given.contains(slot) ? '1' : '0';
    }
}

}  // namespace Optrella::Internal
