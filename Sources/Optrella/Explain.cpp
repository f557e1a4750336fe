#include "Optrella/Explain.hpp"

#include <algorithm>
#include <span>
#include <utility>

#include "Optrella/Explain/Explained.hpp"
#include "Optrella/Explain/Rejection.hpp"
#include "Optrella/Explain/Tries.hpp"
#include "Optrella/Tool/Grammar.hpp"

namespace Optrella {

namespace {

using Internal::Try;

bool isNearer(const Try& left, const Try& right) noexcept {
    if (left.attempt.fits != right.attempt.fits) return left.attempt.fits;
    if (left.likeness != right.likeness) return left.likeness > right.likeness;
    if (left.attempt.accepted != right.attempt.accepted) {
        return left.attempt.accepted > right.attempt.accepted;
    }
    return left.attempt.missing.size() < right.attempt.missing.size();
}

Outcome outcomeOfFit(const Attempt& fit) noexcept {
    if (!fit.rejected.empty()) return Outcome::valueRejected;
    return fit.missing.empty() ? Outcome::runs : Outcome::parameterMissing;
}

}  // namespace

Explanation Internal::explained(const Grammar& grammar, std::span<const Text> arguments) noexcept {
    const auto line = Internal::argumentsOf(arguments, grammar.vocabulary);
    Internal::Tries tries(grammar, line);
    std::vector<Try> all;
    all.reserve(grammar.forms.size());
    for (std::size_t i = 0; i < grammar.forms.size(); ++i) all.push_back(tries.of(i));
    const auto fits = [](const Try& each) { return each.attempt.fits; };
    const auto count = std::count_if(all.begin(), all.end(), fits);
    Explanation explanation;
    if (arguments.empty() && (grammar.isExact() || count != 1)) {
        explanation.outcome = Outcome::nothingGiven;
    } else if (count != 1) {
        explanation.outcome = count == 0 ? Outcome::nothingFits : Outcome::severalFit;
    } else {
        Try& fit = *std::find_if(all.begin(), all.end(), fits);
        const Internal::Form& form = grammar.forms[fit.attempt.declaration];
        fit.attempt.rejected = Internal::rejections(Internal::parametersOf(form, fit.gifts));
        explanation.outcome = outcomeOfFit(fit.attempt);
        explanation.needsRoot = form.requiresRoot();
    }
    std::vector<Try*> order;
    order.reserve(all.size());
    const auto isBefore = [](const Try* left, const Try* right) { return isNearer(*left, *right); };
    for (Try& each : all) {
        order.insert(std::upper_bound(order.begin(), order.end(), &each, isBefore), &each);
    }
    for (Try* each : order) {
        const bool isHidden = grammar.forms[each->attempt.declaration].isHidden();
        if (isHidden && !each->isMeant && !each->attempt.fits) continue;
        explanation.attempts.push_back(std::move(each->attempt));
    }
    return explanation;
}

Explanation explain(const Tool& tool, ArgumentList arguments) noexcept {
    return Internal::explained(Internal::Grammar(tool), arguments.texts());
}

Explanation explain(const Tool& tool, int argc, const char* const* argv) noexcept {
    return explain(tool, Internal::withoutProgramName(argc, argv));
}

}  // namespace Optrella
