#include "Optrella/Tool/Vocabulary.hpp"

namespace Optrella::Internal {

Symbol Vocabulary::add(const Text& text) noexcept {
    const auto [place, isNew] = symbols_.try_emplace(text, size());
    if (isNew) texts_.push_back(text);
    return place->second;
}

Symbol Vocabulary::find(const Text& text) const noexcept {
    const auto found = symbols_.find(text);
    return found == symbols_.end() ? unknown : found->second;
}

}  // namespace Optrella::Internal
