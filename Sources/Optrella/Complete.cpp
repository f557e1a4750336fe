#include "Optrella/Complete.hpp"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <utility>

#include "Optrella/Complete/Offers.hpp"
#include "Optrella/Text/Characters.hpp"
#include "Optrella/Tool/LineSearch.hpp"
#include "Optrella/Tool/Rivals.hpp"

namespace Optrella {

namespace {

using namespace Internal;

// In which order offers are made.
enum class Rank : std::uint8_t { requiredWord, requiredTag, value, optionalTag };
constexpr std::size_t ranks = 4;

// The beginning of a word, as far as it is typed.
class Beginning {
public:
    explicit Beginning(const Text& typed) noexcept
        : bytes_(typed), characters_(canonicalCharacters(typed)) {}

    [[nodiscard]] bool empty() const noexcept { return bytes_.empty(); }
    [[nodiscard]] bool isOf(const Text& word) const noexcept {
        if (static_cast<std::string_view>(word).starts_with(bytes_) && word.isASCII()) return true;
        if (word.isASCII() && bytes_.isASCII()) return false;
        const auto characters = canonicalCharacters(word);
        return characters.size() >= characters_.size() &&
               std::equal(characters_.begin(), characters_.end(), characters.begin());
    }
    // A word that is no tag and no choice does not begin with a dash.
    [[nodiscard]] bool mayBeOfFreeWord() const noexcept {
        return !static_cast<std::string_view>(bytes_).starts_with('-');
    }

private:
    Text bytes_;
    std::vector<std::string> characters_;
};

class Completion {
public:
    Completion(const Tool& tool, const Grammar& grammar, std::span<const Text> before,
               const Text& current, Offers offers) noexcept
        : grammar_(grammar),
          lexicon_(grammar_),
          rivals_(grammar_, lexicon_, before),
          current_(current),
          isReduced_(offers == Offers::reduced && current_.empty()) {
        for (const Completer& each : tool.completers) listed_.push_back({&each});
    }

    std::vector<Offer> offers() noexcept {
        for (const Contender& each : rivals_.candidates()) offerAfter(each);
        std::vector<Offer> all;
        for (std::vector<Offer>& each : offers_) {
            for (Offer& offer : each) all.push_back(std::move(offer));
        }
        return all;
    }

private:
    void offerAfter(const Contender& contender) noexcept {
        if (contender.takesWords()) offerValues(contender);
        // Until the option has its value no tag is read, and after the rest begins none at all.
        if (contender.isDue() || contender.walk().state().rest != noSlot) return;
        const auto slots = contender.form().slots();
        for (Slot slot = 0; slot < static_cast<Slot>(slots.size()); ++slot) {
            if (mayOfferTags(contender, slot)) offerTags(contender, slot);
        }
    }

    static bool lacksWords(const Contender& contender) noexcept {
        return contender.walk().state().requiredWordsGiven < contender.form().requiredWordCount();
    }

    [[nodiscard]] bool mayOfferTags(const Contender& contender, Slot slot) const noexcept {
        if (!contender.mayGive(slot)) return false;
        if (!isReduced_) return true;
        const SlotRules& rules = contender.form().slot(slot);
        return lacksWords(contender) ? rules.isRequiredWord : !rules.takes.has_value();
    }

    void offerTags(const Contender& contender, Slot slot) noexcept {
        const SlotRules& rules = contender.form().slot(slot);
        const Rank rank = rules.isRequiredWord ? Rank::requiredWord
                          : rules.isRequired   ? Rank::requiredTag
                                               : Rank::optionalTag;
        std::vector<Text> tags;
        for (const Text& tag : rules.tags()) {
            const Symbol symbol = grammar_.vocabulary.find(tag);
            if (contender.form().ownerOf(symbol) != slot || !lexicon_.mayStand(symbol)) continue;
            if (!current_.isOf(tag) || (!isReduced_ && isOffered(tag))) continue;
            if (rivals_.leadsOn(contender, symbol, {Use::As::tag, slot})) tags.push_back(tag);
        }
        if (isReduced_ && tags.size() > 1) tags = {longest(tags)};
        for (const Text& tag : tags) {
            add(rank,
                {.kind = Offer::Kind::tag, .word = tag, .help = rules.parameter.common().tagHelp});
        }
    }

    static Text longest(const std::vector<Text>& tags) noexcept {
        const auto size = [](const Text& tag) { return canonicalCharacters(tag).size(); };
        return *std::max_element(
            tags.begin(), tags.end(),
            [&size](const Text& left, const Text& right) { return size(left) < size(right); });
    }

    void offerValues(const Contender& contender) noexcept {
        const WalkState& state = contender.walk().state();
        const Slot missing = contender.walk().valueMissing();
        const Slot taker = missing != noSlot      ? missing
                           : state.rest != noSlot ? state.rest
                                                  : contender.walk().takerOfPlain();
        const SlotRules& rules = contender.form().slot(taker);
        if (isReduced_ && missing == noSlot && lacksWords(contender)) return;
        if (const auto* list = rules.parameter.as<ParameterList>()) {
            offerChoices(contender, taker, *list);
        } else if (!offerListed(contender, taker)) {
            offerPlaceholder(contender, taker);
        }
    }

