#include "Optrella/ManualPage.hpp"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <span>
#include <string>
#include <string_view>

#include "Optrella/CommandLine/Declaration.hpp"
#include "Optrella/ManualPage/Mdoc.hpp"
#include "Optrella/Text/Characters.hpp"
#include "Optrella/Tool/Argument.hpp"
#include "Optrella/Tool/Bounds.hpp"
#include "Optrella/Tool/Conditions.hpp"
#include "Optrella/Tool/Grammar.hpp"
#include "Optrella/Tool/OwnOption.hpp"
#include "Optrella/Tool/Synopsis.hpp"

namespace Optrella {

namespace {

using namespace Internal;

bool isOption(const SlotRules& rules) noexcept { return !rules.isRequired && !rules.takes; }

bool hasOptions(const Form& form) noexcept { return anyOf(form.slots(), isOption); }

// Those that are no operands, words first.
template <class Action>
void forEachRequired(const Form& form, Action action) noexcept {
    for (const bool areWords : {true, false}) {
        for (const SlotRules& rules : form.slots()) {
            if (!rules.isRequired || rules.takes) continue;
            if (rules.isRequiredWord == areWords) action(rules);
        }
    }
}

std::string joined(std::initializer_list<std::string_view> pieces) noexcept {
    std::string whole;
    for (const std::string_view piece : pieces) whole += piece;
    return whole;
}

// ---- What stands for a parameter ----

std::string tagMacro(const Text& tag) noexcept {
    const std::string_view bytes = tag;
    // The macro writes the dash.
    if (looksLikeOption(bytes)) return joined({"Fl ", mdocArgument(bytes.substr(1))});
    return joined({"Cm ", mdocArgument(bytes)});
}

// "Fl n | Fl \-limit Ar COUNT", "Ar DISK Ns ...".
std::string written(const SlotRules& rules, std::string_view between) noexcept {
    std::string macros;
    if (!rules.takes) {
        for (const Text& tag : rules.tags()) {
            if (!macros.empty()) macros.append(between);
            macros += tagMacro(tag);
        }
    }
    if (!rules.takesValue) return macros;
    const bool isMany = rules.takes && rules.takes != Takes::one;
    return joined({macros, macros.empty() ? "Ar " : " Ar ", mdocArgument(valueName(rules)),
                   isMany ? " Ns ..." : ""});
}

// ---- What a parameter takes ----

std::string boundsOf(const ParameterNumber& number) noexcept {
    const auto [least, greatest] = Bounds(number);
    if (least && greatest) return joined({"A whole number from ", *least, " to ", *greatest, "."});
    if (least) return joined({"A whole number, at least ", *least, "."});
    if (greatest) return joined({"A whole number, at most ", *greatest, "."});
    return "A whole number.";
}

std::string_view thingAt(ParameterFileURL::urlType type) noexcept {
    if (type == ParameterFileURL::urlType::file) return "file";
    return type == ParameterFileURL::urlType::folder ? "directory" : "file or directory";
}

std::string pathOf(const ParameterFileURL& path) noexcept {
    using State = ParameterFileURL::existState;
    const std::string_view existing = path.state == State::exist ? "An existing " : "A ";
    const std::string_view absent = path.state == State::absent ? " that does not exist yet" : "";
    return joined({existing, thingAt(path.type), absent, "."});
}

// Sentences.
std::string factsOf(const SlotRules& rules) noexcept {
    std::string facts;
    if (const auto* number = rules.parameter.as<ParameterNumber>()) facts = boundsOf(*number);
    if (const auto* path = rules.parameter.as<ParameterFileURL>()) facts = pathOf(*path);
    if (rules.parameter.as<ParameterUUID>() != nullptr) facts = "A UUID.";
    if (rules.takes == Takes::rest) facts += " All further arguments are taken as they stand.";
    const bool mayBeRepeated = rules.takesValue && rules.mayRepeat && !rules.takes;
    if (mayBeRepeated) facts += " May be given more than once.";
    return facts;
}

// A sentence of our own follows.
std::string ended(const Text& help) noexcept {
    const std::string bytes = help.str();
    const char last = bytes.empty() ? '.' : bytes.back();
    const bool isLetter = (last >= 'a' && last <= 'z') || (last >= 'A' && last <= 'Z');
    const bool isOpen = isLetter || (last >= '0' && last <= '9') || last == ')';
    return isOpen ? bytes + '.' : bytes;
}

// ---- The page ----

class Page {
public:
    explicit Page(const Tool& tool) noexcept
        : tool_(tool),
          name_(tool.name.empty() ? "untitled" : tool.name),
          grammar_(tool, Spelling::conventional) {}

    std::string text() noexcept {
        addTitle();
        addName();
        addSynopsis();
        addDescription();
        addCommands();
        addOwnOptions();
        addExitStatus();
        return page_;
    }

private:
    // Called from many places: small rather than fast.
    [[gnu::noinline]] void line(std::string_view first, std::string_view second = {},
                                std::string_view third = {}) noexcept {
        page_.append(first).append(second).append(third) += '\n';
    }
    void beginList() noexcept { line(".Bl -tag -width Ds"); }
    void endList() noexcept { line(".El"); }

