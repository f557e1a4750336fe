// KeptParameters.hpp - the parameters of a declaration, as it keeps them.

#ifndef OPTRELLA_COMMANDLINE_KEPTPARAMETERS_HPP
#define OPTRELLA_COMMANDLINE_KEPTPARAMETERS_HPP

#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

#include "Optrella/CommandLine/DeclaredParameters.hpp"
#include "Optrella/CommandLine/TagFilter.hpp"
#include "Optrella/CommandLine/TagMarks.hpp"
#include "Optrella/Export.hpp"
#include "Optrella/Parameters.hpp"
#include "Optrella/Text/Shared.hpp"

namespace Optrella::Internal {

// One of them, with what tells that an argument is none of its tags.
class OPTRELLA_API KeptParameter : public ParameterView {
public:
    constexpr KeptParameter() noexcept = default;
    constexpr explicit KeptParameter(ParameterView parameter) noexcept
        : ParameterView(parameter), tags_(parameter.common().tags) {}

    [[nodiscard]] bool mayHaveTag(std::uint32_t mark) const noexcept {
        return tags_.mayContain(mark);
    }

private:
    TagMarks tags_;
};

using KeptList = std::span<const KeptParameter>;

// Named where a constant declaration meets the compiler: its name is the error message.
OPTRELLA_API void constantDeclarationHoldsAtMostSixteenParameters() noexcept;

// A declaration that the compiler makes views its parameters. It reads them too, so that they can
// only be constants, or parts of the same static object, which must then stay as they are. Any
// other declaration copies its parameters; copies of it share them.
class OPTRELLA_API KeptParameters {
public:
    constexpr KeptParameters(const DeclaredParameters& required,
                             const DeclaredParameters& optional) noexcept {
        if (std::is_constant_evaluated()) {
            view(required.views(), optional.views());
        } else {
            copy(required.views(), optional.views());
        }
    }

    // Moving copies: the views stay good.
    constexpr KeptParameters(const KeptParameters&) = default;
    KeptParameters& operator=(const KeptParameters&) = default;
    constexpr ~KeptParameters() = default;

    [[nodiscard]] KeptList required() const noexcept { return {begin(), requiredCount_}; }
    [[nodiscard]] KeptList optional() const noexcept {
        return {begin() + requiredCount_, count_ - requiredCount_};
    }
    // Rules out most arguments that are tags of none of them.
    [[nodiscard]] const TagFilter& tags() const noexcept { return tags_; }

private:
    static constexpr std::size_t mostConstants = 16;

    constexpr void view(ParameterViews required, ParameterViews optional) noexcept {
        summarise(required, optional);
        if (count_ > mostConstants) constantDeclarationHoldsAtMostSixteenParameters();
        KeptParameter* place = constants_;
        for (const ParameterViews views : {required, optional}) {
            for (const ParameterView& each : views) *place++ = KeptParameter(each);
        }
    }
    void copy(ParameterViews required, ParameterViews optional) noexcept;

    constexpr void summarise(ParameterViews required, ParameterViews optional) noexcept {
        requiredCount_ = static_cast<std::uint32_t>(required.size());
        count_ = static_cast<std::uint32_t>(required.size() + optional.size());
        for (const ParameterViews views : {required, optional}) {
            for (const ParameterView& each : views) {
                for (const Text& tag : each.common().tags) tags_.add(tag);
            }
        }
    }
    [[nodiscard]] const KeptParameter* begin() const noexcept {
        return copies_ != nullptr ? copies_ : constants_;
    }

    KeptParameter constants_[mostConstants];
    const KeptParameter* copies_ = nullptr;
    std::uint32_t requiredCount_ = 0;
    std::uint32_t count_ = 0;
    TagFilter tags_;
    SharedObject owner_;  // of the copies
};

}  // namespace Optrella::Internal

#endif
