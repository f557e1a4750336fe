// What must hold here, whatever is changed:
// 1. A password lives in Platform::Password alone, and no longer than it is needed.
// 2. It reaches the directory and the standard input of sudo, and nothing else: no argument, no
//    environment, no log, no stream of ours.
// 3. Nobody but a member of the administrators' group is asked for one.
// 4. Whatever goes wrong reads as a refusal, without a word of why.

#include "Optrella/Elevation/PromptForPassword.hpp"

#include <limits>
#include <utility>
#include <vector>

#include "Optrella/Platform/ChildProcess.hpp"
#include "Optrella/Platform/Directory.hpp"
#include "Optrella/Platform/PasswordCheck.hpp"
#include "Optrella/Platform/Terminal.hpp"
#include "Optrella/Text.hpp"
#include "Optrella/Text/Print.hpp"
#include "Optrella/Text/Unicode.hpp"

namespace Optrella::PromptForPassword {

namespace {

constexpr std::int64_t administrators = 80;
constexpr int attempts = 3;

// The password with every broken sequence replaced: what is verified and handed on is always a
// text.
std::optional<Platform::Password> repaired(Platform::Password typed) {
    if (Internal::isUTF8(typed.bytes())) return typed;
    Platform::Password text;
    std::string_view rest = typed.bytes();
    while (!rest.empty()) {
        const Internal::Sequence next = Internal::firstSequence(rest);
        if (!text.append(next.isValid ? rest.substr(0, next.size) : "\uFFFD")) return std::nullopt;
        rest.remove_prefix(next.size);
    }
    return text;
}

bool isAccepted(const Platform::Password& password) {
    const std::optional<std::string> user = Platform::loggedInUser();
    return user && validate(*user, password);
}

void relay(void* context, std::string_view block) {
    static_cast<OutputRelay*>(context)->handle(block);
}

}  // namespace

bool validateGroupMembership(std::int64_t group) {
    // Before anything is looked up: such a number is a mistake in the program, not an answer.
    if (group < 0 || group > std::numeric_limits<std::uint32_t>::max()) Internal::fatalStop();
    const std::optional<std::string> user = Platform::loggedInUser();
    return user && Platform::isMember(*user, static_cast<std::uint32_t>(group));
}

std::optional<Platform::Password> prompt() {
    if (!validateGroupMembership(administrators)) return std::nullopt;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        std::optional<Platform::Password> typed = Platform::readPassword("Password:");
        if (!typed) continue;
        std::optional<Platform::Password> password = repaired(*std::move(typed));
        if (password && isAccepted(*password)) return password;
        Internal::printLine({"Sorry, try again."});
    }
    return std::nullopt;
}

bool validate(const std::string& user, const Platform::Password& password) {
    return Platform::verifyPassword(user, password);
}

void rerun(Platform::Password password, std::span<const std::string> arguments) {
    std::vector<std::string> sudoArguments{"-S"};
    sudoArguments.insert(sudoArguments.end(), arguments.begin(), arguments.end());
    OutputRelay output;
    if (!password.append("\n") || !Platform::runChild("/usr/bin/sudo", sudoArguments,
                                                      std::move(password), {relay, &output})) {
        Internal::fatalStop();
    }
}

void OutputRelay::handle(std::string_view block) {
    if (block.empty() || !Internal::isUTF8(block)) return;
    if (isFirstLine_) {
        const std::optional<std::string_view> rest = removeFirstLine(block);
        // Until a block has brought something after its first line feed, the next one loses its
        // first line too, on purpose: what sudo's prompt and the tool's output share is one line.
        if (!rest) return;
        isFirstLine_ = false;
        block = *rest;
    }
    // Every block gets a line end of its own, whether it has one already or not.
    Internal::printLine({block});
}

std::optional<std::string_view> removeFirstLine(std::string_view string) noexcept {
    for (std::size_t i = 0; i < string.size(); ++i) {
        if (string[i] != '\n' || (i > 0 && string[i - 1] == '\r')) continue;
        if (i + 1 == string.size()) return std::nullopt;
        return string.substr(i + 1);
    }
    return std::nullopt;
}

}  // namespace Optrella::PromptForPassword
