// Grammar.hpp - the declarations of a tool, as they are read: who owns which tag, and what is an
// operand.

#ifndef OPTRELLA_TOOL_GRAMMAR_HPP
#define OPTRELLA_TOOL_GRAMMAR_HPP

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "Optrella/CommandLine/Declaration.hpp"
#include "Optrella/Tool.hpp"
#include "Optrella/Tool/Vocabulary.hpp"

namespace Optrella::Internal {

// The place of a parameter in its declaration, required ones first.
using Slot = std::int32_t;
inline constexpr Slot noSlot = -1;

// A declared parameter, and what the tool says of it.
struct SlotRules {
    ParameterView parameter;
    bool isRequired;
    bool takesValue;
    bool isRequiredWord;            // a flag that names the command, or a part of its name
    std::optional<Takes> takes;     // of an operand
    bool mayRepeat = false;         // although it is required, or takes a value
    std::vector<Symbol> choices{};  // the first tags of a list's options

    [[nodiscard]] const Tags& tags() const noexcept { return parameter.common().tags; }
    // Returns the empty text when there is none.
    [[nodiscard]] Text firstTag() const noexcept {
        return tags().empty() ? Text() : tags().front();
    }
};

// A declaration.
class Form {
public:
    Form(const CommandLinePossibility& declaration, Vocabulary& vocabulary) noexcept;
    // Applies what the tool says beside its declarations. REQUIRES: in their order.
    void addOperand(Symbol firstTag, Takes takes) noexcept;
    void addRepeated(Symbol firstTag) noexcept;

    [[nodiscard]] std::span<const SlotRules> slots() const noexcept { return slots_; }
    [[nodiscard]] const SlotRules& slot(Slot place) const noexcept {
        return slots_[static_cast<std::size_t>(place)];
    }
    [[nodiscard]] Slot requiredCount() const noexcept { return requiredCount_; }
    [[nodiscard]] Slot requiredWordCount() const noexcept { return requiredWordCount_; }
    [[nodiscard]] std::span<const Slot> operands() const noexcept { return operands_; }
    [[nodiscard]] bool requiresRoot() const noexcept { return requiresRoot_; }
    [[nodiscard]] bool isHidden() const noexcept { return isHidden_; }

    // Returns the parameter that a tag chooses, noSlot when there is none: the last one that has
    // it, of the required ones first.
    [[nodiscard]] Slot ownerOf(Symbol tag) const noexcept;
    // Returns the tags that choose a parameter, in no order.
    struct Owner {
        Symbol tag;
        Slot slot;
    };
    [[nodiscard]] std::span<const Owner> owners() const noexcept { return owners_; }

private:
    void add(const KeptParameter& parameter, bool isRequired, Vocabulary& vocabulary) noexcept;
    void sortOwners() noexcept;
    [[nodiscard]] Slot ownerOfValue(Symbol firstTag) const noexcept;

    std::vector<SlotRules> slots_;
    std::vector<Owner> owners_;  // by their tags
    std::vector<Slot> operands_;
    Slot requiredCount_ = 0;
    Slot requiredWordCount_ = 0;
    bool requiresRoot_;
    bool isHidden_;
};

// The declarations of a tool. Views them.
struct Grammar {
    explicit Grammar(const Tool& tool) noexcept : Grammar(tool, tool.spelling) {}
    // Whatever the tool says of its spelling.
    Grammar(const Tool& tool, Spelling readAs) noexcept;
    // Of some of the declarations, in their order.
    Grammar(const Tool& tool, Spelling readAs,
            std::span<const CommandLinePossibility* const> declarations) noexcept;

    [[nodiscard]] bool isExact() const noexcept { return spelling == Spelling::exact; }

    Spelling spelling;
    Vocabulary vocabulary;  // tags, and the first tags of choices
    std::vector<Form> forms;

private:
    void addWhatTheToolSays(const Tool& tool) noexcept;
};

// Returns whether the parameter's first tag is a word.
[[nodiscard]] bool isWord(const Tags& tags) noexcept;

}  // namespace Optrella::Internal

#endif
