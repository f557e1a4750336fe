#include "Optrella/Explain/Tries.hpp"

#include <algorithm>
#include <string_view>
#include <utility>

#include "Optrella/Tool/Conditions.hpp"

namespace Optrella::Internal {

namespace {

// What a given tag counts. It can be divided by 2 to 16, so that sums of fractions are exact.
constexpr std::int64_t whole = 720720;

}  // namespace

Try Tries::of(std::size_t declaration) noexcept {
    Try result;
    result.attempt.declaration = declaration;
    Walk walk(grammar_->forms[declaration], grammar_->spelling);
    walk.record(result.gifts);
    readAll(walk, result.attempt);
    compare(walk, result);
    return result;
}

// Reads on after what it cannot read, to see what else is there.
void Tries::readAll(Walk& walk, Attempt& attempt) noexcept {
    candidates_.clear();
    bool isWell = true;
    for (std::size_t place = 0; place < line_.size(); ++place) {
        const Slot due = walk.state().due;
        const bool isPlainHere = isPlain(walk, line_[place]);
        Reading reading = walk.read(line_[place]);
        if (reading == Reading::valueMissing) {
            if (isWell) attempt.valueMissing = walk.form().slot(due).firstTag();
            isWell = false;
            reading = walk.read(line_[place]);
        }
        if (isWell && reading != Reading::accepted) {
            reject(walk, reading, place, attempt);
            isWell = false;
        }
        if (isWell) attempt.accepted = place + 1;
        const bool mayBeMistyped = reading != Reading::accepted || walk.role() == Role::plainValue;
        if (isPlainHere && mayBeMistyped) candidates_.push_back(place);
    }
    if (!isWell) return;
    if (const Slot missing = walk.valueMissing(); missing != noSlot) {
        attempt.valueMissing = walk.form().slot(missing).firstTag();
    }
    attempt.fits = walk.fits();
}

void Tries::reject(const Walk& walk, Reading reading, std::size_t place,
                   Attempt& attempt) noexcept {
    attempt.unknown = place;
    if (reading == Reading::takesNoValue) {
        attempt.why = UnknownArgument::takesNoValue;
    } else {
        attempt.why =
            isPlain(walk, line_[place]) ? UnknownArgument::notExpected : UnknownArgument::notKnown;
    }
}

bool Tries::isPlain(const Walk& walk, const Argument& argument) noexcept {
    return walk.state().isPlain || !argument.isOptionLike;
}

// What is missing and what was given too often, once all is read; and what may have been meant.
void Tries::compare(const Walk& walk, Try& result) noexcept {
    Attempt& attempt = result.attempt;
    const auto slots = walk.form().slots();
    std::optional<Near> best;
    for (Slot slot = 0; slot < static_cast<Slot>(slots.size()); ++slot) {
        const SlotRules& rules = slots[static_cast<std::size_t>(slot)];
        const bool isTwice = walk.isExact() ? rules.isRequired && walk.state().again.contains(slot)
                                            : walk.isGivenTooOften(slot);
        if (isTwice) attempt.repeated.push_back(rules.firstTag());
        if (!rules.isRequired) continue;
        if (walk.state().given.contains(slot)) {
            result.likeness += whole;
            result.isMeant = true;
            continue;
        }
        attempt.missing.push_back(rules.firstTag());
        // An operand needs no tag: what is near to one may be the operand.
        const std::optional<Near> near = rules.takes ? std::nullopt : nearest(rules);
        if (!near) continue;
        result.likeness += whole / (2 + static_cast<std::int64_t>(near->distance));
        const auto order = [](const Near& of) { return std::pair(of.distance, of.argument); };
        if (!best || order(*near) < order(*best)) best = near;
    }
    if (attempt.fits) return;
    if (best) {
        // It stands where the other tag should, whatever else it might be.
        attempt.unknown = best->argument;
        attempt.why = UnknownArgument::notKnown;
        attempt.valueMissing.reset();
        attempt.near = {*best->tag};
        return;
    }
    if (!attempt.unknown) return;
    attempt.near = nearTags(walk, *attempt.unknown);
    if (attempt.why != UnknownArgument::notExpected) return;
    if (!result.isMeant && walk.form().requiredCount() > 0) {
        // What is near is an option: it is not what was meant by a word.
        attempt.why = UnknownArgument::notACommand;
    } else if (!attempt.near.empty()) {
        attempt.why = UnknownArgument::notKnown;
    }
}

// The nearest tag of a parameter that is missing.
std::optional<Tries::Near> Tries::nearest(const SlotRules& rules) noexcept {
    std::optional<Near> nearest;
    for (const std::size_t argument : candidates_) {
        for (const Text& tag : rules.tags()) {
            const std::optional<std::size_t> found =
                comparableArgument(argument).distanceTo(comparableTag(tag));
            if (found && (!nearest || *found < nearest->distance)) {
                nearest = Near{*found, argument, &tag};
            }
        }
    }
    return nearest;
}

// The tags that may have been meant by an argument, up to three, of parameters that are not given.
std::vector<Text> Tries::nearTags(const Walk& walk, std::size_t argument) noexcept {
    constexpr std::size_t most = 3;
    const auto isNearer = [](const Near& l, const Near& r) { return l.distance < r.distance; };
    std::vector<Near> all;
    Slot slot = 0;
    for (const SlotRules& rules : walk.form().slots()) {
        const Slot owner = slot++;
        if (walk.state().given.contains(owner)) continue;
        for (const Text& tag : rules.tags()) {
            const Symbol symbol = grammar_->vocabulary.find(tag);
            const bool isKnown = anyOf(all, [&tag](const Near& each) { return *each.tag == tag; });
            if (isKnown || walk.form().ownerOf(symbol) != owner) continue;
            const std::optional<std::size_t> found = distance(argument, tag);
            if (!found) continue;
            const Near near{*found, argument, &tag};
            all.insert(std::upper_bound(all.begin(), all.end(), near, isNearer), near);
        }
    }
    std::vector<Text> tags;
    for (const Near& each : std::span(all).first(std::min(all.size(), most))) {
        tags.push_back(*each.tag);
    }
    return tags;
}

std::optional<std::size_t> Tries::distance(std::size_t argument, const Text& tag) noexcept {
    std::vector<std::optional<Distance>>& known = distances_[argument];
    known.resize(tags_.size());
    std::optional<Distance>& distance =
        known[static_cast<std::size_t>(grammar_->vocabulary.find(tag))];
    if (!distance) distance = comparableArgument(argument).distanceTo(comparableTag(tag));
    return *distance;
}

// Of "--name=value" the name is compared.
const Comparable& Tries::comparableArgument(std::size_t place) noexcept {
    std::optional<Comparable>& made = arguments_[place];
    const std::string_view bytes = line_[place].text;
    if (!made) made.emplace(bytes.substr(0, bytes.find('=')));
    return *made;
}

const Comparable& Tries::comparableTag(const Text& tag) noexcept {
    std::optional<Comparable>& made =
        tags_[static_cast<std::size_t>(grammar_->vocabulary.find(tag))];
    if (!made) made.emplace(tag);
    return *made;
}

}  // namespace Optrella::Internal
