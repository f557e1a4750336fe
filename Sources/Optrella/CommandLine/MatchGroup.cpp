#include "Optrella/CommandLine/MatchGroup.hpp"

#include <utility>

namespace Optrella::Internal {

void MatchGroup::store(Match match) noexcept {
    stored_.emplace_back(*match.declared);
    stored_.back().storeUserValue(*match.value);
}

void MatchGroup::moveTo(Parameters& filled) noexcept {
    auto stored = stored_.begin();
    for (std::size_t i = 0; i < size_; ++i) {
        const Match& match = i < inlineSize ? few_[i] : more_[i - inlineSize];
        if (match.isStoredByTheKind()) {
            filled.emplace_back(std::move(*stored++));
            continue;
        }
        // Stored as every kind does that does not say otherwise.
        ParameterProtocol& copy = filled.emplace_back(*match.declared);
        if (match.value != nullptr) copy.common().userValue = *match.value;
    }
}

}  // namespace Optrella::Internal
