#include "FakePlatform.hpp"

#include <cstdio>
#include <cstdlib>
#include <thread>

#include "Optrella/Platform/ChildProcess.hpp"
#include "Optrella/Platform/Concealment.hpp"
#include "Optrella/Platform/Directory.hpp"
#include "Optrella/Platform/Files.hpp"
#include "Optrella/Platform/Log.hpp"
#include "Optrella/Platform/OwnProgram.hpp"
#include "Optrella/Platform/PasswordCheck.hpp"
#include "Optrella/Platform/Process.hpp"
#include "Optrella/Platform/Screen.hpp"
#include "Optrella/Platform/StandardStreams.hpp"
#include "Optrella/Platform/StartArguments.hpp"
#include "Optrella/Platform/Terminal.hpp"
#include "Optrella/Platform/Worker.hpp"

namespace Tests {

FakePlatform& platform() {
    static FakePlatform& platform = *new FakePlatform();  // asked until the process ends
    return platform;
}

}  // namespace Tests

namespace Optrella::Platform {

using Tests::platform;

std::optional<std::string> loggedInUser() {
    ++platform().userQuestions;
    return platform().user;
}

bool isMember(const std::string& user, std::uint32_t group) {
    platform().membershipQuestions.push_back({user, group});
    return user == platform().user && platform().groupsOfUser.contains(group);
}

Concealment::Concealment() noexcept { ++platform().concealments; }
Concealment::~Concealment() { --platform().concealments; }

bool verifyPassword(const std::string& user, const Password& password) {
    platform().concealedThen.push_back(platform().concealments > 0);
    platform().passwordChecks.push_back({user, std::string(password.bytes())});
    return password.bytes() == platform().rightPassword;
}

std::optional<Password> readPassword(const char* prompt) {
    platform().concealedThen.push_back(platform().concealments > 0);
    const std::size_t attempt = platform().prompts.size();
    platform().prompts.emplace_back(prompt);
    if (attempt >= platform().typedLines.size()) return std::nullopt;
    const std::optional<std::string>& line = platform().typedLines[attempt];
    if (!line) return std::nullopt;
    Password password;
    EXPECT_TRUE(password.append(*line));
    return password;
}

bool runChild(const char* program, std::span<const std::string> arguments, Password input,
              BlockHandler handler) {
    if (!platform().canStartChildren) return false;
    platform().concealedThen.push_back(platform().concealments > 0);
    platform().children.push_back(
        {program, {arguments.begin(), arguments.end()}, std::string(input.bytes())});
    for (const std::string& block : platform().childBlocks) {
        std::thread(handler.handle, handler.context, std::string_view(block)).join();
    }
    return true;
}

const std::vector<std::string>& startArguments() { return platform().startArguments; }

bool fileExists(const char* path) noexcept {
    platform().existenceQuestions.emplace_back(path);
    return platform().existingPaths.contains(path);
}

bool isDirectory(const char* path) noexcept { return platform().directories.contains(path); }

std::optional<std::string> currentDirectory() { return platform().currentDirectory; }

void logInfo(const Log& log, std::string_view label, std::string_view message) {
    platform().logEntries.push_back(
        {log.subsystem, log.category, std::string(label), std::string(message)});
    platform().errorWritesAtLastLogEntry = platform().errorWrites.size();
}

std::string nameOfRoot() { return platform().nameOfRoot; }

std::optional<std::string> takeVariable(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr) return std::nullopt;
    std::string taken = value;
    ::unsetenv(name);
    return taken;
}

std::optional<std::size_t> screenColumns(Stream stream) noexcept {
    return stream == Stream::output ? platform().outputColumns : platform().errorColumns;
}

bool isTerminal(Stream stream) noexcept { return screenColumns(stream).has_value(); }

bool hasRightsOfRoot() noexcept { return platform().hasRightsOfRoot; }

std::optional<std::string> ownProgram() { return platform().ownProgram; }

int replaceProcess(const char* program, std::span<const std::string> arguments) {
    platform().replacements.push_back({program, {arguments.begin(), arguments.end()}, {}});
    return platform().replacementError;
}

std::optional<std::string> bundleIdentifier() {
    ++platform().bundleQuestions;
    return platform().bundleIdentifier;
}

void writeStandardError(std::string_view bytes) noexcept {
    platform().errorWrites.emplace_back(bytes);
}

void writeStandardOutput(std::string_view bytes) noexcept {
    std::fwrite(bytes.data(), 1, bytes.size(), stdout);
    std::fflush(stdout);
}

bool runOnWorker(void (*work)(void* context), void* context) {
    if (!platform().canStartThreads) return false;
    ++platform().threadsStarted;
    std::thread(work, context).join();
    return true;
}

}  // namespace Optrella::Platform
