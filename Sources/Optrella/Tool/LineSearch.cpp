#include "Optrella/Tool/LineSearch.hpp"

#include <algorithm>
#include <string>
#include <utility>

#include "Optrella/Parameters/Decimal.hpp"
#include "Optrella/Tool/Conditions.hpp"

namespace Optrella::Internal {

// ---- Words ----

namespace {

// A word that is neither a tag nor a choice.
Text freeWord(const Vocabulary& vocabulary) noexcept {
    std::string word = "word";
    while (vocabulary.find(word) != Vocabulary::unknown) word += '-';
    return word;
}

bool isOdd(const Argument& argument) noexcept {
    return argument.isCompound() || argument.text == "--help" || decimal(argument.text);
}

}  // namespace

Lexicon::Lexicon(const Grammar& grammar) noexcept
    : free_(freeWord(grammar.vocabulary), grammar.vocabulary), isExact_(grammar.isExact()) {
    known_.reserve(static_cast<std::size_t>(grammar.vocabulary.size()));
    for (Symbol symbol = 0; symbol < grammar.vocabulary.size(); ++symbol) {
        known_.emplace_back(grammar.vocabulary.text(symbol), grammar.vocabulary);
        const Argument& word = known_.back();
        hasCompounds_ = hasCompounds_ || word.isCompound();
        if (!word.bytes().starts_with('-') || !mayStand(symbol)) continue;
        (isOdd(word) ? oddities_ : options_).push_back(symbol);
    }
}

std::vector<Symbol> Lexicon::of(const std::vector<Contender>& contenders) const noexcept {
    std::vector<char> isOneOfThem(known_.size());
    const auto add = [&isOneOfThem](Symbol word) {
        isOneOfThem[static_cast<std::size_t>(word)] = 1;
    };
    for (const Symbol each : oddities_) add(each);
    for (const Contender& each : contenders) {
        for (const Form::Owner& owner : each.form().owners()) {
            if (mayStand(owner.tag)) add(owner.tag);
        }
        if (!each.isGood()) continue;
        for (const SlotRules& rules : each.form().slots()) {
            for (const Symbol choice : rules.choices) {
                if (mayStand(choice)) add(choice);
            }
        }
    }
    const auto isNobodys = [&contenders](Symbol option) {
        return allOf(contenders, [option](const Contender& each) {
            return each.form().ownerOf(option) == noSlot;
        });
    };
    const auto foreign = std::find_if(options_.begin(), options_.end(), isNobodys);
    if (foreign != options_.end()) add(*foreign);
    std::vector<Symbol> words = {Vocabulary::unknown};
    for (std::size_t i = 0; i < isOneOfThem.size(); ++i) {
        if (isOneOfThem[i] != 0) words.push_back(static_cast<Symbol>(i));
    }
    return words;
}

// ---- Breadth first ----

namespace {

// A beginning of a line, and who can read it.
struct Node {
    std::vector<Contender> contenders;
    std::size_t parent;
    Symbol word;
    std::string essence;  // at the last place where no value was due
};

// What is known already. Smaller than the library's own, which nobody else needs here.
class Keys {
public:
    // Returns false for one that is there.
    bool add(std::string key) noexcept {
        if (2 * keys_.size() >= table_.size()) grow();
        std::size_t& place = table_[placeOf(key)];
        if (place != none) return false;
        place = keys_.size();
        keys_.push_back(std::move(key));
        return true;
    }

private:
    static constexpr auto none = static_cast<std::size_t>(-1);

    // The place of a key, or the empty one where it belongs.
    [[nodiscard]] std::size_t placeOf(const std::string& key) const noexcept {
        const std::size_t mask = table_.size() - 1;
        std::size_t place = std::hash<std::string>()(key) & mask;
        while (table_[place] != none && keys_[table_[place]] != key) place = (place + 1) & mask;
        return place;
    }
    void grow() noexcept {
        constexpr std::size_t least = 32;
        table_.assign(std::max(least, 2 * table_.size()), none);
        for (std::size_t i = 0; i < keys_.size(); ++i) table_[placeOf(keys_[i])] = i;
    }

    std::vector<std::string> keys_;
    std::vector<std::size_t> table_;  // a power of two, half of it empty
};

class Search {
public:
    Search(const Lexicon& lexicon, std::vector<Contender> contenders, Ends ends) noexcept
        : words_(lexicon.of(contenders)), ends_(ends) {
        std::string essence;
        // Where a word is needed, one that does nothing else is of use.
        if (ends == Ends::anywhere) essence = essenceOf(contenders);
        nodes_.push_back({std::move(contenders), 0, Vocabulary::unknown, std::move(essence)});
    }

    // Goes on until a goal is reached. `next` makes the contenders after a word of those before it,
    // which may be the first one, and returns false where that leads nowhere.
    template <class Goal, class Next>
    Found run(Goal isGoal, Next next) noexcept {
        if (ends_ == Ends::anywhere && isGoal(nodes_.front().contenders)) {
            return {Found::Answer::yes};
        }
        for (std::size_t place = 0; place < nodes_.size(); ++place) {
            for (const Symbol word : words_) {
                steps_ += nodes_[place].contenders.size();
                if (steps_ > mostSteps) return {Found::Answer::unknown};
                std::vector<Contender> contenders = nodes_[place].contenders;
                if (!next(contenders, word, place == 0)) continue;
                if (!add(std::move(contenders), place, word)) continue;
                if (isGoal(nodes_.back().contenders)) return {Found::Answer::yes, line()};
            }
            nodes_[place].contenders = {};
        }
        return {Found::Answer::no};
    }

private:
    static std::string keyOf(const std::vector<Contender>& contenders) noexcept {
        std::string key;
        for (const Contender& each : contenders) each.appendKey(key);
        return key;
    }
    // Without the optional parameters of the first: to have given one is of no use by itself.
    static std::string essenceOf(const std::vector<Contender>& contenders) noexcept {
        std::string key;
        contenders.front().appendEssence(key);
        for (const Contender& each : std::span(contenders).subspan(1)) each.appendKey(key);
        return key;
    }

