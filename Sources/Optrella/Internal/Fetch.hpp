// Fetch.hpp - the search behind every fetch operation.

#ifndef OPTRELLA_INTERNAL_FETCH_HPP
#define OPTRELLA_INTERNAL_FETCH_HPP

#include "Optrella/Parameters.hpp"

namespace Optrella::Internal {

// The first element of the list that is equal to `type`, or null. The element is the one that is
// asked, so that a tool's own kind decides.
[[nodiscard]] const ParameterProtocol* fetchOptionalValidParameter(const ParameterProtocol& type,
                                                                   const Parameters& list);

}  // namespace Optrella::Internal

#endif
