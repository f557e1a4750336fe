#include "Optrella/Tool/Vocabulary.hpp"

#include <functional>

namespace Optrella::Internal {

Symbol Vocabulary::add(const Text& text) noexcept {
    if (2 * texts_.size() >= table_.size()) grow();
    const std::size_t hash = std::hash<Text>()(text);
    Symbol& place = table_[placeOf(text, hash)];
    if (place == unknown) {
        place = size();
        texts_.push_back(text);
        hashes_.push_back(hash);
    }
    return place;
}

Symbol Vocabulary::find(const Text& text) const noexcept {
    return table_.empty() ? unknown : table_[placeOf(text, std::hash<Text>()(text))];
}

// The place of the text, or the empty one where it belongs.
std::size_t Vocabulary::placeOf(const Text& text, std::size_t hash) const noexcept {
    const std::size_t mask = table_.size() - 1;
    std::size_t place = hash & mask;
    while (table_[place] != unknown) {
        const auto known = static_cast<std::size_t>(table_[place]);
        if (hashes_[known] == hash && texts_[known] == text) break;
        place = (place + 1) & mask;
    }
    return place;
}

void Vocabulary::grow() noexcept {
    constexpr std::size_t least = 32;
    table_.assign(table_.empty() ? least : 2 * table_.size(), unknown);
    const std::size_t mask = table_.size() - 1;
    for (Symbol symbol = 0; symbol < size(); ++symbol) {
        std::size_t place = hashes_[static_cast<std::size_t>(symbol)] & mask;
        while (table_[place] != unknown) place = (place + 1) & mask;
        table_[place] = symbol;
    }
}

}  // namespace Optrella::Internal
