// What is found by looking for lines.

#include <algorithm>

#include "Optrella/Lint/Report.hpp"
#include "Optrella/Lint/Sharing.hpp"
#include "Optrella/Tool/Synopsis.hpp"

namespace Optrella::Internal {

namespace {

void findCollision(Report& report, std::size_t left, std::size_t right) noexcept {
    const auto& forms = report.grammar.forms;
    if (!mayShareLine(report.grammar, report.lexicon, forms[left], forms[right], Line::good))
        return;
    const Found found = findShared(report.lexicon, Contender(report.grammar, left, Line::good),
                                   Contender(report.grammar, right, Line::good));
    if (found.answer != Found::Answer::yes) return;
    const std::vector<Text> witness = report.texts(found.line, left);
    const auto names = distinctNames(std::vector{&forms[left], &forms[right]}, "nothing");
    report.add({.rule = Rule::collision,
                .severity = Severity::error,
                .declarations = {left, right},
                .witness = witness,
                .sentence = quotedLine(witness) + " fits declarations " + std::to_string(left) +
                            " and " + std::to_string(right) + " (" + names[0] + " and " + names[1] +
                            ")"});
}

// ---- Unreachable ----

// Whether a line that is easy to find fits the declaration alone.
bool isEasyToReach(const Report& report, const Contender& alone,
                   const std::vector<Contender>& others) noexcept {
    const auto line = simplestEnd(report.lexicon, alone);
    if (!line || line->empty()) return false;
    return std::none_of(others.begin(), others.end(), [&](Contender other) {
        return std::all_of(line->begin(), line->end(),
                           [&](Symbol word) { return other.read(report.lexicon[word]); }) &&
               other.fits();
    });
}

// Nothing typed runs the one declaration that requires nothing.
bool runsWithoutArguments(const Grammar& grammar, std::size_t index) noexcept {
    const auto requiresNothing = [](const Form& form) { return form.requiredCount() == 0; };
    return !grammar.isExact() && requiresNothing(grammar.forms[index]) &&
           std::count_if(grammar.forms.begin(), grammar.forms.end(), requiresNothing) == 1;
}

void findUnreachable(Report& report, std::size_t index) noexcept {
    const Grammar& grammar = report.grammar;
    if (runsWithoutArguments(grammar, index)) return;
    const Contender alone(grammar, index, Line::fitting);
    std::vector<Contender> others;
    for (std::size_t other = 0; other < grammar.forms.size(); ++other) {
        if (other != index && mayShareLine(grammar, report.lexicon, grammar.forms[index],
                                           grammar.forms[other], Line::fitting)) {
            others.emplace_back(grammar, other, Line::fitting);
        }
    }
    if (isEasyToReach(report, alone, others)) return;
    if (findAlone(report.lexicon, alone, others, Ends::afterAWord).answer != Found::Answer::no) {
        return;
    }
    const bool hasLine =
        findAlone(report.lexicon, alone, {}, Ends::afterAWord).answer == Found::Answer::yes;
    const char* why = hasLine ? " never runs: each line that fits it fits another one, too"
                              : " never runs: no line fits it";
    report.add({.rule = Rule::unreachable,
                .severity = Severity::error,
                .declarations = {index},
                .sentence = report.declaration(index) + why});
}

// ---- Masked ----

// As parse counts, a required parameter that is given as often as there are required ones is
// enough; the shortest such line gives a flag.
void findMasked(Report& report, std::size_t index) noexcept {
    const Form& form = report.grammar.forms[index];
    if (!report.grammar.isExact() || form.requiredCount() < 2) return;
    const Form::Owner* cheapest = nullptr;
    for (const Form::Owner& owner : form.owners()) {
        if (owner.slot >= form.requiredCount()) continue;
        const bool isFlag = !form.slot(owner.slot).takesValue;
        if (cheapest == nullptr || (isFlag && form.slot(cheapest->slot).takesValue)) {
            cheapest = &owner;
        }
    }
    if (cheapest == nullptr) return;
    std::vector<Symbol> line;
    for (Slot i = 0; i < form.requiredCount(); ++i) {
        line.push_back(cheapest->tag);
        if (form.slot(cheapest->slot).takesValue) line.push_back(Vocabulary::unknown);
    }
    const std::vector<Text> witness = report.texts(line, index);
    std::vector<Text> missing;
    for (Slot slot = 0; slot < form.requiredCount(); ++slot) {
        const Tags& tags = form.slot(slot).tags();
        if (slot != cheapest->slot && !tags.empty()) missing.push_back(tags.front());
    }
    report.add({.rule = Rule::masked,
                .severity = Severity::note,
                .declarations = {index},
                .parameters = missing,
                .witness = witness,
                .sentence = quotedLine(witness) + " fits " + report.declaration(index) +
                            ", although a required parameter is missing"});
}

}  // namespace

void lintLines(Report& report) noexcept {
    const std::size_t count = report.grammar.forms.size();
    for (std::size_t left = 0; left < count; ++left) {
        for (std::size_t right = left + 1; right < count; ++right) {
            if (report.hasEnough(Rule::collision)) break;
            findCollision(report, left, right);
        }
        if (!report.hasEnough(Rule::unreachable)) findUnreachable(report, left);
        findMasked(report, left);
    }
}

void lintSwallowing(Report& report) noexcept {
    const Grammar& grammar = report.grammar;
    const auto hasWords = [](const Form& form) { return form.requiredWordCount() > 0; };
    if (std::none_of(grammar.forms.begin(), grammar.forms.end(), hasWords)) return;
    for (std::size_t index = 0; index < grammar.forms.size(); ++index) {
        const Form& form = grammar.forms[index];
        if (hasWords(form) || form.operands().empty()) continue;
        Contender taker(grammar, index, Line::fitting);
        if (!taker.read(report.lexicon.free())) continue;
        const auto end = simplestEnd(report.lexicon, taker);
        if (!end) continue;
        std::vector<Symbol> line = {Vocabulary::unknown};
        line.insert(line.end(), end->begin(), end->end());
        const std::vector<Text> witness = report.texts(line, index);
        report.add({.rule = Rule::swallows,
                    .severity = Severity::warning,
                    .declarations = {index},
                    .witness = witness,
                    .sentence = report.declaration(index) +
                                " takes mistyped commands: " + quotedLine(witness) + " fits it"});
    }
}

}  // namespace Optrella::Internal
