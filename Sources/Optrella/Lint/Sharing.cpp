#include "Optrella/Lint/Sharing.hpp"

#include "Optrella/Tool/Conditions.hpp"

namespace Optrella::Internal {

namespace {

// The parameters of one declaration that have a tag which another one owns, too.
class SharedSlots {
public:
    explicit SharedSlots(const Form& form) noexcept : form_(&form) {}

    void add(Slot slot) noexcept {
        if (slots_.contains(slot)) return;
        slots_.insert(slot);
        const SlotRules& rules = form_->slot(slot);
        if (rules.isRequired) ++required_;
        if (rules.isRequiredWord) ++requiredWords_;
    }
    [[nodiscard]] bool hasAllWords() const noexcept {
        return requiredWords_ == form_->requiredWordCount();
    }
    [[nodiscard]] bool hasEnough(Line line) const noexcept {
        if (line == Line::good) return required_ == form_->requiredCount();
        // As parse counts, one of them may be given for all.
        return required_ > 0 || form_->requiredCount() == 0;
    }

private:
    const Form* form_;
    SlotSet slots_;
    Slot required_ = 0;
    Slot requiredWords_ = 0;
};

}  // namespace

bool mayShareLine(const Grammar& grammar, const Lexicon& lexicon, const Form& left,
                  const Form& right, Line line) noexcept {
    const auto readsOtherwise = [&](const Form& form, const Form::Owner& owner) {
        const Argument& tag = lexicon[owner.tag];
        return tag.isCompound() && form.ownerOf(owner.tag) == noSlot &&
               Walk(form, grammar.spelling).read(tag) == Reading::accepted;
    };
    const auto readsTagOf = [&](const Form& form, const Form& other) {
        return anyOf(other.owners(),
                     [&](const Form::Owner& owner) { return readsOtherwise(form, owner); });
    };
    if (lexicon.hasCompounds() && (readsTagOf(left, right) || readsTagOf(right, left))) return true;
    SharedSlots ofLeft(left);
    SharedSlots ofRight(right);
    bool isShared = false;
    for (const Form::Owner& owner : left.owners()) {
        const Slot other = right.ownerOf(owner.tag);
        if (other == noSlot) continue;
        // What the one takes for a value the other may take for a tag.
        if (left.slot(owner.slot).takesValue != right.slot(other).takesValue) return true;
        isShared = true;
        ofLeft.add(owner.slot);
        ofRight.add(other);
    }
    if (grammar.isExact()) return isShared && ofLeft.hasEnough(line) && ofRight.hasEnough(line);
    // While both lack words, neither takes an operand: until then a word is a tag to both.
    if (left.requiredWordCount() > 0 && right.requiredWordCount() > 0) {
        return ofLeft.hasAllWords() || ofRight.hasAllWords();
    }
    const auto takesPlain = [](const Form& form) {
        return form.requiredWordCount() == 0 && !form.operands().empty();
    };
    return isShared || takesPlain(left) || takesPlain(right);
}

}  // namespace Optrella::Internal
