// Report.hpp - collects findings.

#ifndef OPTRELLA_LINT_REPORT_HPP
#define OPTRELLA_LINT_REPORT_HPP

#include <cstddef>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "Optrella/Lint.hpp"
#include "Optrella/Tool/LineSearch.hpp"

namespace Optrella::Internal {

// A tool, made ready to be looked at, and what was found.
class Report {
public:
    explicit Report(const Tool& of) noexcept : tool(of), grammar(of), lexicon(grammar) {}

    const Tool& tool;
    const Grammar grammar;
    const Lexicon lexicon;

    // Adds a finding, unless there are enough of the rule.
    void add(Finding finding) noexcept;
    // Returns whether no more of the rule are wanted.
    [[nodiscard]] bool hasEnough(Rule rule) const noexcept;

    [[nodiscard]] Findings findings() && noexcept { return std::move(findings_); }

    // Returns "declaration 2 ('list')".
    [[nodiscard]] std::string declaration(std::size_t index) const noexcept;
    // Returns the texts of a searched line: a word that is neither tag nor choice is a number
    // where the declaration reads one.
    [[nodiscard]] std::vector<Text> texts(std::span<const Symbol> line,
                                          std::size_t declaration) const noexcept;

private:
    Findings findings_;
};

// Returns the arguments as they would be typed, in quotation marks.
[[nodiscard]] std::string quotedLine(const std::vector<Text>& line) noexcept;

// Look at lines: collision, unreachable, masked, swallows.
void lintLines(Report& report) noexcept;
void lintSwallowing(Report& report) noexcept;
// Look at each declaration by itself: shadowed, untagged, choiceless, bounds.
void lintDeclarations(Report& report) noexcept;
// Looks at what stands beside the declarations: operand.
void lintOperands(Report& report) noexcept;
// Look at texts: unprintable, reserved.
void lintTexts(Report& report) noexcept;

}  // namespace Optrella::Internal

#endif
