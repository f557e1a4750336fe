// Problem.hpp - what is wrong with a line, in a sentence.

#ifndef OPTRELLA_EXPLAIN_PROBLEM_HPP
#define OPTRELLA_EXPLAIN_PROBLEM_HPP

#include <string>
#include <string_view>
#include <vector>

#include "Optrella/Explain/TypedLine.hpp"

namespace Optrella::Internal {

// Returns the first thing that is wrong with the attempt, but for what is missing.
// REQUIRES: something is.
[[nodiscard]] std::string problemOf(const TypedLine& line, const Attempt& attempt) noexcept;

// Returns why a value does not hold, and what may have been meant.
[[nodiscard]] std::string problemOf(const TypedLine& line, const Attempt& fit,
                                    const RejectedValue& rejected) noexcept;

// Returns "a", "a or b", "a, b or c".
[[nodiscard]] std::string listed(const std::vector<std::string>& items,
                                 std::string_view conjunction) noexcept;

}  // namespace Optrella::Internal

#endif
