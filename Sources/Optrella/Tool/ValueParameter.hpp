// ValueParameter.hpp - names a declared parameter.

#ifndef OPTRELLA_TOOL_VALUEPARAMETER_HPP
#define OPTRELLA_TOOL_VALUEPARAMETER_HPP

#include <optional>

#include "Optrella/Export.hpp"
#include "Optrella/Parameters/CommonDetails.hpp"
#include "Optrella/Text.hpp"

namespace Optrella::Internal {

// By its first tag: in each declaration the parameter that this tag chooses is meant.
class OPTRELLA_API ValueParameter {
public:
    // Returns nothing for a parameter without tags, which names none.
    [[nodiscard]] const std::optional<Text>& firstTag() const noexcept { return firstTag_; }

protected:
    explicit ValueParameter(const commonDetails& common) noexcept {
        if (!common.tags.empty()) firstTag_ = common.tags.front();
    }

private:
    std::optional<Text> firstTag_;
};

}  // namespace Optrella::Internal

#endif
