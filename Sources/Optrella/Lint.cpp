#include "Optrella/Lint.hpp"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "Optrella/Lint/Report.hpp"
#include "Optrella/Tool/Synopsis.hpp"

namespace Optrella {

namespace {

constexpr std::ptrdiff_t mostOfARule = 100;

constexpr Rule next(Rule rule) noexcept {
    return static_cast<Rule>(static_cast<std::uint8_t>(rule) + 1);
}

}  // namespace

Text rawValue(Rule rule) noexcept {
    switch (rule) {
        case Rule::collision:
            return "collision";
        case Rule::unreachable:
            return "unreachable";
        case Rule::masked:
            return "masked";
        case Rule::shadowed:
            return "shadowed";
        case Rule::untagged:
            return "untagged";
        case Rule::choiceless:
            return "choiceless";
        case Rule::bounds:
            return "bounds";
        case Rule::operand:
            return "operand";
        case Rule::swallows:
            return "swallows";
        case Rule::unprintable:
            return "unprintable";
        case Rule::reserved:
            return "reserved";
    }
    Internal::fatalStop();
}

Text rawValue(Severity severity) noexcept {
    switch (severity) {
        case Severity::error:
            return "error";
        case Severity::warning:
            return "warning";
        case Severity::note:
            return "note";
    }
    Internal::fatalStop();
}

Findings lint(const Tool& tool, Notes notes) noexcept {
    Internal::Report report(tool);
    Internal::lintLines(report);
    Internal::lintDeclarations(report);
    Internal::lintOperands(report);
    Internal::lintSwallowing(report);
    Internal::lintTexts(report);
    Findings found = std::move(report).findings();
    // Each rule's in turn: to sort findings themselves, g++ 12 takes their witnesses for unset.
    Findings findings;
    for (auto rule = Rule::collision; rule <= Rule::reserved; rule = next(rule)) {
        for (Finding& each : found) {
            if (each.rule == rule) findings.push_back(std::move(each));
        }
    }
    if (notes == Notes::leftOut) {
        std::erase_if(findings,
                      [](const Finding& each) { return each.severity == Severity::note; });
    }
    return findings;
}

namespace Internal {

void Report::add(Finding finding) noexcept {
    if (!hasEnough(finding.rule)) findings_.push_back(std::move(finding));
}

bool Report::hasEnough(Rule rule) const noexcept {
    return std::count_if(findings_.begin(), findings_.end(),
                         [rule](const Finding& each) { return each.rule == rule; }) >= mostOfARule;
}

std::string Report::declaration(std::size_t index) const noexcept {
    const std::string name = commandName(grammar.forms[index]);
    return "declaration " + std::to_string(index) + " (" + quoted(name.empty() ? "nothing" : name) +
           ")";
}

std::vector<Text> Report::texts(std::span<const Symbol> line,
                                std::size_t declaration) const noexcept {
    std::vector<Text> texts;
    Walk walk(grammar.forms[declaration], grammar.spelling);
    for (const Symbol word : line) {
        texts.push_back(lexicon[word].text);
        const bool isRead = walk.read(lexicon[word]) == Reading::accepted;
        if (word != Vocabulary::unknown || !isRead || walk.valued() == noSlot) continue;
        const auto* number = walk.form().slot(walk.valued()).parameter.as<ParameterNumber>();
        if (number == nullptr) continue;
        const std::int64_t least = std::max<std::int64_t>(*number->rangeMin(), 0);
        const Text shown = std::to_string(std::min(std::max<std::int64_t>(least, 1),
                                                   std::max<std::int64_t>(*number->rangeMax(), 0)));
        if (grammar.vocabulary.find(shown) == Vocabulary::unknown) texts.back() = shown;
    }
    return texts;
}

std::string quotedLine(const std::vector<Text>& line) noexcept {
    std::string typed;
    for (const Text& each : line) {
        if (!typed.empty()) typed += ' ';
        typed += static_cast<std::string_view>(each);
    }
    return quoted(typed);
}

}  // namespace Internal

}  // namespace Optrella
