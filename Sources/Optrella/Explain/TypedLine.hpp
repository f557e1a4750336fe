// TypedLine.hpp - a line as its user typed it, for those who must speak of it.

#ifndef OPTRELLA_EXPLAIN_TYPEDLINE_HPP
#define OPTRELLA_EXPLAIN_TYPEDLINE_HPP

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Optrella/Explain.hpp"
#include "Optrella/Tool/Walk.hpp"

namespace Optrella::Internal {

class TypedLine {
public:
    // Views the grammar.
    TypedLine(const Grammar& grammar, std::span<const Text> arguments) noexcept;

    [[nodiscard]] const Grammar& grammar() const noexcept { return grammar_; }
    [[nodiscard]] const std::vector<Argument>& arguments() const noexcept { return arguments_; }
    [[nodiscard]] const Form& formOf(const Attempt& attempt) const noexcept {
        return grammar_.forms[attempt.declaration];
    }

    // Returns the parameter that a tag of the attempt chooses, or null.
    [[nodiscard]] const SlotRules* rulesOf(const Attempt& attempt, const Text& tag) const noexcept;
    // Returns how many required parameters are given, and the words that are missing.
    [[nodiscard]] std::size_t given(const Attempt& attempt) const noexcept;
    [[nodiscard]] std::vector<Text> missingWords(const Attempt& attempt) const noexcept;
    // Returns whether nothing is known to be wrong but that something is missing.
    [[nodiscard]] static bool isNothingWrong(const Attempt& attempt) noexcept {
        return !attempt.unknown && !attempt.valueMissing && attempt.repeated.empty();
    }
    // Returns whether a required parameter is given, or near to an argument, or none is needed.
    [[nodiscard]] bool isMeant(const Attempt& attempt) const noexcept;

    // Returns what a person calls a parameter: DISK for an operand, '-n' otherwise; and the same
    // for one that is given, with its tag as it was typed last.
    [[nodiscard]] std::string labelOf(const Attempt& attempt, const Text& firstTag) const noexcept;
    [[nodiscard]] std::string typedLabel(const Attempt& attempt,
                                         const Text& firstTag) const noexcept;
    // Returns the tags of a parameter as they were typed; none where they were joined.
    [[nodiscard]] std::vector<Text> typedTags(const Attempt& attempt,
                                              const Text& firstTag) const noexcept;

    // Reads up to the argument that the attempt does not know. REQUIRES: there is one.
    [[nodiscard]] Walk walkToUnknown(const Attempt& attempt) const noexcept;
    // Returns whether all is well when the argument that is not known comes after "--", and not
    // when it is left out.
    [[nodiscard]] bool isMissedAsValue(const Attempt& attempt) const noexcept;
    // Returns the required word that stands after the argument that is not known, if one does.
    [[nodiscard]] std::optional<Text> laterWord(const Attempt& attempt) const noexcept;

private:
    enum class Unknown : std::uint8_t { leftOut, asValue };
    [[nodiscard]] bool fitsWith(const Attempt& attempt, Unknown unknown) const noexcept;

    const Grammar& grammar_;
    const std::vector<Argument> arguments_;
};

}  // namespace Optrella::Internal

#endif
