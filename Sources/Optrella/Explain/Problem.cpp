#include "Optrella/Explain/Problem.hpp"

#include <algorithm>
#include <optional>

#include "Optrella/Explain/Nearness.hpp"
#include "Optrella/Explain/Rejection.hpp"
#include "Optrella/Parameters/Decimal.hpp"
#include "Optrella/Text/Characters.hpp"
#include "Optrella/Text/Escapes.hpp"
#include "Optrella/Tool/Conditions.hpp"
#include "Optrella/Tool/Synopsis.hpp"

namespace Optrella::Internal {

namespace {

std::string printable(const Text& message) noexcept {
    if (!holdsUnprintable(message)) return message.str();
    std::string escaped;
    appendEscaped(escaped, message);
    return escaped;
}

// ---- An argument that is not known ----

class UnknownProblem {
public:
    UnknownProblem(const TypedLine& line, const Attempt& attempt) noexcept
        : line_(line),
          attempt_(attempt),
          argument_(line.arguments()[*attempt.unknown]),
          walk_(line.walkToUnknown(attempt)),
          shown_(quoted(argument_.text)) {}

    [[nodiscard]] std::string sentence() const noexcept {
        switch (*attempt_.why) {
            case UnknownArgument::takesNoValue:
                return quoted(argument_.bytes().substr(0, argument_.assignment.value - 1)) +
                       " takes no value";
            case UnknownArgument::notACommand:
                return shown_ + " is not a command";
            case UnknownArgument::notExpected:
                return notExpected();
            case UnknownArgument::notKnown:
                break;
        }
        const bool isAfterEnd = walk_.state().isPlain;
        if (isAfterEnd && isTag()) return shown_ + " is not expected after '--'";
        if (!attempt_.near.empty()) return shown_ + " is not known; did you mean " + meant() + "?";
        return isAfterEnd || !argument_.isOptionLike ? shown_ + " is not known" : option();
    }

private:
    [[nodiscard]] bool isTag() const noexcept {
        return line_.formOf(attempt_).ownerOf(argument_.symbol) != noSlot;
    }

    [[nodiscard]] std::string notExpected() const noexcept {
        const std::optional<Text> later = line_.laterWord(attempt_);
        return shown_ + " is not expected " + (later ? "before " + quoted(*later) : "here");
    }

    [[nodiscard]] std::string meant() const noexcept {
        std::vector<std::string> tags;
        for (const Text& tag : attempt_.near) tags.push_back(quoted(withValue(tag)));
        return listed(tags, " or ");
    }

    // The tag with the value that was typed after an equals sign, as it is to be typed.
    [[nodiscard]] std::string withValue(const Text& tag) const noexcept {
        const std::size_t equals = argument_.bytes().find('=');
        const SlotRules* rules = line_.rulesOf(attempt_, tag);
        const bool isShort = !static_cast<std::string_view>(tag).starts_with("--");
        const char* between = walk_.isExact() ? " " : isShort ? "" : "=";
        if (equals == std::string_view::npos || !rules->takesValue || !looksLikeOption(tag)) {
            return tag.str();
        }
        return tag.str().append(between).append(argument_.bytes().substr(equals + 1));
    }

    [[nodiscard]] std::string option() const noexcept {
        if (const std::optional<std::string> bounds = outOfBounds()) return *bounds;
        if (line_.given(attempt_) > 0 && isAnotherCommands()) {
            return shown_ + " is not an option of " + quoted(commandName(line_.formOf(attempt_)));
        }
        if (const std::optional<std::string> letter = unknownLetter()) return *letter;
        if (isNearHelp()) return shown_ + " is not known; did you mean '--help'?";
        const bool isHint = argument_.symbol == Vocabulary::unknown && argument_.text != "--help" &&
                            line_.isMissedAsValue(attempt_);
        return shown_ + " is not known" + (isHint ? "; after '--' it would be a value" : "");
    }

    // Every tool that is read conventionally answers it, though no declaration has it.
    [[nodiscard]] bool isNearHelp() const noexcept {
        if (walk_.isExact() || argument_.text == "--help") return false;
        return Comparable(argument_.bytes()).distanceTo(Comparable("--help")).has_value();
    }

