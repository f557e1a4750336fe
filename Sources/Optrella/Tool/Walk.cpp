#include "Optrella/Tool/Walk.hpp"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "Optrella/Parameters/Decimal.hpp"

namespace Optrella::Internal {

namespace {

constexpr std::string_view endOfOptions = "--";

}  // namespace

Reading Walk::read(const Argument& argument) noexcept {
    valued_ = noSlot;
    if (isExact_) return readExactly(argument);
    if (state_.rest != noSlot) {
        giveWithValue(state_.rest, argument.text);
        return accept(Role::rest);
    }
    if (state_.due != noSlot) return readOptionValue(argument);
    if (state_.isPlain) return readPlain(argument);
    if (argument.text == endOfOptions) {
        state_.isPlain = true;
        return accept(Role::endOfOptions);
    }
    const Slot owner = form_->ownerOf(argument.symbol);
    if (owner != noSlot && argument.isOptionLike) {
        await(owner, state_.due, dueGift_);
        return accept(Role::tags);
    }
    if (owner != noSlot && state_.waiting == noSlot) {
        await(owner, state_.waiting, waitingGift_);
        return accept(Role::tags);
    }
    return argument.isOptionLike ? readOption(argument) : readPlain(argument);
}

Reading Walk::readExactly(const Argument& argument) noexcept {
    if (state_.due != noSlot) return readOptionValue(argument);
    const Slot owner = form_->ownerOf(argument.symbol);
    if (owner == noSlot) return Reading::notKnown;
    await(owner, state_.due, dueGift_);
    return accept(Role::tags);
}

Reading Walk::readOptionValue(const Argument& argument) noexcept {
    const Slot due = std::exchange(state_.due, noSlot);
    if (!isExact_ && !mayBeValue(argument)) return Reading::valueMissing;
    fill(due, dueGift_, argument.text);
    return accept(Role::optionValue);
}

// What is written as an option and is none of the tags.
Reading Walk::readOption(const Argument& argument) noexcept {
    if (argument.assignment.value > 0) return readAssignment(argument);
    if (argument.letters.empty()) return readOther(argument);
    // With one dash more it is a tag: then the dash was forgotten, and nothing was joined.
    if (form_->ownerOf(argument.withSecondDash) != noSlot) return readOther(argument);
    return readLetters(argument);
}

Reading Walk::readAssignment(const Argument& argument) noexcept {
    const Slot owner = form_->ownerOf(argument.assignment.name);
    if (owner == noSlot) return readOther(argument);
    if (!form_->slot(owner).takesValue) return Reading::takesNoValue;
    giveWithPart(owner, argument.bytes().substr(argument.assignment.value));
    return accept(Role::tags);
}

// All of them, or none.
Reading Walk::readLetters(const Argument& argument) noexcept {
    const auto isNoFlag = [this](const Argument::Letter& letter) {
        const Slot owner = form_->ownerOf(letter.option);
        return owner == noSlot || form_->slot(owner).takesValue;
    };
    const auto end = argument.letters.end();
    const auto last = std::find_if(argument.letters.begin(), end, isNoFlag);
    const Slot valued = last == end ? noSlot : form_->ownerOf(last->option);
    const std::string_view value = last == end ? "" : argument.bytes().substr(last->end);
    if (last != end && (valued == noSlot || value.starts_with('='))) return readOther(argument);
    for (auto flag = argument.letters.begin(); flag != last; ++flag) {
        give(form_->ownerOf(flag->option));
    }
    if (!value.empty()) {
        giveWithPart(valued, value);
    } else if (last != end) {
        await(valued, state_.due, dueGift_);
    }
    return accept(Role::tags);
}

// A negative number is the one value that may look like an option.
Reading Walk::readOther(const Argument& argument) noexcept {
    return isDueNumber(argument) ? readPlain(argument) : Reading::notKnown;
}

Reading Walk::readPlain(const Argument& argument) noexcept {
    const Slot taker = takerOfPlain();
    if (taker == noSlot) return Reading::notKnown;
    if (taker == state_.waiting) {
        state_.waiting = noSlot;
        fill(taker, waitingGift_, argument.text);
    } else {
        if (form_->slot(taker).takes == Takes::rest) state_.rest = taker;
        giveWithValue(taker, argument.text);
    }
    return accept(state_.rest == noSlot ? Role::plainValue : Role::rest);
}

Slot Walk::takerOfPlain() const noexcept {
    if (state_.waiting != noSlot) return state_.waiting;
    if (state_.requiredWordsGiven < form_->requiredWordCount()) return noSlot;
    const auto operands = form_->operands();
    const auto next = std::find_if(operands.begin(), operands.end(),
                                   [this](Slot slot) { return !state_.given.contains(slot); });
    if (next != operands.end()) return *next;
    if (operands.empty() || form_->slot(operands.back()).takes == Takes::one) return noSlot;
    return operands.back();
}

bool Walk::mayBeValue(const Argument& argument) const noexcept {
    if (argument.text == endOfOptions || argument.text == "--help") return false;
    const bool beginsWithDash = argument.bytes().starts_with('-');
    return !beginsWithDash || form_->ownerOf(argument.symbol) == noSlot;
}

bool Walk::isDueNumber(const Argument& argument) const noexcept {
    const Slot taker = takerOfPlain();
    if (taker == noSlot) return false;
    const auto* number = form_->slot(taker).parameter.as<ParameterNumber>();
    if (number == nullptr) return false;
    const std::optional<std::int64_t> value = decimal(argument.text);
    return value && *value >= number->rangeMin() && *value <= number->rangeMax();
}

bool Walk::fits() const noexcept {
    if (valueMissing() != noSlot) return false;
    if (isExact_) return state_.requiredGifts == form_->requiredCount();
    const Slot count = static_cast<Slot>(form_->slots().size());
    for (Slot slot = 0; slot < count; ++slot) {
        if (slot < form_->requiredCount() && !state_.given.contains(slot)) return false;
        if (isGivenTooOften(slot)) return false;
    }
    return true;
}

bool Walk::isGivenTooOften(Slot slot) const noexcept {
    if (!state_.again.contains(slot)) return false;
    const SlotRules& rules = form_->slot(slot);
    return (rules.isRequired || rules.takesValue) && !rules.mayRepeat;
}

Reading Walk::accept(Role role) noexcept {
    role_ = role;
    return Reading::accepted;
}

void Walk::give(Slot slot) noexcept {
    const bool isFirst = !state_.given.contains(slot);
    (isFirst ? state_.given : state_.again).insert(slot);
    const SlotRules& rules = form_->slot(slot);
    if (rules.isRequired) ++state_.requiredGifts;
    if (isFirst && rules.isRequiredWord) ++state_.requiredWordsGiven;
    if (gifts_ != nullptr) gifts_->push_back({slot, Text()});
}

void Walk::giveWithValue(Slot slot, const Text& value) noexcept {
    give(slot);
    fill(slot, gifts_ != nullptr ? gifts_->size() - 1 : 0, value);
}

// The value is a part of an argument: it is copied only for those who keep it.
void Walk::giveWithPart(Slot slot, std::string_view value) noexcept {
    give(slot);
    valued_ = slot;
    value_ = value;
    if (gifts_ != nullptr) gifts_->back().value = value;
}

void Walk::fill(Slot slot, std::size_t gift, const Text& value) noexcept {
    valued_ = slot;
    value_ = value;
    if (gifts_ != nullptr) (*gifts_)[gift].value = value;
}

// A tag has been read: its value, if it takes one, will come where it says.
void Walk::await(Slot slot, Slot& place, std::size_t& gift) noexcept {
    give(slot);
    if (!form_->slot(slot).takesValue) return;
    place = slot;
    if (gifts_ != nullptr) gift = gifts_->size() - 1;
}

}  // namespace Optrella::Internal
