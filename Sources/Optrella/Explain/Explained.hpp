// Explained.hpp - what Explain.hpp does, for those who have read the tool's grammar already.

#ifndef OPTRELLA_EXPLAIN_EXPLAINED_HPP
#define OPTRELLA_EXPLAIN_EXPLAINED_HPP

#include <cstddef>
#include <span>
#include <vector>

#include "Optrella/Explain.hpp"
#include "Optrella/Tool/Grammar.hpp"

namespace Optrella::Internal {

// Explains a line in the grammar's spelling. REQUIRES: a grammar of all declarations.
[[nodiscard]] Explanation explained(const Grammar& grammar,
                                    std::span<const Text> arguments) noexcept;

// Returns it in words, in the name of a tool.
[[nodiscard]] std::vector<Text> inWords(const Text& name, const Grammar& grammar,
                                        std::span<const Text> arguments,
                                        const Explanation& explanation, std::size_t width) noexcept;

}  // namespace Optrella::Internal

#endif
