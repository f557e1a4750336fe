#include "Optrella/HelpPage/Command.hpp"

#include <algorithm>

namespace Optrella::Internal {

namespace {

std::vector<Text> wordsOf(const Form& form) noexcept {
    std::vector<Text> words;
    for (const SlotRules& rules : form.slots()) {
        const bool isNaming = rules.isRequired && !rules.takes && isWord(rules.tags());
        if (isNaming) words.push_back(rules.tags().front());
    }
    return words;
}

// The first line of the text, or the first sentence of that.
std::string_view firstSentence(std::string_view text) noexcept {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    text = text.substr(0, text.find('\n'));
    constexpr std::string_view ideographicStop = "\xE3\x80\x82";
    if (const std::size_t stop = text.find(ideographicStop); stop != std::string_view::npos) {
        text = text.substr(0, stop + ideographicStop.size());
    }
    std::size_t end = text.find(". ");
    while (end != std::string_view::npos) {
        const std::size_t next = std::min(text.find_first_not_of(' ', end + 1), text.size() - 1);
        // As in "e.g. this".
        const bool goesOn = text[next] >= 'a' && text[next] <= 'z';
        if (!goesOn) return text.substr(0, end + 1);
        end = text.find(". ", next);
    }
    return text;
}

}  // namespace

Command::Command(const Tool& tool, const Grammar& grammar, std::size_t index) noexcept
    : tool_(&tool),
      form_(&grammar.forms[index]),
      help_(&Declaration::help(tool.commandLines[index])),
      words_(wordsOf(*form_)) {}

Prose Command::synopsis(Extent extent) const noexcept {
    Prose synopsis;
    for (const SynopsisPart& part : synopsisParts(*form_, extent)) {
        const std::string_view text = part.text;
        const bool hasWord = part.wordSize > 0;
        synopsis.add(text.substr(0, part.wordSize), Style::typed);
        synopsis.add(text.substr(part.wordSize), Style::plain, hasWord ? Join::inner : Join::space);
    }
    return synopsis;
}

Prose Command::usage(std::size_t room) const noexcept {
    const auto usage = [this](Extent extent) {
        Prose line;
        line.add(tool_->name, Style::typed);
        line.add(synopsis(extent), Join::space);
        return line;
    };
    // Otherwise they are listed right below it, or on a page of their own.
    constexpr std::size_t mostLines = 3;
    Prose whole = usage(Extent::whole);
    return whole.columns() > mostLines * room ? usage(Extent::shortened) : whole;
}

Prose Command::help(const Text& said) const noexcept {
    return withRights(*help_ == said ? Text() : *help_);
}

Prose Command::summary() const noexcept { return withRights(firstSentence(*help_)); }

Prose Command::withRights(std::string_view help) const noexcept {
    Prose text;
    text.addText(help);
    if (form_->requiresRoot()) text.add("(as root)");
    return text;
}

}  // namespace Optrella::Internal
