#include "Optrella/CompletionScript/Answer.hpp"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "Optrella/Complete/Offers.hpp"
#include "Optrella/Text/Characters.hpp"
#include "Optrella/Text/Unicode.hpp"
#include "Optrella/Tool/Argument.hpp"
#include "Optrella/Tool/Grammar.hpp"
#include "Optrella/Tool/Walk.hpp"

namespace Optrella::Internal {

namespace {

bool isControl(CodePoint point) noexcept {
    return point.isValid() && (point.value < 0x20 || (point.value >= 0x7F && point.value < 0xA0));
}

bool holdsControl(std::string_view bytes) noexcept {
    for (; !bytes.empty(); bytes.remove_prefix(firstCodePoint(bytes).size)) {
        if (isControl(firstCodePoint(bytes))) return true;
    }
    return false;
}

void appendWithoutControls(std::string& to, std::string_view bytes) noexcept {
    while (!bytes.empty()) {
        const CodePoint point = firstCodePoint(bytes);
        if (!isControl(point)) {
            to += bytes.substr(0, point.size);
        } else if (point.value == '\n' || point.value == '\t') {
            to += ' ';
        }
        bytes.remove_prefix(point.size);
    }
}

std::string_view nameOfKind(const Offer& offer) noexcept {
    using urlType = ParameterFileURL::urlType;
    if (offer.kind == Offer::Kind::tag) return "tag";
    if (offer.kind == Offer::Kind::choice) return "choice";
    if (offer.kind == Offer::Kind::value) return "value";
    if (offer.pathType == urlType::file) return "file";
    return offer.pathType == urlType::folder ? "directory" : "path";
}

using Arguments = std::vector<Argument>;

// Returns the walk after all of them, nothing when the declaration does not accept one.
std::optional<Walk> walkAlong(const Form& form, const Arguments& line) noexcept {
    Walk walk(form, Spelling::conventional);
    for (const Argument& each : line) {
        if (walk.read(each) != Reading::accepted) return std::nullopt;
    }
    return walk;
}

// What is said of a word that names a command, where it has no help of its own: the help of the
// command, when only one is left that it may name.
class CommandHelps {
public:
    CommandHelps(const Tool& tool, const Grammar& grammar, std::span<const Text> before) noexcept
        : tool_(tool),
          vocabulary_(grammar.vocabulary),
          commands_(static_cast<std::size_t>(vocabulary_.size()), none) {
        const Arguments line = argumentsOf(before, vocabulary_);
        for (std::size_t i = 0; i < grammar.forms.size(); ++i) {
            const Form& form = grammar.forms[i];
            if (!form.isHidden() && walkAlong(form, line)) addWordsOf(form, i);
        }
    }

    [[nodiscard]] Text of(const Text& word) const noexcept {
        const Symbol symbol = vocabulary_.find(word);
        const std::size_t command =
            symbol == Vocabulary::unknown ? none : commands_[static_cast<std::size_t>(symbol)];
        return command < several ? Declaration::help(tool_.commandLines[command]) : Text();
    }

private:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);
    static constexpr std::size_t several = none - 1;

    void addWordsOf(const Form& form, std::size_t command) noexcept {
        for (const Form::Owner& owner : form.owners()) {
            if (!form.slot(owner.slot).isRequiredWord) continue;
            std::size_t& known = commands_[static_cast<std::size_t>(owner.tag)];
            known = known == none ? command : several;
        }
    }

    const Tool& tool_;
    const Vocabulary& vocabulary_;
    std::vector<std::size_t> commands_;  // by the symbols of their words
};

// `before` is what stands in the word before the offer.
void appendLine(std::string& to, std::string_view before, const Offer& offer) noexcept {
    const std::string_view word = offer.word ? static_cast<std::string_view>(*offer.word) : "";
    // A shell cannot offer the empty word: it would be a placeholder.
    if (offer.word && (word.empty() || holdsControl(word))) return;
    const bool isWhole = offer.word || offer.kind == Offer::Kind::path;
    to += nameOfKind(offer);
    to += '\t';
    if (isWhole) to.append(before).append(word);
    to += '\t';
    if (!offer.word) {
        appendWithoutControls(to, upperCase(offer.name));
        if (!offer.name.empty() && !offer.help.empty()) to += ": ";
    }
    appendWithoutControls(to, offer.help);
    to += '\n';
}

// "--sort=da" is read as "--sort" and "da", by those declarations alone in which "--sort" has a
// value there.
void appendAssigned(std::string& to, const Tool& tool, const Grammar& grammar,
                    std::span<const Text> before, const Text& current) noexcept {
    const std::size_t value = Argument(current, grammar.vocabulary).assignment.value;
    const std::string_view bytes = current;
    if (value == 0 || holdsControl(bytes.substr(0, value))) return;
    std::vector<Text> line(before.begin(), before.end());
    line.emplace_back(bytes.substr(0, value - 1));
    const Arguments arguments = argumentsOf(line, grammar.vocabulary);
    std::vector<const CommandLinePossibility*> declarations;
    for (std::size_t i = 0; i < grammar.forms.size(); ++i) {
        const std::optional<Walk> walk = walkAlong(grammar.forms[i], arguments);
        if (walk && walk->state().due != noSlot) declarations.push_back(&tool.commandLines[i]);
    }
    const Grammar narrowed(tool, Spelling::conventional, declarations);
    for (const Offer& each : offersOf(tool, narrowed, line, bytes.substr(value), Offers::reduced)) {
        appendLine(to, bytes.substr(0, value), each);
    }
}

}  // namespace

std::string completionAnswer(const Tool& tool, std::span<const Text> typed) noexcept {
    const Text current = typed.empty() ? Text() : typed.back();
    const auto before = typed.first(typed.empty() ? 0 : typed.size() - 1);
    const Grammar grammar(tool, Spelling::conventional);
    const CommandHelps helps(tool, grammar, before);
    std::string answer;
    for (Offer& each : offersOf(tool, grammar, before, current, Offers::reduced)) {
        const bool isBare = each.kind == Offer::Kind::tag && each.help.empty();
        if (isBare) each.help = helps.of(*each.word);
        appendLine(answer, "", each);
    }
    appendAssigned(answer, tool, grammar, before, current);
    return answer;
}

}  // namespace Optrella::Internal
