#include "Optrella/PromptForPassword.hpp"

#include <limits>
#include <optional>
#include <string>

#include "Optrella/Platform/Directory.hpp"
#include "Optrella/Text.hpp"

namespace Optrella::PromptForPassword {

bool validateGroupMembership(std::int64_t group) {
    // Before anything is looked up: such a number is a mistake in the program, not an answer.
    if (group < 0 || group > std::numeric_limits<std::uint32_t>::max()) Internal::fatalStop();
    const std::optional<std::string> user = Platform::loggedInUser();
    return user && Platform::isMember(*user, static_cast<std::uint32_t>(group));
}

}  // namespace Optrella::PromptForPassword
