// KindOperations.hpp - what can be done with a kind whose type is known no more.

#ifndef OPTRELLA_PARAMETERS_KINDOPERATIONS_HPP
#define OPTRELLA_PARAMETERS_KINDOPERATIONS_HPP

#include <array>
#include <concepts>
#include <cstddef>
#include <new>
#include <optional>
#include <type_traits>
#include <utility>

#include "Optrella/Export.hpp"
#include "Optrella/Parameters/BuiltInKinds.hpp"
#include "Optrella/Parameters/CommonDetails.hpp"
#include "Optrella/Parameters/KindChecks.hpp"
#include "Optrella/Parameters/KindName.hpp"
#include "Optrella/Text.hpp"

namespace Optrella {

class ParameterProtocol;

namespace Internal {

// There is one such object for each kind: its address is the kind's identity. A kind is handed over
// by its `common`.
struct OPTRELLA_API KindOperations {
    std::optional<Text> (*validate)(const commonDetails& common);
    bool (*isEqualTo)(const commonDetails& common, const ParameterProtocol& other);
    void (*storeUserValue)(commonDetails& common, Text&& newValue);
    // Both return the `common` of the new one. Without a place the copy stands on the heap.
    commonDetails* (*copy)(const commonDetails& from, void* place);
    commonDetails* (*move)(commonDetails& from, void* place) noexcept;
    void (*destroy)(commonDetails& common) noexcept;
    void (*remove)(commonDetails& common) noexcept;  // one that stands alone on the heap
    std::size_t size;
    std::size_t alignment;
    bool isInline;  // stands within a ParameterProtocol
    bool comparesByDefault;
    bool storesByDefault;
    const char* name;  // without the namespaces
};

inline constexpr std::size_t inlineKindSize = 112;  // the largest of the six kinds

// The operations on a Kind.
template <class Kind>
struct HeldKind {
    static constexpr bool isInline = sizeof(Kind) <= inlineKindSize &&
                                     alignof(Kind) <= alignof(commonDetails) &&
                                     std::is_nothrow_move_constructible_v<Kind>;

    // REQUIRES: a place, for a kind that stands inline. Where the kind itself throws nothing, lack
    // of memory stops the process.
    template <class Source>
    static commonDetails* make(Source&& kind, void* place) noexcept(
        std::is_nothrow_constructible_v<Kind, Source>) {
        if (isInline || place != nullptr) {
            return &(::new (place) Kind(std::forward<Source>(kind)))->common;
        }
        return &(new Kind(std::forward<Source>(kind)))->common;
    }
    static const Kind& get(const commonDetails& common) noexcept {
        const void* place = reinterpret_cast<const std::byte*>(&common) - placeOfCommon();
        return *std::launder(static_cast<const Kind*>(place));
    }
    static Kind& get(commonDetails& common) noexcept {
        return const_cast<Kind&>(get(static_cast<const commonDetails&>(common)));
    }

    static std::optional<Text> validate([[maybe_unused]] const commonDetails& common) {
        if constexpr (NamesValidate<Kind>) {
            return get(common).validate();
        } else {
            return std::nullopt;
        }
    }
    // A template, since what the other one holds is asked before ParameterProtocol is known.
    template <class Protocol>
    static bool isEqualTo(const commonDetails& common, const Protocol& other) {
        if constexpr (NamesIsEqualTo<Kind>) {
            return get(common).isEqualTo(other);
        } else {
            const Kind* sameKind = other.template as<Kind>();
            return sameKind != nullptr && isSameDeclaration(common, sameKind->common);
        }
    }
    static void storeUserValue(commonDetails& common, Text&& newValue) {
        if constexpr (NamesStoreUserValue<Kind>) {
            get(common).storeUserValue(std::move(newValue));
        } else {
            common.userValue = std::move(newValue);
        }
    }
    static commonDetails* copy(const commonDetails& from, void* place) {
        return make(get(from), place);
    }
    static commonDetails* move(commonDetails& from, void* place) noexcept {
        return make(std::move(get(from)), place);
    }
    static void destroy(commonDetails& common) noexcept { get(common).~Kind(); }
    static void remove(commonDetails& common) noexcept { delete &get(common); }

    // Whether isEqualTo and storeUserValue are the default ones, inherited or not replaced.
    static constexpr bool comparesByDefault = !NamesIsEqualTo<Kind> || requires {
        {
            &Kind::isEqualTo
            } -> std::same_as<bool (ParameterDefaults<Kind>::*)(const ParameterProtocol&) const>;
    };
    static constexpr bool storesByDefault = !NamesStoreUserValue<Kind> || requires {
        { &Kind::storeUserValue } -> std::same_as<void (ParameterDefaults<Kind>::*)(Text)>;
    };

    // clang-format off
    static constexpr KindOperations operations{
        .validate = validate,
        .isEqualTo = isEqualTo<ParameterProtocol>,
        .storeUserValue = storeUserValue,
        .copy = copy,
        .move = isInline ? &move : nullptr,
        .destroy = destroy,
        .remove = isInline ? nullptr : &remove,
        .size = sizeof(Kind),
        .alignment = alignof(Kind),
        .isInline = isInline,
        .comparesByDefault = comparesByDefault,
        .storesByDefault = storesByDefault,
        .name = kindName<Kind>.data()};
    // clang-format on

private:
    // The compilers know it of every class without virtual bases, and warn of most all the same.
    static constexpr std::size_t placeOfCommon() noexcept {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
        return offsetof(Kind, common);
#pragma GCC diagnostic pop
    }
};

// Those of the library's kinds stand in the library alone, so that a kind has one identity even
// where a tool is made of several shared objects.
OPTRELLA_API extern const std::array<KindOperations, BuiltInKinds::size> builtInOperations;

// Those of a tool's own kind stand in the tool.
template <class Kind>
struct OPTRELLA_API OwnOperations {
    static const KindOperations operations;
};
template <class Kind>
constinit const KindOperations OwnOperations<Kind>::operations = HeldKind<Kind>::operations;

template <class Kind>
[[nodiscard]] constexpr const KindOperations& operationsOf() noexcept {
    if constexpr (BuiltInKinds::contains<Kind>) {
        return builtInOperations[BuiltInKinds::indexOf<Kind>];
    } else {
        return OwnOperations<Kind>::operations;
    }
}

}  // namespace Internal

}  // namespace Optrella

#endif
