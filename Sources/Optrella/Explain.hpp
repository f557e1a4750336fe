// Explain.hpp - why a command line fits or does not, and what to type instead.
//
// An explanation is data; `words` says it in the lines that a person would want to see. Neither
// runs an action or prints. The values of the one declaration that fits are judged, which may ask
// the file system.

#ifndef OPTRELLA_EXPLAIN_HPP
#define OPTRELLA_EXPLAIN_HPP

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "Optrella/CommandLine.hpp"
#include "Optrella/Export.hpp"
#include "Optrella/Text.hpp"
#include "Optrella/Tool.hpp"

namespace Optrella {

// Why a declaration does not know an argument.
enum class UnknownArgument : std::uint8_t {
    notACommand,   // none of the declaration's required tags is given, or near to an argument
    notKnown,      // an option that it does not have, or a mistyped word
    notExpected,   // one value too many
    takesNoValue,  // "--flag=value"
};

// A value that the parameter does not take.
struct OPTRELLA_API RejectedValue {
    Text parameter;  // its first tag; empty when it has none
    Text value;      // as it was given
    Text message;    // why: what the kind's validate says, or what is declared and does not hold

    // Compares all of it.
    friend bool operator==(const RejectedValue&, const RejectedValue&) = default;
};

// How far a declaration can read the arguments. Tags name parameters: the first tag of each.
struct OPTRELLA_API Attempt {
    std::size_t declaration = 0;            // its index
    bool fits = false;                      // whether the arguments fit it
    std::size_t accepted = 0;               // how many arguments it reads, from the first one on
    std::optional<std::size_t> unknown{};   // the place of the argument that it does not know
    std::optional<UnknownArgument> why{};   // of that argument
    std::optional<Text> valueMissing{};     // the parameter whose value is missing
    std::vector<Text> missing{};            // required parameters that are not given
    std::vector<Text> repeated{};           // parameters that are given too often
    std::vector<RejectedValue> rejected{};  // values that do not hold
    std::vector<Text> near{};               // tags that may have been meant, nearest first

    // Compares all of it.
    friend bool operator==(const Attempt&, const Attempt&) = default;
};

// What becomes of a command line.
enum class Outcome : std::uint8_t {
    runs,              // one declaration fits, and its values hold; it may need root
    nothingGiven,      // no arguments, and not exactly one declaration that needs none
    nothingFits,       // no declaration fits
    severalFit,        // more than one does, so that none runs
    parameterMissing,  // exact spelling: one fits by the count, though a required one is missing
    valueRejected,     // one fits, and a value does not hold
};

// What explain returns.
struct OPTRELLA_API Explanation {
    Outcome outcome = Outcome::nothingGiven;  // of all declarations together
    bool needsRoot = false;                   // the one declaration that fits does
    std::vector<Attempt> attempts{};          // nearest first; hidden ones only when they are meant

    // Compares all of it.
    friend bool operator==(const Explanation&, const Explanation&) = default;
};

// Explains a command line: the arguments without the program name, or the argument vector with it.
[[nodiscard]] OPTRELLA_API Explanation explain(const Tool& tool, ArgumentList arguments) noexcept;
[[nodiscard]] OPTRELLA_API Explanation explain(const Tool& tool, int argc,
                                               const char* const* argv) noexcept;

// Returns the same in lines for a person, each beginning with the tool's name; none when the
// outcome is `runs`. A usage that is wider than `width` columns is shortened.
// REQUIRES: what `explain` returned for this tool and these arguments.
[[nodiscard]] OPTRELLA_API std::vector<Text> words(const Tool& tool, ArgumentList arguments,
                                                   const Explanation& explanation,
                                                   std::size_t width = 80) noexcept;
[[nodiscard]] OPTRELLA_API std::vector<Text> words(const Tool& tool, int argc,
                                                   const char* const* argv,
                                                   const Explanation& explanation,
                                                   std::size_t width = 80) noexcept;

}  // namespace Optrella

#endif
