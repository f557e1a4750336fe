// What is found by looking at each declaration, and at what stands beside them.

#include <algorithm>

#include "Optrella/Lint/Report.hpp"
#include "Optrella/Tool/Synopsis.hpp"

namespace Optrella::Internal {

namespace {

std::vector<Text> namesOf(const SlotRules& rules) noexcept {
    return rules.tags().empty() ? std::vector<Text>() : std::vector<Text>{rules.tags().front()};
}

// ---- One declaration ----

class DeclarationLint {
public:
    DeclarationLint(Report& report, std::size_t index) noexcept
        : report_(report), index_(index), form_(report.grammar.forms[index]) {}

    void run() noexcept {
        for (Slot slot = 0; slot < static_cast<Slot>(form_.slots().size()); ++slot) {
            const SlotRules& rules = form_.slot(slot);
            lintTags(slot, rules);
            if (const auto* list = rules.parameter.as<ParameterList>()) lintChoices(rules, *list);
            if (const auto* number = rules.parameter.as<ParameterNumber>()) {
                lintBounds(rules, *number);
            }
        }
    }

private:
    void add(Rule rule, std::vector<Text> parameters, const std::string& what) noexcept {
        report_.add({.rule = rule,
                     .severity = Severity::error,
                     .declarations = {index_},
                     .parameters = std::move(parameters),
                     .sentence = what + " in " + report_.declaration(index_)});
    }

    void lintTags(Slot slot, const SlotRules& rules) noexcept {
        if (rules.tags().empty()) {
            add(Rule::untagged, {}, "parameter " + std::to_string(slot) + " has no tag");
        }
        for (const Text& tag : rules.tags()) {
            if (tag.empty()) add(Rule::untagged, namesOf(rules), "a tag is empty");
            const bool isEnd = !report_.grammar.isExact() && tag == "--";
            const Slot owner = form_.ownerOf(report_.grammar.vocabulary.find(tag));
            if (isEnd) {
                add(Rule::shadowed, {tag}, "'--' ends the options and chooses nothing");
            } else if (owner != slot) {
                const std::string why =
                    form_.slot(owner).isRequired && !rules.isRequired ? "a required" : "a later";
                add(Rule::shadowed, {tag}, quoted(tag) + " chooses " + why + " parameter");
            }
        }
    }

    void lintChoices(const SlotRules& rules, const ParameterList& list) noexcept {
        if (list.validOptions().empty()) {
            add(Rule::choiceless, namesOf(rules), label(rules) + " has no choices");
        }
        std::vector<Text> known;
        for (const ParameterNone& option : list.validOptions()) {
            if (option.common.tags.empty()) {
                add(Rule::untagged, namesOf(rules), "a choice of " + label(rules) + " has no tag");
                continue;
            }
            const Text& word = option.common.tags.front();
            if (std::any_of(option.common.tags.begin(), option.common.tags.end(),
                            [](const Text& tag) { return tag.empty(); })) {
                add(Rule::untagged, namesOf(rules), "a choice of " + label(rules) + " is empty");
            }
            if (std::find(known.begin(), known.end(), word) != known.end()) {
                add(Rule::choiceless, namesOf(rules),
                    label(rules) + " has the choice " + quoted(word) + " twice");
            }
            known.push_back(word);
        }
    }

    void lintBounds(const SlotRules& rules, const ParameterNumber& number) noexcept {
        if (*number.rangeMin() <= *number.rangeMax()) return;
        add(Rule::bounds, namesOf(rules),
            "no number holds: the least of " + label(rules) + " is above the greatest");
    }

    Report& report_;
    std::size_t index_;
    const Form& form_;
};

// ---- Beside the declarations ----

// Whether somebody declares the parameter, with a value.
void lintNamed(Report& report, const ValueParameter& named, const std::string& as) noexcept {
    const auto add = [&](std::vector<Text> parameters, const std::string& sentence) {
        report.add({.rule = Rule::operand,
                    .severity = Severity::error,
                    .parameters = std::move(parameters),
                    .sentence = sentence});
    };
    if (!named.firstTag()) {
        add({}, as + " has no tag: no declaration declares it");
        return;
    }
    bool isDeclared = false;
    const Symbol tag = report.grammar.vocabulary.find(*named.firstTag());
    for (const Form& form : report.grammar.forms) {
        const Slot owner = form.ownerOf(tag);
        if (owner == noSlot) continue;
        if (form.slot(owner).takesValue) return;
        isDeclared = true;
    }
    const char* why = isDeclared ? " takes no value" : " stands in no declaration";
    add({*named.firstTag()}, as + " " + quoted(*named.firstTag()) + why);
}

void lintOperandsOf(Report& report, std::size_t index) noexcept {
    const Form& form = report.grammar.forms[index];
    const auto add = [&](const SlotRules& rules, const std::string& what) {
        report.add({.rule = Rule::operand,
                    .severity = Severity::error,
                    .declarations = {index},
                    .parameters = namesOf(rules),
                    .sentence = label(rules) + what + " in " + report.declaration(index)});
    };
    const auto operands = form.operands();
    for (auto place = operands.begin(); place != operands.end(); ++place) {
        const SlotRules& rules = form.slot(*place);
        const bool isLast = place + 1 == operands.end();
        if (!isLast && rules.takes != Takes::one) {
            add(rules, " takes more than one argument and is not the last operand");
        }
        const bool isBeforeRequired =
            std::any_of(place, operands.end(), [&form](Slot s) { return form.slot(s).isRequired; });
        if (!rules.isRequired && isBeforeRequired) {
            add(rules, " need not be given and stands before an operand that must be");
        }
    }
    if (report.grammar.isExact()) return;
    for (const SlotRules& rules : form.slots()) {
        const bool takesPlainAlone =
            std::none_of(rules.tags().begin(), rules.tags().end(),
                         [](const Text& tag) { return looksLikeOption(tag); });
        if (!takesPlainAlone) continue;
        for (const Symbol choice : rules.choices) {
            if (!report.lexicon[choice].isOptionLike) continue;
            add(rules, " takes plain arguments: its choice " + quoted(report.lexicon[choice].text) +
                           " can only be given after '--'");
        }
    }
}

}  // namespace

void lintDeclarations(Report& report) noexcept {
    for (std::size_t i = 0; i < report.grammar.forms.size(); ++i) {
        DeclarationLint(report, i).run();
    }
}

void lintOperands(Report& report) noexcept {
    for (const Operand& each : report.tool.operands) lintNamed(report, each, "the operand");
    for (const Repeated& each : report.tool.repeated) {
        lintNamed(report, each, "the repeated parameter");
    }
    for (const Completer& each : report.tool.completers) {
        lintNamed(report, each, "the completed parameter");
    }
    for (std::size_t i = 0; i < report.grammar.forms.size(); ++i) lintOperandsOf(report, i);
}

}  // namespace Optrella::Internal
