// Rivals.hpp - all declarations after the beginning of a line, and which of them a word leaves.

#ifndef OPTRELLA_TOOL_RIVALS_HPP
#define OPTRELLA_TOOL_RIVALS_HPP

#include <cstddef>
#include <span>
#include <vector>

#include "Optrella/Tool/LineSearch.hpp"

namespace Optrella::Internal {

// What a declaration takes a word for.
struct Use {
    enum class As : std::uint8_t { tag, value };

    As as;
    Slot slot;  // of this parameter
};

class Rivals {
public:
    // Reads the beginning for every declaration. Views the forms of the grammar, and the lexicon.
    Rivals(const Grammar& grammar, const Lexicon& lexicon, std::span<const Text> before) noexcept;

    // Returns those that are not hidden and that a good line may still fit, as declared.
    [[nodiscard]] const std::vector<Contender>& candidates() const noexcept { return candidates_; }

    // Returns whether a line that goes on with the word fits the candidate well and no other
    // declaration, when the candidate uses the word so. True when that is not decided within the
    // limit.
    [[nodiscard]] bool leadsOn(const Contender& candidate, Symbol word, Use use) const noexcept;

private:
    [[nodiscard]] std::vector<Contender> others(const Contender& candidate,
                                                Symbol word) const noexcept;

    const Lexicon* lexicon_;
    std::vector<Contender> candidates_;
    std::vector<Contender> all_;       // that the line may still fit, hidden ones too
    std::vector<std::size_t> takers_;  // of them those that may read what is none of their tags
    // For each tag its owners among them; both as places in all_.
    std::vector<std::vector<std::size_t>> owners_;
};

}  // namespace Optrella::Internal

#endif
