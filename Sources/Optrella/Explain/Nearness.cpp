#include "Optrella/Explain/Nearness.hpp"

#include <algorithm>
#include <numeric>
#include <utility>

#include "Optrella/Text/Characters.hpp"
#include "Optrella/Text/Unicode.hpp"

namespace Optrella::Internal {

namespace {

// Shorter ones are near to everything.
constexpr std::size_t shortest = 3;

// Those that programs for writing make of a typed dash count as well.
std::string_view withoutDashes(std::string_view bytes) noexcept {
    constexpr std::string_view dashes[] = {"-",      "\u2010", "\u2011", "\u2012",
                                           "\u2013", "\u2014", "\u2015", "\u2212"};
    const auto begins = [&bytes](std::string_view dash) { return bytes.starts_with(dash); };
    for (const auto* dash = std::begin(dashes); dash != std::end(dashes);) {
        dash = std::find_if(std::begin(dashes), std::end(dashes), begins);
        if (dash != std::end(dashes)) bytes.remove_prefix(dash->size());
    }
    return bytes;
}

// The opposite of what was typed is never what was meant.
bool areOpposite(std::string_view left, std::string_view right) noexcept {
    for (const std::string_view negation : {"no-", "un"}) {
        for (int i = 0; i < 2; ++i, std::swap(left, right)) {
            if (left.starts_with(negation) && left.substr(negation.size()) == right) return true;
        }
    }
    return false;
}

// Three rows of a table: how much it takes from the first i characters to the first j.
class Rows {
public:
    explicit Rows(std::size_t width) noexcept {
        if (width > few) many_.resize(3 * width);
        std::size_t* cells = many_.empty() ? cells_ : many_.data();
        beforeLast = cells;
        last = cells + width;
        now = cells + 2 * width;
    }
    void turn() noexcept {
        std::swap(beforeLast, last);
        std::swap(last, now);
    }

    std::size_t* beforeLast;
    std::size_t* last;
    std::size_t* now;

private:
    static constexpr std::size_t few = 32;

    std::size_t cells_[3 * few];
    std::vector<std::size_t> many_;
};

// The number of characters to insert, remove or change, or of neighbours to exchange, no piece
// being touched twice; nothing when there are more than `most`.
template <class Characters>
std::optional<std::size_t> mistakes(const Characters& typed, const Characters& meant,
                                    std::size_t most) noexcept {
    const auto [shorter, longer] = std::minmax({typed.size(), meant.size()});
    if (longer - shorter > most) return std::nullopt;
    Rows rows(meant.size() + 1);
    std::iota(rows.now, rows.now + meant.size() + 1, std::size_t{0});
    for (std::size_t i = 1; i <= typed.size(); ++i) {
        rows.turn();
        rows.now[0] = i;
        std::size_t least = i;
        for (std::size_t j = 1; j <= meant.size(); ++j) {
            const std::size_t change = typed[i - 1] == meant[j - 1] ? 0 : 1;
            std::size_t cell =
                std::min({rows.last[j] + 1, rows.now[j - 1] + 1, rows.last[j - 1] + change});
            const bool areExchanged =
                i > 1 && j > 1 && typed[i - 1] == meant[j - 2] && typed[i - 2] == meant[j - 1];
            if (areExchanged) cell = std::min(cell, rows.beforeLast[j - 2] + 1);
            rows.now[j] = cell;
            least = std::min(least, cell);
        }
        // An exchange looks two rows back.
        if (least > most + 1) return std::nullopt;
    }
    const std::size_t all = rows.now[meant.size()];
    if (all > most) return std::nullopt;
    return all;
}

template <class Characters>
std::optional<std::size_t> distance(const Characters& typed, const Characters& meant) noexcept {
    const bool isBeginning =
        typed.size() < meant.size() && std::equal(typed.begin(), typed.end(), meant.begin());
    if (isBeginning) return 1;
    const std::size_t longer = std::max(typed.size(), meant.size());
    return mistakes(typed, meant, std::max<std::size_t>(longer / 3, 1));
}

bool isCharacterEach(std::string_view bytes) noexcept {
    return isASCII(bytes) && bytes.find('\r') == std::string_view::npos;
}

}  // namespace

Comparable::Comparable(std::string_view bytes) noexcept
    : bytes_(withoutDashes(bytes)),
      folded_(withoutCase(bytes_)),
      isPlain_(isCharacterEach(bytes_)),
      size_(bytes_.size()) {
    if (isPlain_) return;
    characters_ = canonicalCharacters(bytes_);
    size_ = characters_.size();
}

std::vector<std::string> Comparable::characters() const noexcept {
    return isPlain_ ? canonicalCharacters(bytes_) : characters_;
}

std::optional<std::size_t> Comparable::distanceTo(const Comparable& tag) const noexcept {
    if (folded_ == tag.folded_) return 0;
    if (std::min(size_, tag.size_) < shortest) return std::nullopt;
    if (areOpposite(folded_, tag.folded_)) return std::nullopt;
    if (isPlain_ && tag.isPlain_) return distance(bytes_, tag.bytes_);
    return distance(characters(), tag.characters());
}

}  // namespace Optrella::Internal
