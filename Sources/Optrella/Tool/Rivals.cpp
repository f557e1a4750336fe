#include "Optrella/Tool/Rivals.hpp"

#include <algorithm>
#include <iterator>
#include <optional>

#include "Optrella/Tool/Conditions.hpp"

namespace Optrella::Internal {

namespace {

bool readAll(Contender& contender, std::span<const Argument> line) noexcept {
    return allOf(line, [&contender](const Argument& each) { return contender.read(each); });
}

// Whether a word was used so that has just been read.
bool wasUsed(const Contender& contender, const Argument& word, Use use) noexcept {
    const Walk& walk = contender.walk();
    const bool isTag = walk.role() == Role::tags;
    if (use.as == Use::As::value) return !isTag && walk.valued() == use.slot;
    return isTag && walk.form().ownerOf(word.symbol) == use.slot;
}

}  // namespace

Rivals::Rivals(const Grammar& grammar, const Lexicon& lexicon,
               std::span<const Text> before) noexcept
    : lexicon_(&lexicon), owners_(static_cast<std::size_t>(grammar.vocabulary.size())) {
    const std::vector<Argument> line = argumentsOf(before, grammar.vocabulary);
    for (std::size_t i = 0; i < grammar.forms.size(); ++i) {
        Contender good(grammar, i, Line::good);
        if (!grammar.forms[i].isHidden() && readAll(good, line)) candidates_.push_back(good);
        Contender fitting(grammar, i, Line::fitting);
        if (!readAll(fitting, line)) continue;
        const std::size_t place = all_.size();
        for (const Form::Owner& owner : grammar.forms[i].owners()) {
            owners_[static_cast<std::size_t>(owner.tag)].push_back(place);
        }
        if (fitting.takesWords() || fitting.walk().state().isPlain) takers_.push_back(place);
        all_.push_back(std::move(fitting));
    }
}

// Those that can read the word.
std::vector<Contender> Rivals::others(const Contender& candidate, Symbol word) const noexcept {
    std::vector<Contender> others;
    const auto add = [&](std::size_t place) {
        if (all_[place].declaration() == candidate.declaration()) return;
        Contender other = all_[place];
        if (other.read((*lexicon_)[word])) others.push_back(std::move(other));
    };
    const Argument& argument = (*lexicon_)[word];
    if (argument.isCompound()) {
        // Anybody may read it as something else.
        for (std::size_t place = 0; place < all_.size(); ++place) add(place);
        return others;
    }
    std::vector<std::size_t> places = takers_;
    if (word != Vocabulary::unknown) {
        const std::vector<std::size_t>& owners = owners_[static_cast<std::size_t>(word)];
        places.clear();
        std::set_union(takers_.begin(), takers_.end(), owners.begin(), owners.end(),
                       std::back_inserter(places));
    }
    for (const std::size_t place : places) add(place);
    return others;
}

bool Rivals::leadsOn(const Contender& candidate, Symbol word, Use use) const noexcept {
    Contender next = candidate;
    const Argument& argument = (*lexicon_)[word];
    if (!next.read(argument) || !wasUsed(next, argument, use)) return false;
    const std::vector<Contender> others = this->others(candidate, word);
    if (const auto end = simplestEnd(*lexicon_, next)) {
        std::vector<Contender> left = others;
        for (const Symbol each : *end) {
            std::erase_if(left, [&](Contender& other) { return !other.read((*lexicon_)[each]); });
        }
        const auto fits = [](const Contender& other) { return other.fits(); };
        if (noneOf(left, fits)) return true;
    }
    return findAlone(*lexicon_, next, others, Ends::anywhere).answer != Found::Answer::no;
}

}  // namespace Optrella::Internal