    // Nobody knows when the texts were written, and the day of the build would make another page of
    // the same tool. Of all ways to give no date, only the keyword that version control would fill
    // in is taken by formatters without a word; they show the day on which the page is read.
    void addTitle() noexcept {
        line(".Dd $Mdocdate$");
        line(".Dt ", title(), tool_.manualSection == 8 ? " 8" : " 1");
        line(".Os");
    }

    // In capitals. An escape would have small letters.
    [[nodiscard]] std::string title() const noexcept {
        std::string title;
        for (const char each : upperCase(name_)) {
            const bool isPlain = (each >= 'A' && each <= 'Z') || (each >= '0' && each <= '9') ||
                                 each == '_' || each == '+';
            if (each == '-') title += '\\';
            title += isPlain || each == '-' ? each : '?';
        }
        return title;
    }

    // The summary is no sentence here, by custom, and stands on one line, for those who index it.
    void addName() noexcept {
        line(".Sh NAME");
        line(".Nm ", mdocArgument(name_));
        std::string_view summary = tool_.summary;
        if (summary.ends_with('.') && !summary.ends_with("..")) summary.remove_suffix(1);
        const std::string words = mdocArguments(summary);
        line(".Nd ", words.empty() ? "command\\-line tool" : words);
    }

    template <class Action>
    void forEachVisible(Action action) const noexcept {
        for (const Form& form : grammar_.forms) {
            if (!form.isHidden()) action(form);
        }
    }
    template <class Condition>
    [[nodiscard]] bool hasVisible(Condition condition) const noexcept {
        bool has = false;
        forEachVisible([&](const Form& form) { has = has || condition(form); });
        return has;
    }

    // ---- SYNOPSIS ----

    void addSynopsis() noexcept {
        line(".Sh SYNOPSIS");
        if (!hasVisible([](const Form&) { return true; })) line(".Nm");
        forEachVisible([this](const Form& form) {
            line(".Nm");
            forEachRequired(form, [this](const SlotRules& rules) { addUsage(rules); });
            addOptions(form);
            for (const Slot operand : form.operands()) addUsage(form.slot(operand));
        });
    }

    // More than two lines of a terminal are no overview.
    void addOptions(const Form& form) noexcept {
        constexpr std::size_t most = 160;
        const bool isLong = columns(synopsis(form, std::numeric_limits<std::size_t>::max())) > most;
        if (isLong && hasOptions(form)) {
            line(".Op Ar OPTIONS");
            return;
        }
        for (const SlotRules& rules : form.slots()) {
            if (isOption(rules)) addUsage(rules);
        }
    }

    void addUsage(const SlotRules& rules) noexcept {
        const std::string macros = written(rules, " | ");
        if (macros.empty()) return;  // of a flag without tags
        const bool isRepeated = rules.takesValue && rules.mayRepeat && !rules.takes;
        if (rules.isRequired) {
            line(".", macros, isRepeated ? " Ns ..." : "");
        } else if (isRepeated) {
            line(".Oo ", macros, " Oc Ns ...");
        } else {
            line(".Op ", macros);
        }
    }

    // ---- DESCRIPTION ----

    void addDescription() noexcept {
        line(".Sh DESCRIPTION");
        appendProse(page_, tool_.summary);
        const std::size_t begin = page_.size();
        if (hasVisible(hasOption)) addConventions();
        if (hasVisible([](const Form& form) { return form.requiresRoot(); })) {
            line(".Pp");
            line("A command that must be run as root is handed to");
            line(".Cm sudo");
            line("when another user starts it.");
        }
        if (!tool_.version.empty()) {
            line(".Pp");
            appendProse(page_, joined({"This page describes version ", tool_.version, "."}));
        }
        // A section does not begin with a paragraph.
        const bool isFirst = mdocArguments(tool_.summary).empty();
        if (isFirst && page_.size() > begin) page_.erase(begin, std::string_view(".Pp\n").size());
    }

    static bool hasOption(const Form& form) noexcept {
        return anyOf(form.slots(), [](const SlotRules& rules) {
            return !rules.takes && !rules.tags().empty() && looksLikeOption(rules.firstTag());
        });
    }

    void addConventions() noexcept {
        line(".Pp");
        line("An option and its value may be one argument:");
        line(".Fl \\-name Ns = Ns Ar VALUE");
        line("or");
        line(".Fl n Ns Ar VALUE .");
        line("Short options may be joined.");
        line("After");
        line(".Fl \\-");
        line("no argument is an option.");
    }

    // ---- COMMANDS ----

    void addCommands() noexcept {
        if (!hasVisible([](const Form&) { return true; })) return;
        line(".Sh COMMANDS");
        beginList();
        forEachVisible([this](const Form& form) { addCommand(form); });
        endList();
    }

