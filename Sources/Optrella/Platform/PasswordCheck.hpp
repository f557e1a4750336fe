// PasswordCheck.hpp - whether a password is a user's.

#ifndef OPTRELLA_PLATFORM_PASSWORDCHECK_HPP
#define OPTRELLA_PLATFORM_PASSWORDCHECK_HPP

#include <string>

#include "Optrella/Platform/Password.hpp"

namespace Optrella::Platform {

// Returns whether the directory accepts the password for that user; every failure reads as no,
// silently, at once.
[[nodiscard]] bool verifyPassword(const std::string& user, const Password& password);

}  // namespace Optrella::Platform

#endif
