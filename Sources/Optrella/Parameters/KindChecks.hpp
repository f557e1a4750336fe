// KindChecks.hpp - what a kind must be, asked so that the compiler's answer is in words.

#ifndef OPTRELLA_PARAMETERS_KINDCHECKS_HPP
#define OPTRELLA_PARAMETERS_KINDCHECKS_HPP

#include <concepts>
#include <optional>
#include <type_traits>

#include "Optrella/Parameters/CommonDetails.hpp"
#include "Optrella/Text.hpp"

namespace Optrella {

class ParameterProtocol;
template <class Kind>
struct ParameterDefaults;

namespace Internal {

class ParameterView;

// Whether a kind has an operation of the name, in whatever form: so one in a wrong form is found,
// and does not silently get the default one. What the kind has is ambiguous in the probe; a final
// kind cannot be probed, and is asked as far as a name alone can be.
struct OperationNames {
    int validate, isEqualTo, storeUserValue;
};
struct Unprobed {};
template <class Kind>
struct NameProbe : std::conditional_t<std::is_final_v<Kind>, Unprobed, Kind>, OperationNames {};

// The formatter does not know such an expression.
// clang-format off
template <class Kind>
concept NamesValidate =
    requires { &Kind::validate; } || !requires { &NameProbe<Kind>::validate; };
template <class Kind>
concept NamesIsEqualTo =
    requires { &Kind::isEqualTo; } || !requires { &NameProbe<Kind>::isEqualTo; };
template <class Kind>
concept NamesStoreUserValue =
    requires { &Kind::storeUserValue; } || !requires { &NameProbe<Kind>::storeUserValue; };

// A class with anything called common: all that keeps others from being taken for a parameter.
template <class Kind>
concept NamesCommon = std::is_class_v<Kind> && !std::same_as<Kind, ParameterProtocol> &&
                      requires(Kind& kind) { kind.common; };

// A class that somebody put where a kind belongs; a list of parameters is not one.
template <class Source>
concept NoParameterKind = std::is_class_v<Source> && !std::same_as<Source, ParameterProtocol> &&
                          !std::derived_from<Source, ParameterView> && !NamesCommon<Source> &&
                          !requires(const Source& source) { source.begin(); };
// clang-format on

template <class Kind>
Kind kindOfDefaults(const ParameterDefaults<Kind>&);
// Another kind's defaults would compare with that kind: such a parameter would not equal itself.
template <class Kind>
concept HasForeignDefaults = requires(const Kind& kind) {
    kindOfDefaults(kind);
    requires !std::same_as<decltype(kindOfDefaults(kind)), Kind>;
};

}  // namespace Internal

// What a kind must be: a copyable class with a member `commonDetails common`. What it replaces of
// the operations below has just that form; the rest it gets by default.
//     std::optional<Text> validate() const;
//     bool isEqualTo(const ParameterProtocol& other) const;
//     void storeUserValue(Text newValue);
// clang-format off
template <class Kind>
concept ParameterKind =
    Internal::NamesCommon<Kind> && std::copy_constructible<Kind> && requires(Kind& kind) {
        { (kind.common) } -> std::same_as<commonDetails&>;
        requires std::is_member_object_pointer_v<decltype(&Kind::common)>;
    };

namespace Internal {

// Stops the compiler with words for what is wrong with a kind.
template <class Kind>
constexpr void checkKind() {
    static_assert(ParameterKind<Kind>,
                  "a kind must be a copyable class with a member `commonDetails common`");
    static_assert(!NamesValidate<Kind> || requires(const Kind& kind) {
                      { kind.validate() } -> std::same_as<std::optional<Text>>;
                  },
                  "a kind's validate must be: std::optional<Text> validate() const");
    static_assert(!NamesIsEqualTo<Kind> ||
                      requires(const Kind& kind, const ParameterProtocol& other) {
                          { kind.isEqualTo(other) } -> std::same_as<bool>;
                      },
                  "a kind's isEqualTo must be: bool isEqualTo(const ParameterProtocol& other) const");
    static_assert(!NamesStoreUserValue<Kind> || requires(Kind& kind, const Text& value) {
                      { kind.storeUserValue(value) } -> std::same_as<void>;
                  },
                  "a kind's storeUserValue must be: void storeUserValue(Text newValue)");
    static_assert(!std::is_polymorphic_v<Kind>,
                  "a kind must be a plain record: what derives from it would be cut off");
    static_assert(!HasForeignDefaults<Kind>,
                  "a kind that inherits ParameterDefaults must name itself: "
                  "struct Kind : ParameterDefaults<Kind>");
}
// clang-format on

}  // namespace Internal

}  // namespace Optrella

#endif
