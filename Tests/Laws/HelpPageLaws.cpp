// Whatever is declared, a help page stays within its width, and shows what there is.

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "Drawn.hpp"
#include "Optrella/HelpPage.hpp"
#include "Optrella/Text/Characters.hpp"
#include "Optrella/Text/Escapes.hpp"
#include "Optrella/Tool/Grammar.hpp"
#include "Support/Capture.hpp"

namespace {

using namespace Optrella;
using namespace Tests;
using Strings = std::vector<std::string>;

// ---- Drawn tools ----

std::string drawnProse() {
    std::string text;
    for (auto left = *rc::gen::inRange(0, 12); left > 0; --left) {
        text += *rc::gen::elementOf(Strings{"word", " ", "  ", "\n", "\n\n", "\t", ". ", "e.g. a",
                                            "A long-ish-word-without-spaces", "e\u0301", "\u0301",
                                            "\u65E5\u672C\u8A9E", "\u3002", "\uFF08", "\x1B[31m",
                                            "\U0001F469\u200D\U0001F52C", "\xFF", "\u202E\u202C"});
    }
    return text;
}

void giveHelp(CommandCase& command) {
    if (isDrawn(1, 2)) command.help = drawnProse();
    for (auto* list : {&command.required, &command.optional}) {
        for (ParameterCase& each : *list) {
            if (isDrawn(1, 2)) each.help = drawnProse();
        }
    }
}

void declareOperands(Tool& tool, const CommandCase& command) {
    for (const ParameterCase& each : command.required) {
        const Takes takes = *rc::gen::element(Takes::one, Takes::many, Takes::rest);
        if (isDrawn(1, 2)) tool.operands.emplace_back(made(each), takes);
        if (isDrawn(1, 4)) tool.repeated.emplace_back(made(each));
    }
}

Tool drawnTool() {
    std::vector<CommandCase> commands = drawnCase().commands;
    if (isDrawn(1, 4)) {
        const std::vector<CommandCase> again = commands;
        commands.insert(commands.end(), again.begin(), again.end());
    }
    for (CommandCase& each : commands) giveHelp(each);
    Tool tool{.name = "items",
              .version = isDrawn(1, 2) ? "1.0" : "",
              .summary = drawnProse(),
              .commandLines = made(commands, [](std::size_t, const Parameters&) {})};
    for (const CommandCase& each : commands) declareOperands(tool, each);
    return tool;
}

// Nothing for the overview.
std::vector<std::size_t> drawnPage(const Tool& tool) {
    std::vector<std::size_t> page;
    for (std::size_t i = 0; i < tool.commandLines.size(); ++i) {
        if (isDrawn(1, 3)) page.push_back(i);
    }
    return page;
}

std::string pageOf(const Tool& tool, const std::vector<std::size_t>& page, std::size_t width,
                   Emphasis emphasis = Emphasis::none) {
    const Text text =
        page.empty() ? helpPage(tool, width, emphasis) : helpPage(tool, page, width, emphasis);
    return text.str();
}

// ---- What is in a page ----

Strings linesOf(std::string_view page) {
    Strings lines;
    for (std::size_t end = page.find('\n'); !page.empty(); end = page.find('\n')) {
        lines.emplace_back(page.substr(0, end));
        page.remove_prefix(end + 1);
    }
    return lines;
}

std::string withoutSpace(std::string_view text) {
    std::string left(text);
    std::erase_if(left, [](char byte) { return byte == ' ' || byte == '\n'; });
    return left;
}

std::string printable(std::string_view text) {
    std::string shown;
    Internal::appendPrintable(shown, text);
    return shown;
}

bool holds(const std::string& page, const Text& tag) {
    const std::string shown = withoutSpace(printable(tag));
    return withoutSpace(page).find(shown) != std::string::npos;
}

bool isOneWord(const std::string& line) {
    const auto characters = Internal::canonicalCharacters(line);
    const auto isSpace = [](const std::string& character) { return character == " "; };
    const auto begin = std::find_if_not(characters.begin(), characters.end(), isSpace);
    return std::none_of(begin, characters.end(), isSpace);
}

std::string withoutSequences(const std::string& page) {
    std::string text;
    for (std::size_t place = 0; place < page.size(); ++place) {
        if (page[place] == '\x1B') {
            place = page.find('m', place);
        } else {
            text += page[place];
        }
    }
    return text;
}

}  // namespace

