// What an explanation says in words.

#include <algorithm>
#include <initializer_list>
#include <set>
#include <span>
#include <string>
#include <string_view>

#include "Optrella/Explain.hpp"
#include "Optrella/Explain/Rejection.hpp"
#include "Optrella/Explain/Tries.hpp"
#include "Optrella/Text/Characters.hpp"
#include "Optrella/Text/Escapes.hpp"
#include "Optrella/Tool/Synopsis.hpp"
#include "Optrella/Tool/Walk.hpp"

namespace Optrella {

namespace {

using namespace Internal;

// "a", "a or b", "a, b or c".
std::string listed(const std::vector<std::string>& items, std::string_view conjunction) noexcept {
    std::string list;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0) list += i + 1 == items.size() ? conjunction : ", ";
        list += items[i];
    }
    return list;
}

std::string printable(const Text& message) noexcept {
    if (!holdsUnprintable(message)) return message.str();
    std::string escaped;
    appendEscaped(escaped, message);
    return escaped;
}

constexpr auto widest = static_cast<std::size_t>(-1);

class Words {
public:
    Words(const Tool& tool, std::span<const Text> arguments, const Explanation& explanation,
          std::size_t width) noexcept
        : tool_(tool),
          grammar_(tool),
          line_(argumentsOf(arguments, grammar_.vocabulary)),
          explanation_(explanation),
          width_(width) {}

    std::vector<Text> lines() noexcept {
        switch (explanation_.outcome) {
            case Outcome::runs:
                break;
            case Outcome::nothingGiven:
                sayNothing();
                break;
            case Outcome::severalFit:
                saySeveral();
                break;
            case Outcome::valueRejected:
                sayRejected();
                break;
            case Outcome::nothingFits:
            case Outcome::parameterMissing:
                sayNearest();
                break;
        }
        return std::move(lines_);
    }

private:
    const Form& formOf(const Attempt& attempt) const noexcept {
        return grammar_.forms[attempt.declaration];
    }

    void say(std::initializer_list<std::string_view> pieces) noexcept {
        std::string line = tool_.name.str() + ": ";
        for (const std::string_view piece : pieces) line += piece;
        lines_.emplace_back(line);
    }

    void sayWhereHelpIs() noexcept {
        // As parse reads, there is no such option.
        if (grammar_.isExact()) return;
        say({"'", tool_.name, " --help' shows all commands"});
    }

    void sayNothing() noexcept {
        say({"no command is given"});
        sayWhereHelpIs();
    }

    void sayUsage(const Attempt& attempt) noexcept {
        const std::string before = tool_.name.str() + ": usage: " + tool_.name.str() + " ";
        const std::size_t taken = columns(before);
        const std::size_t left = width_ > taken ? width_ - taken : 0;
        say({"usage: ", tool_.name, " ", synopsis(formOf(attempt), left)});
    }

    template <class Name>
    std::vector<std::string> namesOfFits(Name nameOf) const noexcept {
        std::vector<std::string> names;
        for (const Attempt& each : explanation_.attempts) {
            if (!each.fits) continue;
            const std::string name = nameOf(formOf(each));
            names.push_back(quoted(name.empty() ? tool_.name.str() : name));
        }
        return names;
    }

    void saySeveral() noexcept {
        std::vector<std::string> names = namesOfFits(commandName);
        std::set<std::string> different(names.begin(), names.end());
        if (different.size() < names.size()) {
            names = namesOfFits([](const Form& form) { return synopsis(form, widest); });
        }
        std::string typed;
        for (const Argument& argument : line_) {
            if (!typed.empty()) typed += ' ';
            typed += argument.bytes();
        }
        const std::string count = names.size() == 2 ? "two" : std::to_string(names.size());
        say({quoted(typed), " fits ", count, " commands: ", listed(names, " and ")});
        sayWhereHelpIs();
    }

    void sayRejected() noexcept {
        if (explanation_.attempts.empty()) return;
        const Attempt& fit = explanation_.attempts.front();
        for (const RejectedValue& each : fit.rejected) {
            say({typedLabel(fit, each.parameter), ": ", printable(each.message)});
        }
    }

