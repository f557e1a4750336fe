#include "Optrella/CompletionScript/Answer.hpp"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "Optrella/Complete.hpp"
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
    using enum ParameterFileURL::urlType;
    switch (offer.kind) {
        case Offer::Kind::tag: return "tag";
        case Offer::Kind::choice: return "choice";
        case Offer::Kind::value: return "value";
        case Offer::Kind::path: break;
    }
    return offer.pathType == file ? "file" : offer.pathType == folder ? "directory" : "path";
}

// `before` is what stands in the word before the offer.
void appendLine(std::string& to, std::string_view before, const Offer& offer) noexcept {
    const std::string_view word = offer.word ? std::string_view(*offer.word) : "";
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

// Returns whether the next argument is the value of the last one.
bool isValueDue(const Form& form, const std::vector<Argument>& line) noexcept {
    Walk walk(form, Spelling::conventional);
    for (const Argument& each : line) {
        if (walk.read(each) != Reading::accepted) return false;
    }
    return walk.state().due != noSlot;
}

// "--sort=da" is read as "--sort" and "da", by those declarations alone in which "--sort" has a
// value there.
void appendAssigned(std::string& to, const Tool& tool, std::span<const Text> before,
                    const Text& current) noexcept {
    const Grammar grammar(tool);
    const std::size_t value = Argument(current, grammar.vocabulary).assignment.value;
    const std::string_view bytes = current;
    const std::string_view beginning = bytes.substr(0, value);
    if (value == 0 || holdsControl(beginning)) return;
    std::vector<Text> line(before.begin(), before.end());
    line.emplace_back(bytes.substr(0, value - 1));
    std::vector<Argument> arguments;
    for (const Text& each : line) arguments.emplace_back(each, grammar.vocabulary);
    std::vector<CommandLinePossibility> declarations;
    for (std::size_t i = 0; i < grammar.forms.size(); ++i) {
        if (isValueDue(grammar.forms[i], arguments)) declarations.push_back(tool.commandLines[i]);
    }
    Tool narrowed = tool;
    narrowed.commandLines = std::move(declarations);
    for (const Offer& each : complete(narrowed, line, bytes.substr(value))) {
        appendLine(to, beginning, each);
    }
}

}  // namespace

std::string completionAnswer(const Tool& tool, std::span<const Text> typed) noexcept {
    Tool conventional = tool;
    conventional.spelling = Spelling::conventional;
    const Text current = typed.empty() ? Text() : typed.back();
    const auto before = typed.first(typed.empty() ? 0 : typed.size() - 1);
    std::string answer;
    for (const Offer& each : complete(conventional, before, current)) appendLine(answer, "", each);
    appendAssigned(answer, conventional, before, current);
    return answer;
}

}  // namespace Optrella::Internal
