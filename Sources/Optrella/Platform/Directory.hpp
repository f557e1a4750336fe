// Directory.hpp - who the user is, and which groups the user belongs to.
//
// Every failure reads as "no": nothing is printed, nothing is reported.

#ifndef OPTRELLA_PLATFORM_DIRECTORY_HPP
#define OPTRELLA_PLATFORM_DIRECTORY_HPP

#include <cstdint>
#include <optional>
#include <string>

namespace Optrella::Platform {

// Returns the name of the logged-in user: the one of the process's user id, whatever the
// environment says. Under sudo that is the user whose rights the process has. Where the real and
// the effective id differ, the real one counts on Linux; on macOS the effective one does, unless it
// is root's.
[[nodiscard]] std::optional<std::string> loggedInUser();

// Returns whether the user exists, the group exists, and the one is a member of the other; as the
// user database says now, which may differ from the groups that the process was given at log-in.
[[nodiscard]] bool isMember(const std::string& user, std::uint32_t group);

// Returns what the user database calls user 0; "root" when it has no name for that.
[[nodiscard]] std::string nameOfRoot();

}  // namespace Optrella::Platform

#endif
