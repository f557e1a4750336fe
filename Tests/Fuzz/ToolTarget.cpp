// Any tool and any line, in both spellings: that it is explained, completed and checked without a
// stop or a byte of output, and that the answers keep to what they say of each other. With
// OPTRELLA_FUZZ_SHOW in the environment the tool and the line are shown.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "Law.hpp"
#include "Optrella/CommandLine/Matching.hpp"
#include "Optrella/Complete.hpp"
#include "Optrella/Explain.hpp"
#include "Optrella/Lint.hpp"
#include "Optrella/Text/Escapes.hpp"
#include "Optrella/Tool/Walk.hpp"
#include "Output.hpp"
#include "Support/Declarations.hpp"
#include "Support/MatchingModel.hpp"

namespace {

using namespace Optrella;
using namespace Tests;
using Internal::Form;
using Internal::Gift;
using Internal::Grammar;
using Internal::Slot;
using Optrella::Outcome;  // of an explanation

using Line = std::vector<Text>;

// ---- The tool ----

// Words become options, and what only people write.
std::string rewritten(std::string word, Input& input) {
    constexpr std::uint8_t ways = 16;
    switch (input.byte() % ways) {
        case 1:
            return "-" + word;
        case 2:
            return "--" + word;
        case 3:
            return word + "=" + Tests::word(input);
        case 4:
            return "--";
        case 5:
            return "-ab" + word;
        case 6:
            return "--help";
        case 7:
            return word.substr(0, word.size() / 2);
        default:
            return word;
    }
}

using ParameterCases = std::vector<const ParameterCase*>;

ParameterCases rewriteTags(std::vector<CommandCase>& commands, Input& input) {
    ParameterCases all;
    for (CommandCase& command : commands) {
        for (auto* list : {&command.required, &command.optional}) {
            for (ParameterCase& each : *list) {
                for (std::string& tag : each.tags) tag = rewritten(tag, input);
                all.push_back(&each);
            }
        }
    }
    return all;
}

Tool drawnTool(const std::vector<CommandCase>& commands, const ParameterCases& all, Input& input) {
    constexpr std::uint8_t notDeclared = 0xF0;
    const auto parameter = [&]() -> ParameterProtocol {
        const std::uint8_t choice = input.byte();
        if (all.empty() || choice >= notDeclared) return ParameterString({word(input)}, "", "");
        return made(*all[choice % all.size()]);
    };
    Tool tool{.name = word(input),
              .commandLines = made(commands, [](std::size_t, const Parameters&) {
                  law(false, "nothing runs an action");
              })};
    for (std::size_t count = input.upTo(4); count > 0; --count) {
        const auto takes = static_cast<Takes>(input.upTo(2));
        tool.operands.emplace_back(parameter(), takes);
    }
    for (std::size_t count = input.upTo(2); count > 0; --count) {
        tool.repeated.emplace_back(parameter());
    }
    for (std::size_t count = input.upTo(2); count > 0; --count) {
        const std::vector<std::string> values{rewritten(word(input), input), word(input), "free"};
        tool.completers.emplace_back(parameter(), [values] { return values; });
    }
    return tool;
}

// ---- What is shown of a finding ----

std::string shown(const std::string& word) {
    std::string text = " \"";
    Internal::appendEscaped(text, word);
    return text + "\"";
}

void show(const std::vector<CommandCase>& commands, const Tool& tool, const Line& line) {
    std::string text = "name:" + shown(tool.name.str()) + "\n";
    for (const CommandCase& command : commands) {
        text += command.hidden ? "hidden" : "visible";
        for (const auto* list : {&command.required, &command.optional}) {
            text += list == &command.required ? "\n  required:" : "\n  optional:";
            for (const ParameterCase& each : *list) {
                text += " (" + std::to_string(each.kind) + (each.takesValue ? " value" : " flag");
                for (const std::string& tag : each.tags) text += shown(tag);
                for (const auto& option : each.fields.options) {
                    text += " choice:" + (option.empty() ? "" : shown(option.front()));
                }
                for (const auto& [key, number] : each.fields.numbers) {
                    text += " " + key + "=" + std::to_string(number);
                }
                text += ")";
            }
        }
        text += "\n";
    }
    for (const Operand& each : tool.operands) {
        const int takes = static_cast<int>(each.takes());
        text += "operand:" + shown(each.firstTag().value_or(Text()).str()) + std::to_string(takes) +
                "\n";
    }
    for (const Repeated& each : tool.repeated) {
        text += "repeated:" + shown(each.firstTag().value_or(Text()).str()) + "\n";
    }
    for (const Completer& each : tool.completers) {
        text += "completer:" + shown(each.firstTag().value_or(Text()).str()) + " of";
        for (const Text& value : each.values()) text += shown(value.str());
        text += "\n";
    }
    text += "line:";
    for (const Text& each : line) text += shown(each.str());
    std::fprintf(stderr, "%s\n", text.c_str());
}

// ---- What a declaration makes of a line ----

struct Reading {
    bool isRead = true;
    bool fits = false;
    std::vector<Gift> gifts;
};

Reading readingOf(const Grammar& grammar, std::size_t declaration, const Line& line) {
    Reading reading;
    Internal::Walk walk(grammar.forms[declaration], grammar.spelling);
    walk.record(reading.gifts);
    for (const Text& each : line) {
        const Internal::Argument argument(each, grammar.vocabulary);
        if (walk.read(argument) == Internal::Reading::accepted) continue;
        reading.isRead = false;
        return reading;
    }
    reading.fits = walk.fits();
    return reading;
}

bool isChoice(const ParameterList& list, const Text& value) {
    return std::any_of(list.validOptions().begin(), list.validOptions().end(),
                       [&value](const ParameterNone& option) {
                           return !option.common.tags.empty() &&
                                  option.common.tags.front() == value;
                       });
}

bool leavesOut(const Form& form, const Reading& reading) {
    for (Slot slot = 0; slot < form.requiredCount(); ++slot) {
        const bool isGiven = std::any_of(reading.gifts.begin(), reading.gifts.end(),
                                         [slot](const Gift& each) { return each.slot == slot; });
        if (!isGiven) return true;
    }
    return false;
}

// Nothing is missing, nothing twice that need not be, and every choice is one.
bool isGood(const Form& form, const Reading& reading) {
    if (!reading.fits || leavesOut(form, reading)) return false;
    std::vector<int> times(form.slots().size());
    for (const Gift& gift : reading.gifts) {
        const Internal::SlotRules& rules = form.slot(gift.slot);
        if (++times[static_cast<std::size_t>(gift.slot)] > 1 && !rules.mayRepeat) return false;
        const auto* list = rules.parameter.as<ParameterList>();
        if (rules.takesValue && list != nullptr && !isChoice(*list, gift.value)) return false;
    }
    return true;
}

bool isPlainlyWritten(const Grammar& grammar, const Line& line) {
    return !line.empty() && std::all_of(line.begin(), line.end(), [&](const Text& word) {
        if (grammar.vocabulary.find(word) == Internal::Vocabulary::unknown) {
            return !static_cast<std::string_view>(word).starts_with('-');
        }
        return grammar.isExact() || word != "--";
    });
}

// ---- The answers ----

void checkCore(const Tool& tool, const Grammar& grammar, const Line& line) {
    for (std::size_t i = 0; i < tool.commandLines.size(); ++i) {
        const bool fits = Internal::Matcher(line).couldRun(tool.commandLines[i]).has_value();
        law(readingOf(grammar, i, line).fits == fits, "what fits in exact spelling fits for parse");
    }
    takePrinted();
}

void checkAttempt(const Attempt& attempt, const Reading& reading, const Line& line) {
    law(attempt.fits == reading.fits, "an attempt says whether the declaration fits");
    law(attempt.accepted <= line.size(), "no more is accepted than there is");
    law(!attempt.unknown || *attempt.unknown < line.size(), "what is not known is there");
    law(attempt.unknown.has_value() == attempt.why.has_value(), "what is not known has its reason");
    law(attempt.near.size() <= 3, "few tags are near");
    if (!attempt.fits) return;
    law(attempt.accepted == line.size() && !attempt.unknown && !attempt.valueMissing,
        "what fits is accepted");
}

void checkOutcome(const Explanation& explanation) {
    const auto& attempts = explanation.attempts;
    const auto fits = std::count_if(attempts.begin(), attempts.end(),
                                    [](const Attempt& each) { return each.fits; });
    switch (explanation.outcome) {
        case Outcome::runs:
            law(fits == 1 && attempts.front().missing.empty() && attempts.front().rejected.empty(),
                "what runs fits alone, with its values");
            break;
        case Outcome::nothingGiven:
            break;
        case Outcome::nothingFits:
            law(fits == 0, "nothing fits");
            break;
        case Outcome::severalFit:
            law(fits > 1, "several fit");
            break;
        case Outcome::parameterMissing:
            law(fits == 1 && !attempts.front().missing.empty(), "a parameter is missing");
            break;
        case Outcome::valueRejected:
            law(fits == 1 && !attempts.front().rejected.empty(), "a value is rejected");
            break;
    }
}

void checkExplained(const Tool& tool, const Grammar& grammar, const Line& line) {
    const Explanation explanation = explain(tool, line);
    checkOutcome(explanation);
    for (const Attempt& each : explanation.attempts) {
        checkAttempt(each, readingOf(grammar, each.declaration, line), line);
    }
    const std::vector<Text> said = words(tool, line, explanation);
    law(said.empty() == (explanation.outcome == Outcome::runs), "what does not run is said");
    if (explanation.outcome == Outcome::valueRejected) {
        law(said.size() == explanation.attempts.front().rejected.size(), "each value has its line");
    } else {
        law(said.size() <= 3, "three lines are enough");
    }
    const std::string begin = tool.name.str() + ": ";
    for (const Text& each : said) {
        law(each.str().starts_with(begin), "each line begins with the tool's name");
    }
}

using Words = std::unordered_set<Text>;

Words wordsOf(const std::vector<Offer>& offers) {
    Words words;
    for (const Offer& each : offers) {
        if (each.word) law(words.insert(*each.word).second, "a word is offered once");
    }
    return words;
}

bool isSubset(const Words& some, const Words& all) {
    return std::all_of(some.begin(), some.end(),
                       [&all](const Text& each) { return all.contains(each); });
}

// The declaration of a good line: that which it fits alone, and well.
std::optional<std::size_t> declarationOf(const Grammar& grammar, const Line& line) {
    std::optional<std::size_t> found;
    for (std::size_t i = 0; i < grammar.forms.size(); ++i) {
        const Reading reading = readingOf(grammar, i, line);
        if (!reading.fits) continue;
        if (found || grammar.forms[i].isHidden() || !isGood(grammar.forms[i], reading)) return {};
        found = i;
    }
    return isPlainlyWritten(grammar, line) ? found : std::nullopt;
}

bool hasCompleter(const Tool& tool, const Grammar& grammar, const Form& form, Slot slot) {
    return std::any_of(tool.completers.begin(), tool.completers.end(), [&](const Completer& each) {
        return each.firstTag() && form.ownerOf(grammar.vocabulary.find(*each.firstTag())) == slot;
    });
}

// Each word of a good line is offered after those before it.
void checkOffered(const Tool& tool, const Grammar& grammar, const Line& line) {
    const std::optional<std::size_t> declaration = declarationOf(grammar, line);
    if (!declaration) return;
    const Form& form = grammar.forms[*declaration];
    Internal::Walk walk(form, grammar.spelling);
    for (std::size_t place = 0; place < line.size(); ++place) {
        const Internal::Argument word(line[place], grammar.vocabulary);
        walk.read(word);
        const std::vector<Offer> offers =
            complete(tool, std::span(line).first(place), "", Offers::all);
        const bool isChosen = walk.role() == Internal::Role::tags ||
                              form.slot(walk.valued()).parameter.as<ParameterList>() != nullptr;
        if (isChosen) {
            law(wordsOf(offers).contains(word.text), "a tag or a choice of a good line is offered");
        } else if (word.symbol == Internal::Vocabulary::unknown &&
                   !hasCompleter(tool, grammar, form, walk.valued())) {
            law(std::any_of(offers.begin(), offers.end(),
                            [](const Offer& each) { return !each.word; }),
                "a value of a good line is offered");
        }
    }
}

void checkCompleted(const Tool& tool, const Grammar& grammar, const Line& before,
                    const Text& current) {
    const std::vector<Offer> offers = complete(tool, before, "", Offers::all);
    const Words all = wordsOf(offers);
    for (const Text& word : all) {
        Line line = before;
        line.push_back(word);
        bool isRead = false;
        for (std::size_t i = 0; i < grammar.forms.size(); ++i) {
            isRead = isRead || (!grammar.forms[i].isHidden() && readingOf(grammar, i, line).isRead);
        }
        law(isRead, "what is offered is read by a visible declaration");
    }
    law(isSubset(wordsOf(complete(tool, before, "")), all), "for people there is not more");
    const Words begun = wordsOf(complete(tool, before, current, Offers::all));
    law(isSubset(begun, all), "what begins so is among the rest");
    law(begun.contains(current) == all.contains(current), "a whole word begins so");
}

void checkWitness(const Grammar& grammar, const Finding& finding) {
    const Line& line = *finding.witness;
    law(isPlainlyWritten(grammar, line), "a witness is plainly written");
    std::vector<Reading> readings;
    for (const std::size_t each : finding.declarations) {
        readings.push_back(readingOf(grammar, each, line));
        law(readings.back().fits, "a witness fits what is concerned");
    }
    const Form& first = grammar.forms[finding.declarations.front()];
    if (finding.rule == Rule::collision) {
        law(readings.size() == 2 && isGood(first, readings[0]) &&
                isGood(grammar.forms[finding.declarations[1]], readings[1]),
            "the witness of a collision is good for both");
    } else if (finding.rule == Rule::masked) {
        law(grammar.isExact() && leavesOut(first, readings[0]), "the witness leaves something out");
    } else {
        law(finding.rule == Rule::swallows &&
                grammar.vocabulary.find(line.front()) == Internal::Vocabulary::unknown,
            "a command is mistyped");
    }
}

bool areFound(const Findings& findings, Rule rule, const std::vector<std::size_t>& declarations) {
    return std::any_of(findings.begin(), findings.end(), [&](const Finding& each) {
        return each.rule == rule && each.declarations == declarations;
    });
}

// What the line shows, the findings say as well.
void checkFound(const Findings& findings, const Grammar& grammar, const Line& line) {
    if (!isPlainlyWritten(grammar, line)) return;
    std::vector<std::size_t> fitting;
    std::vector<std::size_t> good;
    for (std::size_t i = 0; i < grammar.forms.size(); ++i) {
        const Reading reading = readingOf(grammar, i, line);
        if (reading.fits) fitting.push_back(i);
        if (isGood(grammar.forms[i], reading)) good.push_back(i);
    }
    if (fitting.size() == 1) {
        law(!areFound(findings, Rule::unreachable, fitting), "what a line fits alone is reachable");
    }
    if (good.size() == 2) law(areFound(findings, Rule::collision, good), "a collision is found");
}

void checkLinted(const Tool& tool, const Grammar& grammar, const Line& line) {
    const Findings all = lint(tool, Notes::included);
    for (const Finding& each : all) {
        law(!each.sentence.empty(), "a finding is said");
        for (const std::size_t declaration : each.declarations) {
            law(declaration < grammar.forms.size(), "what is concerned is declared");
        }
        if (each.witness) checkWitness(grammar, each);
    }
    checkFound(all, grammar, line);
    Findings withoutNotes = all;
    std::erase_if(withoutNotes,
                  [](const Finding& each) { return each.severity == Severity::note; });
    law(lint(tool) == withoutNotes, "notes alone are left out");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    setUpPlatform(input);
    std::vector<CommandCase> cases = commands(input, false);
    const ParameterCases all = rewriteTags(cases, input);
    Tool tool = drawnTool(cases, all, input);
    std::vector<std::string> typed = arguments(input, cases);
    for (std::string& each : typed) each = rewritten(each, input);
    const Line line(typed.begin(), typed.end());
    const Text current = word(input);

    if (std::getenv("OPTRELLA_FUZZ_SHOW") != nullptr) show(cases, tool, line);

    for (const Spelling spelling : {Spelling::exact, Spelling::conventional}) {
        tool.spelling = spelling;
        const Grammar grammar(tool);
        if (grammar.isExact()) checkCore(tool, grammar, line);
        checkExplained(tool, grammar, line);
        checkCompleted(tool, grammar, line, current);
        checkOffered(tool, grammar, line);
        checkLinted(tool, grammar, line);
        sameBytes(takePrinted(), "", "nothing is printed");
    }
    return 0;
}
