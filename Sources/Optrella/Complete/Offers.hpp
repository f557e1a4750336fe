// Offers.hpp - what Complete.hpp does, for those who have read the tool's grammar already.

#ifndef OPTRELLA_COMPLETE_OFFERS_HPP
#define OPTRELLA_COMPLETE_OFFERS_HPP

#include <span>
#include <vector>

#include "Optrella/Complete.hpp"
#include "Optrella/Tool/Grammar.hpp"

namespace Optrella::Internal {

// Returns what can follow by the grammar, which may be of some declarations of the tool alone.
[[nodiscard]] std::vector<Offer> offersOf(const Tool& tool, const Grammar& grammar,
                                          std::span<const Text> before, const Text& current,
                                          Offers offers) noexcept;

}  // namespace Optrella::Internal

#endif
