// What is found by looking at texts.

#include <algorithm>
#include <array>

#include "Optrella/Lint/Report.hpp"
#include "Optrella/Text/Characters.hpp"
#include "Optrella/Tool/Synopsis.hpp"

namespace Optrella::Internal {

namespace {

constexpr std::array<Text, 7> ownOfTools = {"--help",       "-h",       "help",      "--version",
                                            "--completion", "--manual", "--describe"};

class TextLint {
public:
    TextLint(Report& report, std::size_t index) noexcept : report_(report), index_(index) {}

    void run() noexcept {
        const CommandLinePossibility& declaration = report_.tool.commandLines[index_];
        lintText(Declaration::help(declaration), {}, "the help");
        for (const SlotRules& rules : report_.grammar.forms[index_].slots()) {
            const commonDetails& common = rules.parameter.common();
            std::vector<Text> named;
            if (!common.tags.empty()) named.push_back(common.tags.front());
            for (const Text& tag : common.tags) {
                lintTag(tag, named);
                lintReserved(tag);
            }
            lintText(common.parameterName, named, "the name of a value");
            lintText(common.tagHelp, named, "the help of " + label(rules));
            if (const auto* list = rules.parameter.as<ParameterList>()) lintOptions(*list, named);
        }
    }

private:
    void add(Rule rule, Severity severity, const std::vector<Text>& parameters,
             const std::string& what) noexcept {
        report_.add({.rule = rule,
                     .severity = severity,
                     .declarations = {index_},
                     .parameters = parameters,
                     .sentence = what + " in " + report_.declaration(index_)});
    }

    void lintText(const Text& text, const std::vector<Text>& named,
                  const std::string& what) noexcept {
        if (!holdsUnprintable(text)) return;
        add(Rule::unprintable, Severity::warning, named,
            what + " holds what a terminal does not show: " + quoted(text));
    }

    void lintTag(const Text& tag, const std::vector<Text>& named) noexcept {
        lintText(tag, named, "a tag");
        if (static_cast<std::string_view>(tag).find(' ') == std::string_view::npos) return;
        add(Rule::unprintable, Severity::warning, named,
            "the tag " + quoted(tag) + " holds a space");
    }

    void lintOptions(const ParameterList& list, const std::vector<Text>& named) noexcept {
        for (const ParameterNone& option : list.validOptions()) {
            for (const Text& tag : option.common.tags) lintText(tag, named, "a choice");
            lintText(option.common.tagHelp, named, "the help of a choice");
        }
    }

    void lintReserved(const Text& tag) noexcept {
        if (std::find(ownOfTools.begin(), ownOfTools.end(), tag) == ownOfTools.end()) return;
        add(Rule::reserved, Severity::note, {tag}, quoted(tag) + " hides the tool's own");
    }

    Report& report_;
    std::size_t index_;
};

}  // namespace

void lintTexts(Report& report) noexcept {
    for (std::size_t i = 0; i < report.grammar.forms.size(); ++i) TextLint(report, i).run();
}

}  // namespace Optrella::Internal