TEST(HelpPageLaws, ALineIsWiderThanThePageOnlyWhereAWordIs) {
    EXPECT_TRUE(rc::check("width", [] {
        const Tool tool = drawnTool();
        const auto width = *rc::gen::inRange<std::size_t>(0, 130);
        std::size_t wide = 0;
        for (const std::string& line : linesOf(pageOf(tool, drawnPage(tool), width))) {
            if (Internal::columns(line) <= width) continue;
            RC_LOG(line + "\n");
            RC_ASSERT(isOneWord(line));
            ++wide;
        }
        RC_CLASSIFY(wide > 0, "a word is wider");
    }));
}

TEST(HelpPageLaws, ATerminalGetsNothingThatItWouldObeyAndNoSpaceAtTheEndOfALine) {
    EXPECT_TRUE(rc::check("printable", [] {
        const Tool tool = drawnTool();
        const auto width = *rc::gen::inRange<std::size_t>(0, 130);
        std::string page;
        RC_ASSERT(printed([&] { page = pageOf(tool, drawnPage(tool), width); }).empty());
        RC_ASSERT(page.ends_with('\n'));
        for (const std::string& line : linesOf(page)) {
            RC_ASSERT(printable(line) == line);
            RC_ASSERT(!line.ends_with(' '));
        }
    }));
}

TEST(HelpPageLaws, EmphasisChangesNothingButItsSequencesWhichEachLineEnds) {
    EXPECT_TRUE(rc::check("emphasis", [] {
        const Tool tool = drawnTool();
        const auto width = *rc::gen::inRange<std::size_t>(0, 130);
        const auto page = drawnPage(tool);
        const std::string styled = pageOf(tool, page, width, Emphasis::terminal);
        RC_ASSERT(withoutSequences(styled) == pageOf(tool, page, width));
        for (const std::string& line : linesOf(styled)) {
            const std::size_t last = line.rfind('\x1B');
            if (last != std::string::npos) RC_ASSERT(line.substr(last).starts_with("\x1B[0m"));
        }
    }));
}

TEST(HelpPageLaws, EachVisibleCommandIsInTheOverview) {
    EXPECT_TRUE(rc::check("overview", [] {
        const Tool tool = drawnTool();
        const std::string page = pageOf(tool, {}, *rc::gen::inRange<std::size_t>(0, 130));
        const Internal::Grammar grammar(tool);
        for (const Internal::Form& form : grammar.forms) {
            if (form.isHidden()) continue;
            for (const Internal::SlotRules& rules : form.slots()) {
                const bool isNaming = rules.isRequired && !rules.takes && !rules.tags().empty();
                if (!isNaming || !Internal::isWord(rules.tags())) continue;
                RC_ASSERT(holds(page, rules.tags().front()));
            }
        }
        RC_CLASSIFY(grammar.forms.size() > 3, "many");
    }));
}

TEST(HelpPageLaws, EachTagIsOnThePageOfItsCommand) {
    EXPECT_TRUE(rc::check("tags", [] {
        const Tool tool = drawnTool();
        const auto width = *rc::gen::inRange<std::size_t>(0, 130);
        const Internal::Grammar grammar(tool);
        for (std::size_t i = 0; i < grammar.forms.size(); ++i) {
            const std::string page = pageOf(tool, {i}, width);
            for (const Internal::SlotRules& rules : grammar.forms[i].slots()) {
                if (rules.takes) continue;
                for (const Text& tag : rules.tags()) RC_ASSERT(holds(page, tag));
            }
        }
    }));
}
