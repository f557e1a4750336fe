// Sharing.hpp - whether one line may fit two declarations, at a glance.

#ifndef OPTRELLA_LINT_SHARING_HPP
#define OPTRELLA_LINT_SHARING_HPP

#include "Optrella/Tool/LineSearch.hpp"

namespace Optrella::Internal {

// Returns false when no such line fits both declarations, as far as a glance at them can tell.
[[nodiscard]] bool mayShareLine(const Grammar& grammar, const Lexicon& lexicon, const Form& left,
                                const Form& right, Line line) noexcept;

}  // namespace Optrella::Internal

#endif
