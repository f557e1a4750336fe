// ParameterProtocol.hpp - the interface of every parameter, and the value that holds any kind.

#ifndef OPTRELLA_PARAMETERS_PARAMETERPROTOCOL_HPP
#define OPTRELLA_PARAMETERS_PARAMETERPROTOCOL_HPP

#include <cstddef>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

#include "Optrella/Export.hpp"
#include "Optrella/Parameters/BuiltInKinds.hpp"
#include "Optrella/Parameters/CommonDetails.hpp"
#include "Optrella/Parameters/KindChecks.hpp"
#include "Optrella/Parameters/KindOperations.hpp"
#include "Optrella/Parameters/ParameterView.hpp"
#include "Optrella/Text.hpp"

namespace Optrella {

// A value that owns a copy of any kind, one of the six or one of a tool's own. Small kinds sit
// inside it. Copying copies the kind; a parameter that was moved from can be assigned and
// destroyed.
class OPTRELLA_API ParameterProtocol {
public:
    // Copies or moves a parameter of any kind in. Does not compile for what is no ParameterKind.
    // Constrained by no more than a `common`: what is wrong with a kind is said by name, where a
    // list in braces would hide it.
    template <class Source, Internal::NamesCommon Kind = std::remove_cvref_t<Source>>
    ParameterProtocol(Source&& kind) noexcept(std::is_nothrow_constructible_v<Kind, Source>);

    // What has no `common` is no parameter.
    template <class Source, Internal::NoParameterKind = std::remove_cvref_t<Source>>
    ParameterProtocol(Source&& kindWithoutCommon) = delete;

    // Copy, move and destroy the held parameter. What the copy of a tool's own kind throws, these
    // throw.
    ParameterProtocol(const ParameterProtocol& other) : ParameterProtocol(other.view()) {}
    ParameterProtocol(ParameterProtocol&& other) noexcept : operations_(other.operations_) {
        takeFrom(other);
    }
    ParameterProtocol& operator=(ParameterProtocol other) noexcept {
        destroy();
        operations_ = other.operations_;
        takeFrom(other);
        return *this;
    }
    ~ParameterProtocol() { destroy(); }

    // Copies a parameter that somebody else holds; views the held one.
    explicit ParameterProtocol(Internal::ParameterView parameter)
        : operations_(&parameter.operations()),
          common_(operations_->copy(parameter.common(), place())) {}
    [[nodiscard]] Internal::ParameterView view() const noexcept { return {*operations_, *common_}; }

    // Return what every parameter carries: a part of the held parameter, good as long as that
    // lives.
    [[nodiscard]] const commonDetails& common() const noexcept { return *common_; }
    [[nodiscard]] commonDetails& common() noexcept { return *common_; }

    // Returns why the stored value is not acceptable, or nothing when it is. By default: nothing.
    [[nodiscard]] std::optional<Text> validate() const { return operations_->validate(*common_); }

    // Returns whether both stand for the same declared parameter. By default: the same kind, the
    // same tags in the same order, the same tagHelp and hasParameter; what the user gave,
    // parameterName and a kind's own fields are left out, so that a declaration equals the copy
    // that holds a value.
    [[nodiscard]] bool isEqualTo(const ParameterProtocol& other) const {
        return operations_->isEqualTo(*common_, other);
    }

    // Stores the text that the user gave. By default: in common().userValue, whatever it is.
    void storeUserValue(Text newValue) {
        operations_->storeUserValue(*common_, std::move(newValue));
    }

    // Returns the primary tag. STOPS the process when there are no tags.
    [[nodiscard]] const Text& firstTag() const noexcept { return common().tags.front(); }

    // Returns the held parameter, or null when it is of another kind.
    template <class Kind>
    [[nodiscard]] const Kind* as() const noexcept {
        return view().as<Kind>();
    }
    // Returns whether both hold a parameter of one kind, whatever it says.
    [[nodiscard]] bool isSameKindAs(const ParameterProtocol& other) const noexcept {
        return operations_ == other.operations_;
    }
    // Returns false for a kind that replaces storeUserValue.
    [[nodiscard]] bool storesByDefault() const noexcept { return operations_->storesByDefault; }

private:
    // Where a copy of the kind is made; null is the heap.
    [[nodiscard]] void* place() noexcept { return operations_->isInline ? storage_ : nullptr; }
    void destroy() noexcept {
        (operations_->isInline ? operations_->destroy : operations_->remove)(*common_);
    }
    // Takes what `other` holds; operations_ is already other's, the rest holds nothing.
    void takeFrom(ParameterProtocol& other) noexcept;

    const Internal::KindOperations* operations_;
    commonDetails* common_;  // within the kind
    alignas(commonDetails) std::byte storage_[Internal::inlineKindSize];
};

// A parameter list: what a declaration lists, and what an action is given.
using Parameters = std::vector<ParameterProtocol>;

// The default operations as members, so that a kind can be asked without a ParameterProtocol around
// it. The six kinds have them; a tool's own kind may:
//     struct Port : ParameterDefaults<Port> { ... };
template <class Kind>
struct OPTRELLA_API ParameterDefaults {
    // Do what the operations of ParameterProtocol do by default. firstTag STOPS the process when
    // there are no tags.
    [[nodiscard]] std::optional<Text> validate() const { return std::nullopt; }
    [[nodiscard]] bool isEqualTo(const ParameterProtocol& other) const {
        const Kind* sameKind = other.as<Kind>();
        return sameKind != nullptr && Internal::isSameDeclaration(self().common, sameKind->common);
    }
    void storeUserValue(Text newValue) {
        static_cast<Kind&>(*this).common.userValue = std::move(newValue);
    }
    [[nodiscard]] const Text& firstTag() const { return self().common.tags.front(); }

private:
    [[nodiscard]] const Kind& self() const { return static_cast<const Kind&>(*this); }
};

namespace Internal {

// What the library's own kinds are made of.
template <class Kind>
struct OPTRELLA_API BuiltInKind : ParameterDefaults<Kind> {
    static_assert(BuiltInKinds::contains<Kind>, "a built-in kind must stand in BuiltInKinds");
};

}  // namespace Internal

template <class Source, Internal::NamesCommon Kind>
ParameterProtocol::ParameterProtocol(Source&& kind) noexcept(
    std::is_nothrow_constructible_v<Kind, Source>)
    : operations_(&Internal::operationsOf<Kind>()) {
    Internal::checkKind<Kind>();
    common_ = Internal::HeldKind<Kind>::make(std::forward<Source>(kind), place());
}

}  // namespace Optrella

#endif
