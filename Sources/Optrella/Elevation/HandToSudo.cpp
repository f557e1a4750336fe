// What must hold here, whatever is changed:
// 1. sudo and its rules decide alone: nothing is asked, and no group is looked at.
// 2. What is started as root is the program that runs, by its absolute path, and nothing else.
// 3. A program that sudo has started so does not hand over once more: it would never end.

#include "Optrella/Elevation/HandToSudo.hpp"

#include <cstdlib>
#include <string_view>
#include <system_error>
#include <vector>

#include "Optrella/Platform/Directory.hpp"
#include "Optrella/Platform/OwnProgram.hpp"
#include "Optrella/Platform/Process.hpp"

namespace Optrella::HandToSudo {

namespace {

std::string sentence(const std::string& why) {
    return "This command must be run as root, and " + why + ".";
}

// SUDO_UID alone is no sign: what a user starts in `sudo su` or `sudo bash` has it as well.
bool isStartedBySudo(const std::string& program) {
    const char* user = std::getenv("SUDO_UID");         // NOLINT(concurrency-mt-unsafe)
    const char* command = std::getenv("SUDO_COMMAND");  // NOLINT(concurrency-mt-unsafe)
    if (user == nullptr || command == nullptr) return false;
    const std::string_view started = command;
    return started == program || started.starts_with(program + ' ');
}

}  // namespace

std::optional<std::string> refusal(std::span<const Text> arguments) noexcept {
    if (Platform::hasRightsOfRoot()) return std::nullopt;
    const std::optional<std::string> program = Platform::ownProgram();
    if (!program) return sentence("sudo cannot be told which program that is: use sudo yourself");
    if (isStartedBySudo(*program)) return sentence("sudo has run it as another user");
    // By name: the rules may have another user as the default, and not every sudo takes a number.
    std::vector<std::string> words{"sudo", "-u", Platform::nameOfRoot(), "--", *program};
    for (const Text& argument : arguments) words.push_back(argument.str());
    const int error = Platform::replaceProcess("/usr/bin/sudo", words);
    return sentence("/usr/bin/sudo cannot be started: " + std::generic_category().message(error));
}

}  // namespace Optrella::HandToSudo
