#include "Optrella/Explain/Nearness.hpp"

#include <algorithm>
#include <utility>

#include "Optrella/Text/Characters.hpp"

namespace Optrella::Internal {

namespace {

// Shorter ones are near to everything.
constexpr std::size_t shortest = 3;

std::string_view withoutDashes(std::string_view bytes) noexcept {
    return bytes.substr(std::min(bytes.find_first_not_of('-'), bytes.size()));
}

}  // namespace

std::optional<std::size_t> mistakes(const std::vector<std::string>& typed,
                                    const std::vector<std::string>& meant,
                                    std::size_t most) noexcept {
    const auto [shorter, longer] = std::minmax({typed.size(), meant.size()});
    if (longer - shorter > most) return std::nullopt;
    // Rows of a table: how many it takes from the first i characters to the first j.
    std::vector<std::size_t> beforeLast(meant.size() + 1);
    std::vector<std::size_t> last(meant.size() + 1);
    std::vector<std::size_t> row(meant.size() + 1);
    for (std::size_t j = 0; j <= meant.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= typed.size(); ++i) {
        std::swap(beforeLast, last);
        std::swap(last, row);
        row[0] = i;
        for (std::size_t j = 1; j <= meant.size(); ++j) {
            const std::size_t change = typed[i - 1] == meant[j - 1] ? 0 : 1;
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + change});
            const bool areExchanged = i > 1 && j > 1 && typed[i - 1] == meant[j - 2] &&
                                      typed[i - 2] == meant[j - 1];
            if (areExchanged) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
        const auto least = *std::min_element(row.begin(), row.end());
        if (least > most + 1) return std::nullopt;
    }
    return row.back() <= most ? std::optional(row.back()) : std::nullopt;
}

Comparable::Comparable(std::string_view bytes) noexcept
    : characters_(canonicalCharacters(withoutDashes(bytes))),
      folded_(withoutCase(withoutDashes(bytes))) {}

bool Comparable::isBeginningOf(const Comparable& tag) const noexcept {
    return characters_.size() < tag.characters_.size() &&
           std::equal(characters_.begin(), characters_.end(), tag.characters_.begin());
}

std::optional<std::size_t> Comparable::distanceTo(const Comparable& tag) const noexcept {
    if (folded_ == tag.folded_) return 0;
    const auto [shorter, longer] = std::minmax({characters_.size(), tag.characters_.size()});
    if (shorter < shortest) return std::nullopt;
    if (isBeginningOf(tag)) return 1;
    return mistakes(characters_, tag.characters_, std::max<std::size_t>(longer / 3, 1));
}

}  // namespace Optrella::Internal
