// PromptForPassword.hpp - administrator rights for a user who does not have them yet.
//
// Not for tools: validatePermissions asks here whether the logged-in user has administrator rights,
// offers the password prompt, and starts the tool again under sudo. Failures of every look-up read
// as "no".

#ifndef OPTRELLA_ELEVATION_PROMPTFORPASSWORD_HPP
#define OPTRELLA_ELEVATION_PROMPTFORPASSWORD_HPP

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Optrella/Platform/Password.hpp"

namespace Optrella::PromptForPassword {

// Returns whether the logged-in user is a member of the group with this number.
// STOPS the process when the number is no group number (0 to 4294967295).
[[nodiscard]] bool validateGroupMembership(std::int64_t group);

// Asks a member of the administrators' group for the password, three times at most, and says on
// standard output when one was wrong. Returns nothing when none was right, and, without a word, for
// everybody else.
[[nodiscard]] std::optional<Platform::Password> prompt();

// Returns whether the directory accepts the password for the user.
[[nodiscard]] bool validate(const std::string& user, const Platform::Password& password);

// Starts the tool with these arguments (the program name first) under sudo, gives it the password
// and prints what it writes. Returns when it has ended, however it did.
// STOPS the process when sudo cannot be started.
void rerun(Platform::Password password, std::span<const std::string> arguments);

// Prints what the tool under sudo writes, block by block, without the first line, on which sudo
// asks for the password.
class OutputRelay {
public:
    // Prints one block; drops it when it is not UTF-8.
    void handle(std::string_view block);

private:
    bool isFirstLine_ = true;
};

// Returns what follows the first line feed: nothing when there is none, or when nothing follows it.
// A carriage return with its line feed is one character, and no line feed.
[[nodiscard]] std::optional<std::string_view> removeFirstLine(std::string_view string) noexcept;

}  // namespace Optrella::PromptForPassword

#endif
