// DeclaredParameters.hpp - the arguments of a declaration: the lists of parameters in it.

#ifndef OPTRELLA_COMMANDLINE_DECLAREDPARAMETERS_HPP
#define OPTRELLA_COMMANDLINE_DECLAREDPARAMETERS_HPP

#include <concepts>
#include <cstddef>
#include <span>
#include <string_view>
#include <type_traits>

#include "Optrella/Export.hpp"
#include "Optrella/Parameters.hpp"

namespace Optrella::Internal {

using ParameterViews = std::span<const ParameterView>;

class DeclaredParameters;

// Whatever somebody puts among the parameters in braces.
template <class Source>
concept Listed = !std::same_as<std::remove_cvref_t<Source>, Parameters> &&
                 !std::same_as<std::remove_cvref_t<Source>, DeclaredParameters>;

// Stops the compiler with words for what is no parameter.
template <class Source>
constexpr void checkListed() {
    static_assert(!std::is_arithmetic_v<Source>,
                  "a declaration needs requiresRoot, required, optional, help, hidden, run");
    static_assert(!std::is_convertible_v<Source, std::string_view>,
                  "a list of parameters holds parameters, not tags: declare each and name it here");
    static_assert(!std::is_pointer_v<Source> || std::is_convertible_v<Source, std::string_view>,
                  "a list of parameters holds the parameters themselves, not their addresses");
    static_assert(std::is_arithmetic_v<Source> || std::is_pointer_v<Source> ||
                      std::is_convertible_v<Source, std::string_view> ||
                      std::is_constructible_v<ParameterProtocol, const Source&>,
                  "a parameter must be of a kind: have a member `commonDetails common`");
}

// Named where a constant declaration meets the compiler: the name is the error message.
OPTRELLA_API void constantDeclarationTakesNamedParametersOnly() noexcept;

// A list of parameters, in braces or made before, viewed for the time of a call.
class OPTRELLA_API DeclaredParameters {
public:
    constexpr DeclaredParameters() noexcept = default;
    template <std::same_as<Parameters> List>
    DeclaredParameters(const List& parameters) noexcept {
        ParameterView* place = room(parameters.size());
        for (const ParameterProtocol& parameter : parameters) *place++ = parameter.view();
    }
    template <Listed... Sources>
    constexpr DeclaredParameters(Sources&&... sources) noexcept {
        (checkListed<std::decay_t<Sources>>(), ...);
        const bool areNamed = (std::is_lvalue_reference_v<Sources> && ...);
        if (std::is_constant_evaluated() && !areNamed) {
            constantDeclarationTakesNamedParametersOnly();
        }
        if constexpr ((std::is_constructible_v<ParameterProtocol, const Sources&> && ...)) {
            ParameterView* place = room(sizeof...(sources));
            ((*place++ = viewOf(sources)), ...);
        }
    }
    DeclaredParameters(const DeclaredParameters&) = delete;
    DeclaredParameters& operator=(const DeclaredParameters&) = delete;
    constexpr ~DeclaredParameters() { delete[] many_; }

    [[nodiscard]] constexpr ParameterViews views() const noexcept {
        return {many_ != nullptr ? many_ : few_, size_};
    }

private:
    static constexpr std::size_t few = 16;  // without the heap

    constexpr ParameterView* room(std::size_t size) noexcept {
        size_ = size;
        if (size > few) many_ = new ParameterView[size];
        return many_ != nullptr ? many_ : few_;
    }
    template <class Kind>
    static constexpr ParameterView viewOf(const Kind& kind) noexcept {
        checkKind<Kind>();
        return {operationsOf<Kind>(), kind.common};
    }
    static ParameterView viewOf(const ParameterProtocol& parameter) noexcept {
        return parameter.view();
    }

    ParameterView few_[few];
    ParameterView* many_ = nullptr;
    std::size_t size_ = 0;
};

// Takes the place of any argument of a declaration that lacks one.
struct AnyArgument {
    template <class... Sources>
    AnyArgument(Sources&&... sources);
};

}  // namespace Optrella::Internal

#endif
