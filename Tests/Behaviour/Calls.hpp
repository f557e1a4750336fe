// Calls.hpp - makes the call that a case asks for.

#ifndef OPTRELLA_TESTS_BEHAVIOUR_CALLS_HPP
#define OPTRELLA_TESTS_BEHAVIOUR_CALLS_HPP

#include "Cases.hpp"

namespace Behaviour {

// What the call gave: the keys of its observation, an empty object for a call that has none.
// Throws NoCase. Made for a process of its own: the call may stop it.
json called(const json& aCase);

}  // namespace Behaviour

#endif
