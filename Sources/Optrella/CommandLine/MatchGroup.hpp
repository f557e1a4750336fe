// MatchGroup.hpp - the parameters of a declaration that the arguments give.

#ifndef OPTRELLA_COMMANDLINE_MATCHGROUP_HPP
#define OPTRELLA_COMMANDLINE_MATCHGROUP_HPP

#include <cstddef>
#include <vector>

#include "Optrella/Parameters.hpp"
#include "Optrella/Text.hpp"

namespace Optrella::Internal {

// A declared parameter that the arguments give, and its value. Both are views.
struct Match {
    const ParameterView* declared;
    const Text* value;  // null for a flag

    // Returns whether the kind's own storeUserValue is to be called: a tool may see that.
    [[nodiscard]] bool isStoredByTheKind() const noexcept {
        return value != nullptr && !declared->operations().storesByDefault;
    }
};

// The matches in one list of a declaration, in the order of the arguments.
class MatchGroup {
public:
    [[nodiscard]] std::size_t size() const noexcept { return size_; }

    // Forgets the matches and keeps the room for others.
    void clear() noexcept {
        more_.clear();
        size_ = 0;
        stored_.clear();
    }
    void add(Match match) noexcept {
        if (size_ < inlineSize) {
            few_[size_] = match;
        } else {
            more_.push_back(match);
        }
        ++size_;
        if (match.isStoredByTheKind()) store(match);
    }
    // Appends copies of the parameters with their values. REQUIRES: clear() is called next.
    void moveTo(Parameters& filled) noexcept;

private:
    void store(Match match) noexcept;

    static constexpr std::size_t inlineSize = 16;  // without the heap

    Match few_[inlineSize];
    std::vector<Match> more_;
    std::size_t size_ = 0;
    // Those that the kind stores, made while the arguments are matched, once, whatever comes of it.
    // All other copies wait until it is known that they are needed.
    Parameters stored_;
};

}  // namespace Optrella::Internal

#endif
