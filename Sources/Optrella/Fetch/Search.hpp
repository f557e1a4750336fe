// Search.hpp - the search that every fetch operation makes.

#ifndef OPTRELLA_FETCH_SEARCH_HPP
#define OPTRELLA_FETCH_SEARCH_HPP

#include "Optrella/Parameters.hpp"

namespace Optrella::Internal {

// Returns the first element of the list that is equal to `type`, or null. The element is the one
// that is asked, so that a tool's own kind decides.
[[nodiscard]] const ParameterProtocol* fetchOptionalValidParameter(ParameterView type,
                                                                   const Parameters& list);

}  // namespace Optrella::Internal

#endif
