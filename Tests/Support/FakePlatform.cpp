#include "FakePlatform.hpp"

#include <thread>

#include "Optrella/Platform/Directory.hpp"
#include "Optrella/Platform/Files.hpp"
#include "Optrella/Platform/Log.hpp"
#include "Optrella/Platform/Process.hpp"
#include "Optrella/Platform/Worker.hpp"

namespace Tests {

FakePlatform& platform() {
    static FakePlatform platform;
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

bool fileExists(const char* path) noexcept {
    platform().existenceQuestions.emplace_back(path);
    return platform().existingPaths.contains(path);
}

bool isFolder(const char* path) noexcept { return platform().folders.contains(path); }

std::optional<std::string> currentDirectory() { return platform().currentDirectory; }

void logInfo(const Log& log, std::string_view label, std::string_view message) {
    platform().logEntries.push_back(
        {log.subsystem, log.category, std::string(label), std::string(message)});
}

std::optional<std::string> bundleIdentifier() {
    ++platform().bundleQuestions;
    return platform().bundleIdentifier;
}

void writeStandardError(std::string_view bytes) noexcept {
    platform().errorWrites.emplace_back(bytes);
}

bool runOnWorker(void (*work)(void* context), void* context) {
    if (!platform().canStartThreads) return false;
    ++platform().threadsStarted;
    std::thread(work, context).join();
    return true;
}

}  // namespace Optrella::Platform
