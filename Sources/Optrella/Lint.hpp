// Lint.hpp - what the declarations of a tool prove about themselves, for a test of the tool's own.
//
//     EXPECT_EQ(lint(tool), Findings());

#ifndef OPTRELLA_LINT_HPP
#define OPTRELLA_LINT_HPP

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "Optrella/Export.hpp"
#include "Optrella/Text.hpp"
#include "Optrella/Tool.hpp"

namespace Optrella {

// What is found. A plain line is one of tags, choices and other words that do not begin with a
// dash, without `--`, `=` and joined options.
enum class Rule : std::uint8_t {
    collision,    // a plain line fits two declarations, with nothing missing, nothing twice
    unreachable,  // each plain line that fits the declaration fits another one, or there is none
    masked,       // exact spelling: a line fits although a required parameter is missing
    shadowed,     // a tag can never be chosen
    untagged,     // a parameter or an option of a list has no tag, or an empty one
    choiceless,   // a list has no options, or two with one first tag
    bounds,       // a number's least is above its greatest
    operand,      // an operand, repeated parameter or completer that cannot be one
    swallows,     // a declaration of operands alone takes mistyped commands
    unprintable,  // a tag, name or help text holds what a terminal does not show; a tag, spaces
    reserved,     // a tag hides one that every tool has
};

// How sure it is that something must be changed.
enum class Severity : std::uint8_t { error, warning, note };

// Return the name of a case: rawValue(Rule::masked) == "masked". STOPS the process when the value
// is no case.
[[nodiscard]] OPTRELLA_API Text rawValue(Rule rule) noexcept;
[[nodiscard]] OPTRELLA_API Text rawValue(Severity severity) noexcept;

// Something that is wrong, or may be.
struct OPTRELLA_API Finding {
    Rule rule = Rule::collision;                 // what is found
    Severity severity = Severity::error;         // as its rule says
    std::vector<std::size_t> declarations{};     // that are concerned: their indices
    std::vector<Text> parameters{};              // that are concerned: their tags
    std::optional<std::vector<Text>> witness{};  // a line that shows it, a shortest one
    Text sentence = "";                          // all of it in words; counts from 0

    // Compares all of it.
    friend bool operator==(const Finding&, const Finding&) = default;
};

// None, where all is well.
using Findings = std::vector<Finding>;

// Which findings are returned.
enum class Notes : std::uint8_t { leftOut, included };

// Returns what is wrong with the declarations in the spelling of the tool, in the order of the
// rules; at most 100 of each. A collision is found once for each pair, and is exact, as is what is
// unreachable: what 100,000 steps do not decide, of a pair or a declaration, is not reported.
[[nodiscard]] OPTRELLA_API Findings lint(const Tool& tool, Notes notes = Notes::leftOut) noexcept;

// Writes the rule, the severity and the sentence: what a failed test shows. Include the stream's
// own header to use it.
template <class Traits>
std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& stream,
                                             const Finding& finding) {
    return stream << rawValue(finding.severity) << " (" << rawValue(finding.rule)
                  << "): " << finding.sentence;
}

}  // namespace Optrella

#endif
