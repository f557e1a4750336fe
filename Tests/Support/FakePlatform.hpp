// FakePlatform.hpp - a platform that records what it is asked and answers as a test scripts it.
//
// Linked in place of the real one, it shows what the library itself decides: which question it asks
// of the system, how often, and what it does with the answer.

#ifndef OPTRELLA_TESTS_SUPPORT_FAKEPLATFORM_HPP
#define OPTRELLA_TESTS_SUPPORT_FAKEPLATFORM_HPP

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Tests {

struct FakePlatform {
    struct Membership {
        std::string user;
        std::uint32_t group;
        friend bool operator==(const Membership&, const Membership&) = default;
    };
    struct LogEntry {
        std::string subsystem, category, label, message;
        friend bool operator==(const LogEntry&, const LogEntry&) = default;
    };

    // Answers.
    std::optional<std::string> user = "tester";
    std::set<std::uint32_t> groupsOfUser;
    std::set<std::string> existingPaths;
    std::set<std::string> directories;
    std::optional<std::string> currentDirectory = "/here";
    std::optional<std::string> bundleIdentifier;
    bool canStartThreads = true;
    // The lines that are typed, in order; nothing for the end of input, and when all are used up.
    std::vector<std::optional<std::string>> typedLines;
    std::string rightPassword = "right pass";
    std::vector<std::string> startArguments = {"./tool", "install", "a b"};
    std::vector<std::string> childBlocks;  // what a child writes
    bool canStartChildren = true;
    bool hasRightsOfRoot = false;
    std::optional<std::size_t> outputColumns{};  // of terminals that the streams lead to
    std::optional<std::size_t> errorColumns{};
    std::string nameOfRoot = "root";
    std::optional<std::string> ownProgram = "/there/tool";
    int replacementError = 2;  // of a process that cannot be replaced: no process here can

    // Questions.
    int userQuestions = 0;
    std::vector<Membership> membershipQuestions;
    std::vector<std::string> existenceQuestions;
    int bundleQuestions = 0;
    std::vector<std::string> prompts;
    struct Check {
        std::string user, password;
        friend bool operator==(const Check&, const Check&) = default;
    };
    std::vector<Check> passwordChecks;
    // Whether the process was concealed at each prompt, check and start of a child.
    std::vector<bool> concealedThen;

    // What reached the system.
    int concealments = 0;  // that are alive
    int threadsStarted = 0;
    std::vector<LogEntry> logEntries;
    std::vector<std::string> errorWrites;
    std::size_t errorWritesAtLastLogEntry = 0;
    struct Child {
        std::string program;
        std::vector<std::string> arguments;
        std::string input;
        friend bool operator==(const Child&, const Child&) = default;
    };
    std::vector<Child> children;
    std::vector<Child> replacements;  // without an input
};

// The platform of the running test.
FakePlatform& platform();

// A test with a new platform.
class PolicyTest : public testing::Test {
protected:
    PolicyTest() { platform() = FakePlatform(); }
};

}  // namespace Tests

#endif
