// What an explanation says in words.

#include <algorithm>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include "Optrella/Explain.hpp"
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
                say({"no command is given"});
                sayWhereHelpIs();
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

    void sayUsage(const Attempt& attempt) noexcept {
        const std::string before = tool_.name.str() + ": usage: " + tool_.name.str() + " ";
        const std::size_t taken = columns(before);
        const std::size_t left = width_ > taken ? width_ - taken : 0;
        say({"usage: ", tool_.name, " ", synopsis(formOf(attempt), left)});
    }

    void saySeveral() noexcept {
        std::vector<std::string> names;
        for (const Attempt& each : explanation_.attempts) {
            if (each.fits) names.push_back(quoted(commandName(formOf(each))));
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
            say({labelOf(formOf(fit), each.parameter), ": ", printable(each.message)});
        }
    }

    void sayNearest() noexcept {
        if (explanation_.attempts.empty()) {
            say({line_.empty() ? "" : quoted(line_.front().text), " is not a command"});
            sayWhereHelpIs();
            return;
        }
        const Attempt& nearest = explanation_.attempts.front();
        const auto tied = tiedWith(nearest);
        say({problemOf(nearest, tied)});
        if (nearest.why == UnknownArgument::notACommand) {
            sayWhereHelpIs();
            return;
        }
        sayUsage(nearest);
        if (tied.size() == 1) {
            sayUsage(*tied.front());
        } else {
            sayWhereHelpIs();
        }
    }

    // The first thing that is wrong.
    std::string problemOf(const Attempt& attempt,
                          const std::vector<const Attempt*>& tied) const noexcept {
        if (attempt.unknown) return unknownArgument(attempt);
        if (attempt.valueMissing) {
            return typedTag(attempt, *attempt.valueMissing) + " needs a value";
        }
        if (!attempt.repeated.empty()) {
            return typedTag(attempt, attempt.repeated.front()) + " is given twice";
        }
        return whatIsMissing(attempt, tied);
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
        for (std::size_t i = 0; i < line_.size(); ++i) {
            if (i == *attempt.unknown && walk.read(endOfOptions) != Reading::accepted) return false;
            if (walk.read(line_[i]) != Reading::accepted) return false;
        }
        return walk.fits();
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

    std::string labelOf(const Form& form, const Text& firstTag) const noexcept {
        for (const SlotRules& rules : form.slots()) {
            if (!rules.tags().empty() && rules.tags().front() == firstTag) return label(rules);
        }
        return firstTag.empty() ? "a parameter without a name" : quoted(firstTag);
    }

    // The tag of the parameter that the user typed last; the first one, where it was joined.
    std::string typedTag(const Attempt& attempt, const Text& firstTag) const noexcept {
        const Form& form = formOf(attempt);
        const Slot wanted = form.ownerOf(grammar_.vocabulary.find(firstTag));
        Text typed = firstTag;
        Walk walk(form, grammar_.spelling);
        for (const Argument& argument : line_) {
            Reading reading = walk.read(argument);
            if (reading == Reading::valueMissing) {
                if (attempt.valueMissing) break;
                reading = walk.read(argument);
            }
            const bool isTag = reading == Reading::accepted && walk.role() == Role::tags;
            if (isTag && form.ownerOf(argument.symbol) == wanted) typed = argument.text;
        }
        return quoted(typed);
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
