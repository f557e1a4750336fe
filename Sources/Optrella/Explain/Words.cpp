// What an explanation says in words.

#include <algorithm>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "Optrella/Explain.hpp"
#include "Optrella/Explain/Explained.hpp"
#include "Optrella/Explain/Problem.hpp"
#include "Optrella/Explain/Tries.hpp"
#include "Optrella/Explain/TypedLine.hpp"
#include "Optrella/Text/Characters.hpp"
#include "Optrella/Tool/Synopsis.hpp"

namespace Optrella {

namespace {

using namespace Internal;

class Speech {
public:
    Speech(const Text& name, const Grammar& grammar, std::span<const Text> arguments,
           const Explanation& explanation, std::size_t width) noexcept
        : name_(name), line_(grammar, arguments), explanation_(explanation), width_(width) {}

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
    using Attempts = std::vector<const Attempt*>;

    void say(std::initializer_list<std::string_view> pieces) noexcept {
        std::string line = name_.str() + ": ";
        for (const std::string_view piece : pieces) line += piece;
        lines_.emplace_back(line);
    }

    void sayWhereHelpIs() noexcept {
        // As parse reads, there is no such option.
        if (line_.grammar().isExact()) return;
        say({"'", name_, " --help' shows all commands"});
    }

    void sayNothing() noexcept {
        say({"no command is given"});
        sayWhereHelpIs();
    }

    void sayUsage(const Attempt& attempt) noexcept {
        const std::string before = name_.str() + ": usage: " + name_.str() + " ";
        const std::size_t taken = columns(before);
        const std::size_t left = width_ > taken ? width_ - taken : 0;
        say({"usage: ", name_, " ", synopsis(line_.formOf(attempt), left)});
    }

    // Of one or two; of more the help is better read.
    void sayUsages(const Attempts& attempts) noexcept {
        if (attempts.size() > 2) return sayWhereHelpIs();
        for (const Attempt* each : attempts) sayUsage(*each);
        if (attempts.size() < 2) sayWhereHelpIs();
    }

    void saySeveral() noexcept {
        std::vector<const Form*> fits;
        for (const Attempt& each : explanation_.attempts) {
            if (each.fits) fits.push_back(&line_.formOf(each));
        }
        std::string typed;
        for (const Argument& argument : line_.arguments()) {
            if (!typed.empty()) typed += ' ';
            typed += argument.bytes();
        }
        const std::string count =
            fits.size() == 2 ? "two" : std::to_string(static_cast<std::int64_t>(fits.size()));
        say({quoted(typed), " fits ", count,
             " commands: ", listed(distinctNames(fits, name_), " and ")});
        sayWhereHelpIs();
    }

    void sayRejected() noexcept {
        if (explanation_.attempts.empty()) return;
        const Attempt& fit = explanation_.attempts.front();
        for (const RejectedValue& each : fit.rejected) say({problemOf(line_, fit, each)});
    }

    void sayNearest() noexcept {
        if (explanation_.attempts.empty()) {
            if (line_.arguments().empty()) return sayNothing();
            say({quoted(line_.arguments().front().text), " is not a command"});
            return sayWhereHelpIs();
        }
        const Attempt& nearest = this->nearest();
        if (lacksWordsAlone(nearest)) return sayMissingWords(nearest);
        // What is given twice may stand for what is missing, as parse counts.
        const bool isMasked = explanation_.outcome == Outcome::parameterMissing;
        if (isMasked || TypedLine::isNothingWrong(nearest)) return sayMissing(nearest);
        say({problemOf(line_, nearest)});
        // Of a command that nobody can have meant the usage would mislead.
        const bool isOnly = explanation_.attempts.size() == 1;
        const bool isCommand = nearest.why != UnknownArgument::notACommand;
        if (isCommand && (isOnly || line_.isMeant(nearest))) sayUsage(nearest);
        sayWhereHelpIs();
    }

    // The nearest attempt, or where that says nothing, another one that knows what was meant.
    [[nodiscard]] const Attempt& nearest() const noexcept {
        const Attempt& first = explanation_.attempts.front();
        if (line_.isMeant(first) || !first.unknown || !first.near.empty()) return first;
        for (const Attempt& each : explanation_.attempts) {
            if (each.unknown == first.unknown && !each.near.empty()) return each;
        }
        return first;
    }

    // ---- What is missing ----

    // An operand comes after the words: where words are missing it is not what is wrong.
    [[nodiscard]] bool lacksWordsAlone(const Attempt& attempt) const noexcept {
        const bool isOperand = attempt.why == UnknownArgument::notExpected;
        if (line_.grammar().isExact() || line_.missingWords(attempt).empty()) return false;
        return isOperand || TypedLine::isNothingWrong(attempt);
    }

    // All commands that begin so.
    void sayMissingWords(const Attempt& nearest) noexcept {
        if (line_.given(nearest) == 0 && explanation_.attempts.size() > 1) return sayNothing();
        Attempts alike;
        std::vector<std::string> words;
        for (const Attempt& each : explanation_.attempts) {
            if (!lacksWordsAlone(each) || line_.given(each) != line_.given(nearest)) continue;
            alike.push_back(&each);
            addOnce(words, quoted(line_.missingWords(each).front()));
        }
        constexpr std::size_t most = 5;
        if (words.size() > most) {
            words.resize(most);
            words.emplace_back("another word");
        }
        say({listed(words, " or "), " is missing"});
        sayUsages(alike);
    }

    void sayMissing(const Attempt& nearest) noexcept {
        const std::string twice = nearest.repeated.empty() ? "" : "; " + problemOf(line_, nearest);
        std::vector<std::string> labels;
        for (const Text& tag : nearest.missing) labels.push_back(line_.labelOf(nearest, tag));
        if (labels.size() > 1) {
            say({listed(labels, " and "), " are missing", twice});
            return sayUsages({&nearest});
        }
        Attempts alike = {&nearest};
        for (const Attempt& each : explanation_.attempts) {
            if (&each == &nearest || !isAsNear(each, nearest)) continue;
            alike.push_back(&each);
            addOnce(labels, line_.labelOf(each, each.missing.front()));
        }
        say({listed(labels, " or "), " is missing", twice});
        sayUsages(alike);
    }

    [[nodiscard]] bool isAsNear(const Attempt& each, const Attempt& nearest) const noexcept {
        return !each.fits && TypedLine::isNothingWrong(each) && each.missing.size() == 1 &&
               line_.missingWords(each).empty() && line_.given(each) == line_.given(nearest);
    }

    static void addOnce(std::vector<std::string>& items, std::string item) noexcept {
        if (std::find(items.begin(), items.end(), item) == items.end()) {
            items.push_back(std::move(item));
        }
    }

    const Text& name_;
    const TypedLine line_;
    const Explanation& explanation_;
    const std::size_t width_;
    std::vector<Text> lines_;
};

}  // namespace

std::vector<Text> Internal::inWords(const Text& name, const Grammar& grammar,
                                    std::span<const Text> arguments, const Explanation& explanation,
                                    std::size_t width) noexcept {
    return Speech(name, grammar, arguments, explanation, width).lines();
}

std::vector<Text> words(const Tool& tool, ArgumentList arguments, const Explanation& explanation,
                        std::size_t width) noexcept {
    return inWords(tool.name, Grammar(tool), arguments.texts(), explanation, width);
}

std::vector<Text> words(const Tool& tool, int argc, const char* const* argv,
                        const Explanation& explanation, std::size_t width) noexcept {
    return words(tool, withoutProgramName(argc, argv), explanation, width);
}

}  // namespace Optrella