    void sayNearest() noexcept {
        if (explanation_.attempts.empty()) {
            say({line_.empty() ? "" : quoted(line_.front().text), " is not a command"});
            sayWhereHelpIs();
            return;
        }
        const Attempt& nearest = explanation_.attempts.front();
        const bool isOnly = explanation_.attempts.size() == 1;
        if (!isOnly && !isMeant(nearest) && isNothingWrong(nearest)) {
            sayNothing();
            return;
        }
        const auto tied = tiedWith(nearest);
        say({problemOf(nearest, tied)});
        // Of a command that nobody can have meant the usage would mislead.
        if (isOnly || isMeant(nearest)) {
            sayUsage(nearest);
            if (tied.size() == 1) {
                sayUsage(*tied.front());
                return;
            }
        }
        sayWhereHelpIs();
    }

    // Whether nothing is known to be wrong but that something is missing.
    static bool isNothingWrong(const Attempt& attempt) noexcept {
        return !attempt.unknown && !attempt.valueMissing && attempt.repeated.empty();
    }

    // Whether a required parameter is given, or near to an argument, or none is needed.
    bool isMeant(const Attempt& attempt) const noexcept {
        if (given(attempt) > 0 || attempt.missing.empty()) return true;
        const Form& form = formOf(attempt);
        return std::any_of(attempt.near.begin(), attempt.near.end(), [&](const Text& tag) {
            const Slot owner = form.ownerOf(grammar_.vocabulary.find(tag));
            return owner != noSlot && form.slot(owner).isRequired;
        });
    }

    // The first thing that is wrong.
    std::string problemOf(const Attempt& attempt,
                          const std::vector<const Attempt*>& tied) const noexcept {
        if (attempt.unknown) return unknownArgument(attempt);
        if (attempt.valueMissing) {
            return quoted(typedTags(attempt, *attempt.valueMissing).back()) + " needs a value";
        }
        // What is given twice may stand for what is missing, as parse counts.
        const bool isMasked = explanation_.outcome == Outcome::parameterMissing;
        if (attempt.repeated.empty() || isMasked) return whatIsMissing(attempt, tied);
        return whatIsTwice(typedTags(attempt, attempt.repeated.front()));
    }

    static std::string whatIsTwice(const std::vector<Text>& typed) noexcept {
        const Text& last = typed.back();
        const auto other = std::find_if(typed.begin(), typed.end(),
                                        [&last](const Text& each) { return each != last; });
        if (other == typed.end()) return quoted(last) + " is given twice";
        return quoted(last) + " is given twice, also as " + quoted(*other);
    }

    std::string unknownArgument(const Attempt& attempt) const noexcept {
        const Argument& argument = line_[*attempt.unknown];
        const std::string shown = quoted(argument.text);
        switch (*attempt.why) {
            case UnknownArgument::takesNoValue:
                return quoted(argument.bytes().substr(0, argument.assignment.value - 1)) +
                       " takes no value";
            case UnknownArgument::notACommand:
                return shown + " is not a command";
            case UnknownArgument::notExpected:
                return shown + " is not expected here";
            case UnknownArgument::notKnown:
                break;
        }
        if (attempt.near.empty()) {
            return shown + " is not known" +
                   (wouldBeValue(attempt) ? "; after '--' it would be a value" : "");
        }
        std::vector<std::string> tags;
        for (const Text& tag : attempt.near) tags.push_back(quoted(tag));
        return shown + " is not known; did you mean " + listed(tags, " or ") + "?";
    }

    // Whether all would be well with "--" before the unknown argument.
    bool wouldBeValue(const Attempt& attempt) const noexcept {
        if (grammar_.isExact()) return false;
        const Argument endOfOptions("--", grammar_.vocabulary);
        Walk walk(formOf(attempt), grammar_.spelling);
        std::vector<Gift> gifts;
        walk.record(gifts);
        for (std::size_t i = 0; i < line_.size(); ++i) {
            if (i == *attempt.unknown && walk.read(endOfOptions) != Reading::accepted) return false;
            if (walk.read(line_[i]) != Reading::accepted) return false;
        }
        const Parameters given = parametersOf(formOf(attempt), gifts);
        return walk.fits() && std::none_of(given.begin(), given.end(), rejection);
    }

