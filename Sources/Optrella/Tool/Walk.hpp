// Walk.hpp - reads a line for one declaration, argument by argument, in either spelling.

#ifndef OPTRELLA_TOOL_WALK_HPP
#define OPTRELLA_TOOL_WALK_HPP

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "Optrella/Tool/Argument.hpp"
#include "Optrella/Tool/Grammar.hpp"
#include "Optrella/Tool/SlotSet.hpp"

namespace Optrella::Internal {

// What became of an argument.
enum class Reading : std::uint8_t {
    accepted,
    notKnown,      // the declaration has no use for it
    takesNoValue,  // "--flag=value"
    valueMissing,  // it stands where the value of the option before it belongs
};

// What a declaration takes an accepted argument for.
enum class Role : std::uint8_t {
    tags,         // one, or several that are joined; with a value that is joined to the last
    optionValue,  // the value of the option before it; as parse reads, of any tag
    plainValue,   // the value of a word, or an operand
    rest,         // a part of an operand that takes the rest
    endOfOptions,
};

// A parameter that a line gives.
struct Gift {
    Slot slot;
    Text value;  // empty for a flag
};

// Where the reading of a line stands.
struct WalkState {
    SlotSet given;                // as soon as the tag is read
    SlotSet again;                // more than once
    Slot requiredGifts = 0;       // with those that are given again
    Slot requiredWordsGiven = 0;  // each once
    Slot due = noSlot;            // the next argument is its value
    Slot waiting = noSlot;        // the next plain argument is its value
    bool isPlain = false;         // no more options
    Slot rest = noSlot;           // takes all further arguments
};

class Walk {
public:
    // Begins a line. Views the declaration.
    Walk(const Form& form, Spelling spelling) noexcept
        : form_(&form), isExact_(spelling == Spelling::exact) {}

    // Appends what the line gives to `gifts`, in the order of the tags.
    void record(std::vector<Gift>& gifts) noexcept { gifts_ = &gifts; }

    // Reads the next argument. What is not accepted changes nothing, but that an option waits for
    // its value no more: one may read it again then, and go on.
    Reading read(const Argument& argument) noexcept;
    // Return what the argument was taken for that was accepted last, and the parameter that it gave
    // a value to, with the value, or noSlot. The value views the argument.
    [[nodiscard]] Role role() const noexcept { return role_; }
    [[nodiscard]] Slot valued() const noexcept { return valued_; }
    [[nodiscard]] std::string_view value() const noexcept { return value_; }

    // Returns the parameter whose value is missing when the line ends here, or noSlot.
    [[nodiscard]] Slot valueMissing() const noexcept {
        return state_.due != noSlot ? state_.due : state_.waiting;
    }
    // Returns whether the line may end here: in the exact spelling when it has as many required
    // gifts as there are required parameters, as parse counts.
    [[nodiscard]] bool fits() const noexcept;
    // Returns the parameter that would take the next plain argument, or noSlot.
    [[nodiscard]] Slot takerOfPlain() const noexcept;
    // Returns whether the parameter was given more often than the conventional spelling allows.
    [[nodiscard]] bool isGivenTooOften(Slot slot) const noexcept;

    [[nodiscard]] const Form& form() const noexcept { return *form_; }
    [[nodiscard]] bool isExact() const noexcept { return isExact_; }
    [[nodiscard]] const WalkState& state() const noexcept { return state_; }

private:
    Reading readExactly(const Argument& argument) noexcept;
    Reading readOptionValue(const Argument& argument) noexcept;
    Reading readOption(const Argument& argument) noexcept;
    Reading readAssignment(const Argument& argument) noexcept;
    Reading readLetters(const Argument& argument) noexcept;
    Reading readPlain(const Argument& argument) noexcept;
    Reading readOther(const Argument& argument) noexcept;
    [[nodiscard]] bool mayBeValue(const Argument& argument) const noexcept;
    [[nodiscard]] bool isDueNumber(const Argument& argument) const noexcept;
    Reading accept(Role role) noexcept;
    void give(Slot slot) noexcept;
    void giveWithValue(Slot slot, const Text& value) noexcept;
    void giveWithPart(Slot slot, std::string_view value) noexcept;
    void fill(Slot slot, std::size_t gift, const Text& value) noexcept;
    void await(Slot slot, Slot& place, std::size_t& gift) noexcept;

    const Form* form_;
    bool isExact_;
    Role role_ = Role::tags;
    Slot valued_ = noSlot;
    std::string_view value_;
    WalkState state_;
    std::vector<Gift>* gifts_ = nullptr;
    std::size_t dueGift_ = 0;  // whose values will come
    std::size_t waitingGift_ = 0;
};

}  // namespace Optrella::Internal

#endif
