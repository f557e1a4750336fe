#include "Optrella/Parameters/ParameterProtocol.hpp"

#include <array>

#include "Optrella/Parameters.hpp"

namespace Optrella {

namespace Internal {

namespace {

template <class... Kinds>
constexpr auto operationsOfAll(KindList<Kinds...>) {
    return std::array{HeldKind<Kinds>::operations...};
}

}  // namespace

constinit const std::array<KindOperations, BuiltInKinds::size> builtInOperations =
    operationsOfAll(BuiltInKinds());

}  // namespace Internal

void ParameterProtocol::takeFrom(ParameterProtocol& other) noexcept {
    if (operations_->isInline) {
        common_ = operations_->move(*other.common_, storage_);
    } else {
        common_ = other.common_;
        // Takes the place of what is moved.
        other.operations_ = &Internal::operationsOf<ParameterNone>();
        other.common_ =
            Internal::HeldKind<ParameterNone>::make(ParameterNone(Tags(), Text()), other.place());
    }
}

}  // namespace Optrella