    // A negative number where one is due that may be negative.
    [[nodiscard]] std::optional<std::string> outOfBounds() const noexcept {
        const Slot taker = walk_.isExact() ? noSlot : walk_.takerOfPlain();
        if (taker == noSlot || !decimal(argument_.text)) return std::nullopt;
        const SlotRules& rules = walk_.form().slot(taker);
        const auto* number = rules.parameter.as<ParameterNumber>();
        if (number == nullptr || number->rangeMin() >= 0) return std::nullopt;
        ParameterProtocol given(rules.parameter);
        given.storeUserValue(argument_.text);
        const std::optional<Text> message = rejection(given);
        if (!message) return std::nullopt;
        return label(rules) + ": " + message->str();
    }

    [[nodiscard]] bool isAnotherCommands() const noexcept {
        const auto& forms = line_.grammar().forms;
        return anyOf(forms, [this](const Form& form) {
            return !form.isHidden() && form.ownerOf(argument_.symbol) != noSlot;
        });
    }

    // Of several that are joined.
    [[nodiscard]] std::optional<std::string> unknownLetter() const noexcept {
        const Form& form = line_.formOf(attempt_);
        const auto isKnown = [&form](const Argument::Letter& letter) {
            return form.ownerOf(letter.option) != noSlot;
        };
        const auto& letters = argument_.letters;
        const auto unknown = std::find_if_not(letters.begin(), letters.end(), isKnown);
        if (unknown == letters.begin() || unknown == letters.end()) return std::nullopt;
        if (walk_.isExact()) return std::nullopt;  // nothing is joined
        const std::size_t begin = (unknown - 1)->end;
        const std::string letter(argument_.bytes().substr(begin, unknown->end - begin));
        if (letter == "=") return std::nullopt;
        return quoted("-" + letter) + " in " + shown_ + " is not known";
    }

    const TypedLine& line_;
    const Attempt& attempt_;
    const Argument& argument_;
    const Walk walk_;
    const std::string shown_;
};

std::string whatIsTwice(const TypedLine& line, const Attempt& attempt) noexcept {
    const Text& tag = attempt.repeated.front();
    const std::vector<Text> typed = line.typedTags(attempt, tag);
    const auto isOther = [&typed](const Text& each) { return each != typed.back(); };
    const auto other = std::find_if(typed.begin(), typed.end(), isOther);
    const std::string sentence = line.typedLabel(attempt, tag) + " is given twice";
    return other == typed.end() ? sentence : sentence + ", also as " + quoted(*other);
}

// ---- A value that does not hold ----

std::vector<Text> choicesOf(const ParameterList& list) noexcept {
    std::vector<Text> choices;
    for (const ParameterNone& option : list.validOptions()) {
        if (!option.common.tags.empty()) choices.push_back(option.common.tags.front());
    }
    return choices;
}

// The choice that is nearest to what was typed, if one is near.
std::optional<Text> nearestChoice(const ParameterList& list, const Text& value) noexcept {
    const Comparable typed(value);
    std::optional<Text> nearest;
    std::size_t least = 0;
    for (const Text& choice : choicesOf(list)) {
        const std::optional<std::size_t> distance = typed.distanceTo(Comparable(choice));
        if (!distance || (nearest && *distance >= least)) continue;
        nearest = choice;
        least = *distance;
    }
    return nearest;
}

}  // namespace

std::string problemOf(const TypedLine& line, const Attempt& attempt) noexcept {
    if (attempt.unknown) return UnknownProblem(line, attempt).sentence();
    if (attempt.valueMissing) {
        return line.typedLabel(attempt, *attempt.valueMissing) + " needs a value";
    }
    return whatIsTwice(line, attempt);
}

std::string problemOf(const TypedLine& line, const Attempt& fit,
                      const RejectedValue& rejected) noexcept {
    const std::string label = line.typedLabel(fit, rejected.parameter);
    const SlotRules* rules = line.rulesOf(fit, rejected.parameter);
    const auto* list = rules != nullptr ? rules->parameter.as<ParameterList>() : nullptr;
    if (list != nullptr && rejected.value.empty()) {
        std::vector<std::string> choices;
        for (const Text& choice : choicesOf(*list)) choices.push_back(quoted(choice));
        return label + " needs a value: " + listed(choices, " or ");
    }
    std::string sentence = label + ": " + printable(rejected.message);
    if (list == nullptr) return sentence;
    if (const std::optional<Text> choice = nearestChoice(*list, rejected.value)) {
        sentence += "; did you mean " + quoted(*choice) + "?";
    }
    return sentence;
}

std::string listed(const std::vector<std::string>& items, std::string_view conjunction) noexcept {
    std::string list;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0) list += i + 1 == items.size() ? conjunction : ", ";
        list += items[i];
    }
    return list;
}

}  // namespace Optrella::Internal
