#include "Optrella/CommandLine/Matching.hpp"

#include "Optrella/CommandLine/Owner.hpp"
#include "Optrella/Text/Print.hpp"

namespace Optrella::Internal {

// False when an argument belongs to no parameter, when the last value is missing, and when too few
// or too many required parameters are given.
bool Matcher::takesAll(const CommandLinePossibility& commandLine) noexcept {
    const KeptList required = Declaration::required(commandLine);
    const KeptList optional = Declaration::optional(commandLine);
    const auto end = passedLine_.end();
    required_.clear();
    optional_.clear();
    for (auto argument = passedLine_.begin(); argument != end; ++argument) {
        const bool isFirst = argument == passedLine_.begin();
        const std::uint32_t mark = isFirst ? firstMark_ : TagMarks::markOf(*argument);
        MatchGroup* group = &required_;
        const ParameterView* owner = lastOwner(required, *argument, mark, comparer_);
        if (owner == nullptr) {
            group = &optional_;
            owner = lastOwner(optional, *argument, mark, comparer_);
        }
        if (owner == nullptr) return false;
        if (!owner->common().hasParameter) {
            group->add({owner, nullptr});
            continue;
        }
        if (++argument == end) {
            printLine({"Missing argument for ", owner->firstTag()});
            return false;
        }
        group->add({owner, &*argument});
    }
    // Only the count is compared, on purpose: a tag that is given twice makes up for another one
    // that is missing.
    return required_.size() == required.size();
}

std::optional<Fit> Matcher::couldRun(const CommandLinePossibility& commandLine) noexcept {
    std::optional<Fit> fit;
    if (!takesAll(commandLine)) return fit;
    fit = Fit{Declaration::requiresRoot(commandLine), Declaration::run(commandLine), {}};
    fit->given.reserve(required_.size() + optional_.size());
    required_.moveTo(fit->given);
    optional_.moveTo(fit->given);
    return fit;
}

}  // namespace Optrella::Internal
