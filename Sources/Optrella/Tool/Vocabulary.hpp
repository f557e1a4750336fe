// Vocabulary.hpp - numbers for texts, so that equal ones are compared once.

#ifndef OPTRELLA_TOOL_VOCABULARY_HPP
#define OPTRELLA_TOOL_VOCABULARY_HPP

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Optrella/Text.hpp"

namespace Optrella::Internal {

// Stands for a text and all that equal it.
using Symbol = std::int32_t;

class Vocabulary {
public:
    static constexpr Symbol unknown = -1;

    // Returns the symbol of a text: that of an equal one, or the next one.
    Symbol add(const Text& text) noexcept;
    // Returns `unknown` for a text that equals none of them.
    [[nodiscard]] Symbol find(const Text& text) const noexcept;

    // Returns the text that came first. REQUIRES: a symbol.
    [[nodiscard]] const Text& text(Symbol symbol) const noexcept {
        return texts_[static_cast<std::size_t>(symbol)];
    }
    [[nodiscard]] Symbol size() const noexcept { return static_cast<Symbol>(texts_.size()); }

private:
    [[nodiscard]] std::size_t placeOf(const Text& text, std::size_t hash) const noexcept;
    void grow() noexcept;

    std::vector<Text> texts_;
    std::vector<std::size_t> hashes_;  // of the texts
    // Where a text is looked for from the place of its hash on; a power of two, half of it empty.
    std::vector<Symbol> table_;
};

}  // namespace Optrella::Internal

#endif
