#include "Optrella/RunTool/Chosen.hpp"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

#include "Optrella/CommandLine/Declaration.hpp"
#include "Optrella/CommandLine/MatchGroup.hpp"
#include "Optrella/CommandLine/Owner.hpp"
#include "Optrella/CommandLine/TagMarks.hpp"
#include "Optrella/Explain/Rejection.hpp"
#include "Optrella/Tool/Argument.hpp"
#include "Optrella/Tool/Conditions.hpp"
#include "Optrella/Tool/Walk.hpp"

namespace Optrella::Internal {

namespace {

// Tells declarations that the line cannot fit, without reading it for them: most of a tool's.
class Candidates {
public:
    explicit Candidates(std::span<const Text> arguments) noexcept
        : isWordFirst_(!arguments.empty() && !looksLikeOption(arguments.front())) {
        if (isWordFirst_) first_ = TagFilter::Key(arguments.front());
        marks_.reserve(arguments.size());
        for (const Text& each : arguments) marks_.push_back(TagMarks::markOf(each));
    }

    // A word that comes first is a tag, or an operand of a command that has no words. A word
    // stands in an argument of its own; an option may be joined with others.
    [[nodiscard]] bool mayFit(const CommandLinePossibility& declaration) const noexcept {
        const KeptList required = Declaration::required(declaration);
        if (isWordFirst_ && !Declaration::tags(declaration).mayContain(first_)) {
            return noneOf(required, isWordFlag);
        }
        return allOf(required, [this](const KeptParameter& each) {
            return mayHold(each) || !canOnlyStandAlone(each);
        });
    }

private:
    static bool isWordFlag(const KeptParameter& parameter) noexcept {
        return !parameter.common().hasParameter && isWord(parameter.common().tags);
    }
    static bool canOnlyStandAlone(const KeptParameter& parameter) noexcept {
        const commonDetails& common = parameter.common();
        return !common.hasParameter && noneOf(common.tags, looksLikeOption);
    }
    [[nodiscard]] bool mayHold(const KeptParameter& word) const noexcept {
        return anyOf(marks_, [&word](std::uint32_t mark) { return word.mayHaveTag(mark); });
    }

    bool isWordFirst_;
    TagFilter::Key first_;
    std::vector<std::uint32_t> marks_;
};

// A line as plain as most are: whole tags, each followed by its value, if it takes one; nothing
// twice, and no value that begins with a dash. It can be read in one way only, so that nothing has
// to be looked up that most lines never need. Nothing for any other line, and for one that does not
// fit.
class PlainReading {
public:
    explicit PlainReading(const CommandLinePossibility& declaration) noexcept
        : required_(Declaration::required(declaration)),
          optional_(Declaration::optional(declaration)) {}

    [[nodiscard]] std::optional<Parameters> of(std::span<const Text> arguments) noexcept {
        for (std::size_t place = 0; place < arguments.size(); ++place) {
            const KeptParameter* owner = ownerOf(arguments[place]);
            const bool isEndOfOptions = arguments[place] == "--";
            if (owner == nullptr || isGiven(owner) || isEndOfOptions) return std::nullopt;
            const bool hasValue = owner->common().hasParameter;
            if (hasValue && ++place == arguments.size()) return std::nullopt;
            if (hasValue && beginsWithDash(arguments[place])) return std::nullopt;
            given_.push_back({owner, hasValue ? &arguments[place] : nullptr});
        }
        if (countOfRequired() != required_.size()) return std::nullopt;
        Parameters parameters;
        parameters.reserve(given_.size());
        for (const bool areRequired : {true, false}) {
            for (const Match& each : given_) {
                if (isRequired(each) != areRequired) continue;
                parameters.emplace_back(*each.declared);
                if (each.value != nullptr) parameters.back().storeUserValue(*each.value);
            }
        }
        return parameters;
    }

private:
    static bool beginsWithDash(const Text& value) noexcept {
        return static_cast<std::string_view>(value).starts_with('-');
    }
    const KeptParameter* ownerOf(const Text& argument) noexcept {
        const std::uint32_t mark = TagMarks::markOf(argument);
        const KeptParameter* owner = lastOwner(required_, argument, mark, comparer_);
        return owner != nullptr ? owner : lastOwner(optional_, argument, mark, comparer_);
    }
    [[nodiscard]] bool isGiven(const ParameterView* owner) const noexcept {
        return anyOf(given_, [owner](const Match& each) { return each.declared == owner; });
    }
    [[nodiscard]] bool isRequired(const Match& match) const noexcept {
        const std::less<> isBefore;
        const ParameterView* const first = required_.data();
        const ParameterView* const end = required_.data() + required_.size();
        return !isBefore(match.declared, first) && isBefore(match.declared, end);
    }
    [[nodiscard]] std::size_t countOfRequired() const noexcept {
        return static_cast<std::size_t>(std::count_if(
            given_.begin(), given_.end(), [this](const Match& each) { return isRequired(each); }));
    }

    KeptList required_;
    KeptList optional_;
    CanonicalComparer comparer_;
    std::vector<Match> given_;
};

Chosen chosenOf(const Tool& tool, const CommandLinePossibility& declaration,
                Parameters given) noexcept {
    return {
        static_cast<std::size_t>(&declaration - tool.commandLines.begin()),
        {Declaration::requiresRoot(declaration), Declaration::run(declaration), std::move(given)}};
}

// Reads the line for each of them.
std::optional<Chosen> onlyFit(const Tool& tool,
                              std::span<const CommandLinePossibility* const> candidates,
                              std::span<const Text> arguments) noexcept {
    const Grammar grammar(tool, Spelling::conventional, candidates);
    const std::vector<Argument> line = argumentsOf(arguments, grammar.vocabulary);
    std::optional<std::size_t> only;
    std::vector<Gift> gifts;
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        Walk walk(grammar.forms[i], grammar.spelling);
        std::vector<Gift> read;
        walk.record(read);
        const bool canRead = allOf(
            line, [&walk](const Argument& each) { return walk.read(each) == Reading::accepted; });
        if (!canRead || !walk.fits()) continue;
        if (only) return std::nullopt;
        only = i;
        gifts = std::move(read);
    }
    if (!only) return std::nullopt;
    return chosenOf(tool, *candidates[*only], parametersOf(grammar.forms[*only], gifts));
}

}  // namespace

std::optional<Chosen> chosen(const Tool& tool, std::span<const Text> arguments) noexcept {
    const Candidates sieve(arguments);
    std::vector<const CommandLinePossibility*> candidates;
    for (const CommandLinePossibility& each : tool.commandLines) {
        if (sieve.mayFit(each)) candidates.push_back(&each);
    }
    if (candidates.size() == 1) {
        const CommandLinePossibility& only = *candidates.front();
        std::optional<Parameters> given = PlainReading(only).of(arguments);
        if (given) return chosenOf(tool, only, *std::move(given));
    }
    return onlyFit(tool, candidates, arguments);
}

}  // namespace Optrella::Internal
