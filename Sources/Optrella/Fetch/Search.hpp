// Search.hpp - what every fetch operation does: the search, and the value of what it has found.

#ifndef OPTRELLA_FETCH_SEARCH_HPP
#define OPTRELLA_FETCH_SEARCH_HPP

#include <cstdint>
#include <span>

#include "Optrella/Parameters.hpp"
#include "Optrella/Values.hpp"

namespace Optrella::Internal {

// Returns the first element of the list that is equal to `type`, or null. The element is the one
// that is asked, so that a tool's own kind decides.
[[nodiscard]] const ParameterProtocol* fetchOptionalValidParameter(
    ParameterView type, std::span<const ParameterProtocol> list);

// Return the value of a parameter that was given.
[[nodiscard]] inline Text valueOf(const ParameterString& given) noexcept {
    return given.common.userValue;
}
[[nodiscard]] inline UUID valueOf(const ParameterUUID& given) noexcept {
    // What is no UUID becomes the all-zero one, on purpose: it was given, so it is not absent.
    return UUID::fromText(given.common.userValue).value_or(UUID{});
}
template <class Kind>
[[nodiscard]] auto valueOf(const Kind& given) noexcept {
    return given.getValue();
}

}  // namespace Optrella::Internal

#endif