    bool add(std::vector<Contender> contenders, std::size_t parent, Symbol word) noexcept {
        std::string essence = nodes_[parent].essence;
        if (!contenders.front().isDue()) {
            std::string now = essenceOf(contenders);
            if (now == essence) return false;
            essence = std::move(now);
        }
        if (!known_.add(keyOf(contenders))) return false;
        nodes_.push_back({std::move(contenders), parent, word, std::move(essence)});
        return true;
    }

    // The words that lead to the last node.
    [[nodiscard]] std::vector<Symbol> line() const noexcept {
        std::vector<Symbol> line;
        for (std::size_t place = nodes_.size() - 1; place > 0; place = nodes_[place].parent) {
            line.push_back(nodes_[place].word);
        }
        std::reverse(line.begin(), line.end());
        return line;
    }

    const std::vector<Symbol> words_;
    const Ends ends_;
    std::vector<Node> nodes_;
    Keys known_;
    std::size_t steps_ = 0;
};

}  // namespace

Found findAlone(const Lexicon& lexicon, const Contender& alone,
                const std::vector<Contender>& others, Ends ends) noexcept {
    std::vector<Contender> all = {alone};
    all.insert(all.end(), others.begin(), others.end());
    const auto isGoal = [](const std::vector<Contender>& contenders) {
        const auto fits = [](const Contender& each) { return each.fits(); };
        return contenders.front().fits() &&
               std::none_of(contenders.begin() + 1, contenders.end(), fits);
    };
    const auto next = [&lexicon](std::vector<Contender>& contenders, Symbol word, bool) {
        if (!contenders.front().read(lexicon[word])) return false;
        std::vector<Contender> left = {contenders.front()};
        for (Contender& each : std::span(contenders).subspan(1)) {
            if (each.read(lexicon[word])) left.push_back(std::move(each));
        }
        contenders = std::move(left);
        return true;
    };
    return Search(lexicon, std::move(all), ends).run(isGoal, next);
}

namespace {

// Whether both take the word for an optional parameter that does the same to both: a line without
// it is as good.
bool isOfNoUse(const Contender& left, const Contender& right, Symbol word) noexcept {
    const Slot ofLeft = left.form().ownerOf(word);
    const Slot ofRight = right.form().ownerOf(word);
    if (ofLeft == noSlot || ofRight == noSlot) return false;
    if (left.walk().role() != Role::tags || right.walk().role() != Role::tags) return false;
    const SlotRules& l = left.form().slot(ofLeft);
    const SlotRules& r = right.form().slot(ofRight);
    return !l.isRequired && !r.isRequired && !l.takes && !r.takes && l.takesValue == r.takesValue;
}

}  // namespace

Found findShared(const Lexicon& lexicon, const Contender& left, const Contender& right) noexcept {
    const auto isGoal = [](const std::vector<Contender>& contenders) {
        return contenders[0].fits() && contenders[1].fits();
    };
    const auto next = [&lexicon](std::vector<Contender>& contenders, Symbol word, bool isFirst) {
        return contenders[0].read(lexicon[word]) && contenders[1].read(lexicon[word]) &&
               (isFirst || !isOfNoUse(contenders[0], contenders[1], word));
    };
    return Search(lexicon, {left, right}, Ends::afterAWord).run(isGoal, next);
}

// ---- What is missing ----

namespace {

class SimplestEnd {
public:
    SimplestEnd(const Lexicon& lexicon, Contender contender) noexcept
        : lexicon_(lexicon), contender_(std::move(contender)) {}

    bool complete() noexcept {
        if (!fill()) return false;
        for (const bool areWords : {true, false}) {
            for (Slot slot = 0; slot < contender_.form().requiredCount(); ++slot) {
                if (contender_.form().slot(slot).isRequiredWord == areWords && !give(slot)) {
                    return false;
                }
            }
        }
        return contender_.fits();
    }
    [[nodiscard]] std::vector<Symbol> line() && noexcept { return std::move(line_); }

private:
    bool add(Symbol word) noexcept {
        Contender next = contender_;
        if (!lexicon_.mayStand(word) || !next.read(lexicon_[word])) return false;
        contender_ = std::move(next);
        line_.push_back(word);
        return true;
    }
    // The value that is due, if one is.
    bool fill() noexcept {
        const Slot slot = contender_.walk().valueMissing();
        return slot == noSlot || addValue(slot);
    }
    bool addValue(Slot slot) noexcept {
        if (add(Vocabulary::unknown)) return true;
        const auto& choices = contender_.form().slot(slot).choices;
        return anyOf(choices, [this](Symbol choice) { return add(choice); });
    }
    bool give(Slot slot) noexcept {
        if (contender_.walk().state().given.contains(slot)) return true;
        for (const Form::Owner& owner : contender_.form().owners()) {
            if (owner.slot == slot && add(owner.tag)) return fill();
        }
        return contender_.walk().takerOfPlain() == slot && addValue(slot);
    }

    const Lexicon& lexicon_;
    Contender contender_;
    std::vector<Symbol> line_;
};

}  // namespace

std::optional<std::vector<Symbol>> simplestEnd(const Lexicon& lexicon,
                                               const Contender& contender) noexcept {
    SimplestEnd end(lexicon, contender);
    if (!end.complete()) return std::nullopt;
    return std::move(end).line();
}

}  // namespace Optrella::Internal