    void addCommand(const Form& form) noexcept {
        line(".It ", headOf(form));
        const Text& help = Declaration::help(tool_.commandLines[indexOf(form)]);
        if (form.requiresRoot()) {
            appendProse(page_, ended(help));
            line("Must be run as root.");
        } else {
            appendProse(page_, help);
        }
        addParameters(form);
    }

    [[nodiscard]] std::size_t indexOf(const Form& form) const noexcept {
        return static_cast<std::size_t>(&form - grammar_.forms.data());
    }

    // The words and what else is required; the name of the tool where there is no word.
    static std::string headOf(const Form& form) noexcept {
        std::string head = form.requiredWordCount() == 0 ? "Nm" : "";
        const auto add = [&](const SlotRules& rules) {
            const std::string macros = written(rules, " | ");
            if (!head.empty() && !macros.empty()) head += ' ';
            head += macros;
        };
        forEachRequired(form, add);
        for (const Slot operand : form.operands()) {
            if (form.slot(operand).isRequired) add(form.slot(operand));
        }
        return head;
    }

    // The words of a command explain themselves, unless they are explained.
    static bool isListed(const SlotRules& rules) noexcept {
        if (rules.tags().empty()) return rules.takesValue;
        return !rules.isRequiredWord || !rules.parameter.common().tagHelp.empty();
    }

    void addParameters(const Form& form) noexcept {
        if (noneOf(form.slots(), isListed)) return;
        beginList();
        for (const SlotRules& rules : form.slots()) {
            if (isListed(rules)) addParameter(rules);
        }
        endList();
    }

    void addParameter(const SlotRules& rules) noexcept {
        line(".It ", written(rules, " , "));
        const Text& help = rules.parameter.common().tagHelp;
        const auto* list = rules.parameter.as<ParameterList>();
        const std::string facts = factsOf(rules);
        const bool isLast = facts.empty() && list == nullptr;
        appendProse(page_, isLast ? help.str() : ended(help));
        appendProse(page_, facts);
        if (list != nullptr) addChoices(list->validOptions());
    }

    // ---- Choices ----

    void addChoices(const ListOptions& options) noexcept {
        std::vector<const commonDetails*> choices;
        bool areExplained = false;
        for (const ParameterNone& each : options) {
            if (each.common.tags.empty()) continue;  // nobody can name it
            choices.push_back(&each.common);
            areExplained = areExplained || !mdocArguments(each.common.tagHelp).empty();
        }
        if (choices.empty()) return;
        if (areExplained) {
            addExplainedChoices(choices);
        } else {
            addPlainChoices(choices);
        }
    }

    void addExplainedChoices(std::span<const commonDetails* const> choices) noexcept {
        line("One of:");
        line(".Bl -tag -width Ds -compact");
        for (const commonDetails* each : choices) {
            line(".It Cm ", mdocArgument(each->tags.front()));
            appendProse(page_, each->tagHelp);
        }
        endList();
    }

    // A word that is typed as it stands is not hyphenated.
    void addPlainChoices(std::span<const commonDetails* const> choices) noexcept {
        line("One of");
        for (const commonDetails* each : choices) {
            line(".Cm \\%", mdocArgument(each->tags.front()), each == choices.back() ? " ." : " ,");
        }
    }

    // ---- OPTIONS ----

    void addOwnOptions() noexcept {
        const std::size_t begin = page_.size();
        line(".Sh OPTIONS");
        beginList();
        const std::size_t beginOfItems = page_.size();
        addOwnOption(OwnOption::help, "", "Show the help page, or that of the command before it.");
        addOwnOption(OwnOption::version, "", "Show the version.");
        addOwnOption(OwnOption::completion, " Cm bash | zsh | fish",
                     "Print what lets a shell complete command lines of this tool.");
        addOwnOption(OwnOption::manual, "", "Print this page.");
        addOwnOption(OwnOption::description, "",
                     "Print what the tool can do as JSON, for programs.");
        if (page_.size() == beginOfItems) {
            page_.erase(begin);
        } else {
            endList();
        }
    }

    void addOwnOption(OwnOption option, std::string_view value, std::string_view help) noexcept {
        std::string macros;
        for (const Text& tag : ownTags(tool_, grammar_, option)) {
            if (!macros.empty()) macros += " , ";
            macros += tagMacro(tag);
        }
        if (macros.empty()) return;
        line(".It ", macros, value);
        line(help);
    }

    // ---- EXIT STATUS ----

    void addExitStatus() noexcept {
        line(".Sh EXIT STATUS");
        beginList();
        addStatus("0", "Success.");
        addStatus("64", "The command line is wrong, and nothing was done.");
        if (hasVisible([](const Form& form) { return form.requiresRoot(); }))
            addStatus("77", "The command must be run as root, and sudo cannot take over.");
        addStatus("others", "What the command ends with when it fails.");
        endList();
    }
    void addStatus(std::string_view status, std::string_view meaning) noexcept {
        line(".It ", status);
        line(meaning);
    }

    const Tool& tool_;
    const Text name_;
    const Grammar grammar_;
    std::string page_;
};

}  // namespace

Text manualPage(const Tool& tool) noexcept { return Page(tool).text(); }

}  // namespace Optrella
