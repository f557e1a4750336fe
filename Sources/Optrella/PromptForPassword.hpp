// PromptForPassword.hpp - whether the logged-in user already has administrator rights.
//
// Not for tools. Nothing is printed, and every failure of a look-up reads as "no".

#ifndef OPTRELLA_PROMPTFORPASSWORD_HPP
#define OPTRELLA_PROMPTFORPASSWORD_HPP

#include <cstdint>

namespace Optrella::PromptForPassword {

// Whether the logged-in user is a member of the group with this number.
// STOPS the process when the number is no group number (0 to 4294967295).
[[nodiscard]] bool validateGroupMembership(std::int64_t group);

}  // namespace Optrella::PromptForPassword

#endif