    std::string whatIsMissing(const Attempt& attempt,
                              const std::vector<const Attempt*>& tied) const noexcept {
        std::vector<std::string> labels;
        for (const Text& tag : attempt.missing) labels.push_back(labelOf(formOf(attempt), tag));
        if (labels.size() > 1) return listed(labels, " and ") + " are missing";
        for (const Attempt* each : tied) {
            const std::string label = labelOf(formOf(*each), each->missing.front());
            if (std::find(labels.begin(), labels.end(), label) == labels.end()) {
                labels.push_back(label);
            }
        }
        return listed(labels, " or ") + " is missing";
    }

    // Attempts that lack one thing, as this one does, and are as near.
    std::vector<const Attempt*> tiedWith(const Attempt& nearest) const noexcept {
        std::vector<const Attempt*> tied;
        const auto lacksOne = [](const Attempt& each) {
            return !each.fits && !each.unknown && !each.valueMissing && each.repeated.empty() &&
                   each.missing.size() == 1;
        };
        if (!lacksOne(nearest)) return tied;
        for (const Attempt& each : explanation_.attempts) {
            const bool isTied = &each != &nearest && lacksOne(each) &&
                                given(each) == given(nearest) && each.near == nearest.near;
            if (isTied) tied.push_back(&each);
        }
        return tied;
    }
    std::size_t given(const Attempt& attempt) const noexcept {
        return static_cast<std::size_t>(formOf(attempt).requiredCount()) - attempt.missing.size();
    }

    static const SlotRules* rulesOf(const Form& form, const Text& firstTag) noexcept {
        for (const SlotRules& rules : form.slots()) {
            if (!rules.tags().empty() && rules.tags().front() == firstTag) return &rules;
        }
        return nullptr;
    }

    static std::string labelOf(const Form& form, const Text& firstTag) noexcept {
        const SlotRules* rules = rulesOf(form, firstTag);
        if (rules != nullptr) return label(*rules);
        return firstTag.empty() ? "a parameter without a name" : quoted(firstTag);
    }

    // The same for a parameter that is given: its tag as it was typed.
    std::string typedLabel(const Attempt& attempt, const Text& firstTag) const noexcept {
        const SlotRules* rules = rulesOf(formOf(attempt), firstTag);
        if (rules == nullptr || rules->takes) return labelOf(formOf(attempt), firstTag);
        return quoted(typedTags(attempt, firstTag).back());
    }

    // The tags of the parameter as the user typed them; the first one, where they were joined.
    std::vector<Text> typedTags(const Attempt& attempt, const Text& firstTag) const noexcept {
        const Form& form = formOf(attempt);
        const Slot wanted = form.ownerOf(grammar_.vocabulary.find(firstTag));
        std::vector<Text> typed;
        Walk walk(form, grammar_.spelling);
        for (const Argument& argument : line_) {
            Reading reading = walk.read(argument);
            if (reading == Reading::valueMissing) {
                if (attempt.valueMissing) break;
                reading = walk.read(argument);
            }
            if (reading != Reading::accepted || walk.role() != Role::tags) continue;
            if (form.ownerOf(argument.symbol) == wanted) typed.push_back(argument.text);
            if (argument.assignment.value > 0 && form.ownerOf(argument.assignment.name) == wanted) {
                typed.emplace_back(argument.bytes().substr(0, argument.assignment.value - 1));
            }
        }
        if (typed.empty()) typed.push_back(firstTag);
        return typed;
    }

    const Tool& tool_;
    const Grammar grammar_;
    const std::vector<Argument> line_;
    const Explanation& explanation_;
    const std::size_t width_;
    std::vector<Text> lines_;
};

}  // namespace

std::vector<Text> words(const Tool& tool, ArgumentList arguments, const Explanation& explanation,
                        std::size_t width) noexcept {
    return Words(tool, arguments.texts(), explanation, width).lines();
}

}  // namespace Optrella
