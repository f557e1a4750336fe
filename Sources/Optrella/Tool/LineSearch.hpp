// LineSearch.hpp - looks for a line that some declarations can read and others cannot.

#ifndef OPTRELLA_TOOL_LINESEARCH_HPP
#define OPTRELLA_TOOL_LINESEARCH_HPP

#include <cstddef>
#include <optional>
#include <vector>

#include "Optrella/Tool/Contender.hpp"

namespace Optrella::Internal {

// The words that a searched line is made of: each tag and choice of the tool, and one word that is
// neither and does not begin with a dash. One such word stands for all of them.
class Lexicon {
public:
    explicit Lexicon(const Grammar& grammar) noexcept;

    [[nodiscard]] const Argument& free() const noexcept { return free_; }
    [[nodiscard]] const Argument& operator[](Symbol symbol) const noexcept {
        return symbol == Vocabulary::unknown ? free_ : known_[static_cast<std::size_t>(symbol)];
    }
    // Returns false for what no searched line holds: the end of the options.
    [[nodiscard]] bool mayStand(Symbol symbol) const noexcept {
        return isExact_ || (*this)[symbol].text != "--";
    }
    // Returns whether a word of the tool may be read as something else than a tag.
    [[nodiscard]] bool hasCompounds() const noexcept { return hasCompounds_; }
    // Returns the words that may make a difference to one of the contenders: of those that make the
    // same difference to none, one is enough.
    [[nodiscard]] std::vector<Symbol> of(const std::vector<Contender>& contenders) const noexcept;

private:
    std::vector<Argument> known_;
    Argument free_;
    bool isExact_;
    bool hasCompounds_ = false;
    std::vector<Symbol> options_;   // written as options are
    std::vector<Symbol> oddities_;  // and may be read as something else than a tag
};

// What was found. A line is given by its words, `unknown` for one that is no tag and no choice.
struct Found {
    enum class Answer : std::uint8_t {
        yes,
        no,
        unknown,  // not within the limit
    };

    Answer answer;
    std::vector<Symbol> line{};  // what was added, a shortest one unless it was easy to find
};

// Looks for what to add so that the first contender fits, and no other.
// The question is NP-hard: after `mostSteps` steps, each of them a word that a declaration reads,
// there is no answer.
inline constexpr std::size_t mostSteps = 100'000;
enum class Ends : std::uint8_t { anywhere, afterAWord };  // where what is added may end
[[nodiscard]] Found findAlone(const Lexicon& lexicon, const Contender& alone,
                              const std::vector<Contender>& others, Ends ends) noexcept;

// Looks for a line of at least one word that both contenders fit; a shortest one.
[[nodiscard]] Found findShared(const Lexicon& lexicon, const Contender& left,
                               const Contender& right) noexcept;

// Returns what is missing for the contender to fit, by tags where there are some, or nothing when
// it cannot be said so simply.
[[nodiscard]] std::optional<std::vector<Symbol>> simplestEnd(const Lexicon& lexicon,
                                                             const Contender& contender) noexcept;

}  // namespace Optrella::Internal

#endif
