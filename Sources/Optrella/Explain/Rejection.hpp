// Rejection.hpp - whether a value holds: what its kind says, and what is declared of it.

#ifndef OPTRELLA_EXPLAIN_REJECTION_HPP
#define OPTRELLA_EXPLAIN_REJECTION_HPP

#include <optional>
#include <span>
#include <vector>

#include "Optrella/Explain.hpp"
#include "Optrella/Parameters.hpp"
#include "Optrella/Tool/Walk.hpp"

namespace Optrella::Internal {

// Returns why a value that was given does not hold, or nothing: the words of the kind's validate,
// and beyond it that a number is one and within its bounds, a UUID is one, and an existing path is
// a file or a directory as declared. A choice without tags is none.
[[nodiscard]] std::optional<Text> rejection(const ParameterProtocol& given) noexcept;

// Returns all values that do not hold, in the order of the parameters.
[[nodiscard]] std::vector<RejectedValue> rejections(const Parameters& given) noexcept;

// Returns the parameters as an action is given them, in the order in which it is given them: the
// required ones, then the others, each in the order of the line.
[[nodiscard]] Parameters parametersOf(const Form& form, std::span<const Gift> gifts) noexcept;

}  // namespace Optrella::Internal

#endif
