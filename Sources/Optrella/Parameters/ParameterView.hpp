// ParameterView.hpp - a parameter of any kind that somebody else holds.

#ifndef OPTRELLA_PARAMETERS_PARAMETERVIEW_HPP
#define OPTRELLA_PARAMETERS_PARAMETERVIEW_HPP

#include "Optrella/Export.hpp"
#include "Optrella/Parameters/CommonDetails.hpp"
#include "Optrella/Parameters/KindOperations.hpp"
#include "Optrella/Text.hpp"

namespace Optrella::Internal {

class OPTRELLA_API ParameterView {
public:
    // Views nothing, and is only to be assigned.
    constexpr ParameterView() noexcept = default;
    // Views a parameter by its `common`.
    constexpr ParameterView(const KindOperations& operations, const commonDetails& common) noexcept
        : operations_(&operations), common_(&common) {}

    [[nodiscard]] constexpr const KindOperations& operations() const noexcept {
        return *operations_;
    }
    [[nodiscard]] constexpr const commonDetails& common() const noexcept { return *common_; }
    // Returns the primary tag. STOPS the process when there are no tags.
    [[nodiscard]] const Text& firstTag() const noexcept { return common_->tags.front(); }
    // Returns the parameter, or null when it is of another kind.
    template <class Kind>
    [[nodiscard]] const Kind* as() const noexcept {
        return operations_ == &operationsOf<Kind>() ? &HeldKind<Kind>::get(*common_) : nullptr;
    }

private:
    const KindOperations* operations_ = nullptr;
    const commonDetails* common_ = nullptr;
};

}  // namespace Optrella::Internal

#endif