    void offerChoices(const Contender& contender, Slot slot, const ParameterList& list) noexcept {
        for (const ParameterNone& option : list.validOptions()) {
            if (option.common.tags.empty()) continue;
            const Text& word = option.common.tags.front();
            const Symbol symbol = grammar_.vocabulary.find(word);
            if (!current_.isOf(word) || !lexicon_.mayStand(symbol)) continue;
            if (isOffered(word)) continue;
            if (!rivals_.leadsOn(contender, symbol, {Use::As::value, slot})) continue;
            add(Rank::value, {.kind = Offer::Kind::choice,
                              .word = word,
                              .help = option.common.tagHelp,
                              .name = list.common.parameterName});
        }
    }

    // Returns whether the parameter has a completer.
    bool offerListed(const Contender& contender, Slot slot) noexcept {
        Listed* const listed = listedOf(contender.form(), slot);
        if (listed == nullptr) return false;
        const commonDetails& common = contender.form().slot(slot).parameter.common();
        const auto offer = [&](const Text& value) {
            add(Rank::value, {.kind = Offer::Kind::value,
                              .word = value,
                              .help = common.tagHelp,
                              .name = common.parameterName});
        };
        if (!listed->isAsked) ask(*listed);
        const bool areFreeGood =
            !listed->areFreeOffered &&
            rivals_.leadsOn(contender, Vocabulary::unknown, {Use::As::value, slot});
        if (areFreeGood) listed->areFreeOffered = true;
        for (const Text& value : areFreeGood ? listed->words : listed->knownWords) {
            const Symbol symbol = grammar_.vocabulary.find(value);
            if (symbol == Vocabulary::unknown) {
                offer(value);
                continue;
            }
            if (isOffered(value) || !lexicon_.mayStand(symbol)) continue;
            if (rivals_.leadsOn(contender, symbol, {Use::As::value, slot})) offer(value);
        }
        return true;
    }

    // What a completer lists, asked for once.
    struct Listed {
        const Completer* completer;
        bool isAsked = false;
        bool areFreeOffered = false;     // those that are no tag and no choice, and so all alike
        std::vector<Text> words{};       // in their order
        std::vector<Text> knownWords{};  // those of them that are a tag or a choice
    };

    Listed* listedOf(const Form& form, Slot slot) noexcept {
        for (Listed& each : listed_) {
            const std::optional<Text>& tag = each.completer->firstTag();
            if (tag && form.ownerOf(grammar_.vocabulary.find(*tag)) == slot) return &each;
        }
        return nullptr;
    }

    void ask(Listed& listed) const noexcept {
        listed.isAsked = true;
        for (const Text& value : listed.completer->values()) {
            if (!current_.isOf(value)) continue;
            const bool isKnown = grammar_.vocabulary.find(value) != Vocabulary::unknown;
            if (isKnown) listed.knownWords.push_back(value);
            const bool beginsWithDash = static_cast<std::string_view>(value).starts_with('-');
            if (isKnown || !beginsWithDash) listed.words.push_back(value);
        }
    }

    void offerPlaceholder(const Contender& contender, Slot slot) noexcept {
        if (!current_.mayBeOfFreeWord()) return;
        const ParameterView& parameter = contender.form().slot(slot).parameter;
        Offer offer{.kind = Offer::Kind::value,
                    .help = parameter.common().tagHelp,
                    .name = parameter.common().parameterName};
        if (const auto* path = parameter.as<ParameterFileURL>()) {
            offer.kind = Offer::Kind::path;
            offer.pathType = path->type;
            offer.pathState = path->state;
        }
        std::vector<Offer>& values = ofRank(Rank::value);
        const bool isKnown = std::find(values.begin(), values.end(), offer) != values.end();
        if (isKnown) return;
        if (!rivals_.leadsOn(contender, Vocabulary::unknown, {Use::As::value, slot})) return;
        values.push_back(std::move(offer));
    }

    [[nodiscard]] bool isOffered(const Text& word) const noexcept {
        return words_.find(word) != Vocabulary::unknown;
    }
    std::vector<Offer>& ofRank(Rank rank) noexcept {
        return offers_[static_cast<std::size_t>(rank)];
    }

    void add(Rank rank, Offer offer) noexcept {
        if (isOffered(*offer.word)) return;
        words_.add(*offer.word);
        ofRank(rank).push_back(std::move(offer));
    }

    const Grammar& grammar_;
    const Lexicon lexicon_;
    Rivals rivals_;
    const Beginning current_;
    const bool isReduced_;
    std::vector<Listed> listed_;
    std::array<std::vector<Offer>, ranks> offers_;  // by their ranks
    Vocabulary words_;                              // that are offered
};

}  // namespace

std::vector<Offer> Internal::offersOf(const Tool& tool, const Grammar& grammar,
                                      std::span<const Text> before, const Text& current,
                                      Offers offers) noexcept {
    return Completion(tool, grammar, before, current, offers).offers();
}

std::vector<Offer> complete(const Tool& tool, ArgumentList before, const Text& current,
                            Offers offers) noexcept {
    return Internal::offersOf(tool, Internal::Grammar(tool), before.texts(), current, offers);
}

}  // namespace Optrella
