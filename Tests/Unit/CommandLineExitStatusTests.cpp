#include "Optrella/CommandLineExitStatus.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <thread>
#include <type_traits>
#include <vector>

#include "Optrella/CommandLineExitStatus/LogSubsystem.hpp"
#include "Support/Capture.hpp"
#include "Support/FakePlatform.hpp"

namespace {

using namespace Optrella;
using Tests::platform;

class OutputErrorMessageTest : public Tests::PolicyTest {};

std::int32_t statusOfAFreshProcess() { return CommandLineExitStatus::shared().exitStatus; }

// These start the test program again: the values are made once in a process.
class FreshProcess : public testing::Test {
protected:
    FreshProcess() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(FreshProcess, ReadsMinusOneHundredAsTheStatus) {
    EXPECT_EXIT(std::exit(statusOfAFreshProcess() == -100 ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST(CommandLineExitStatus, ReadsBackWhatIsWritten) {
    std::int32_t& status = CommandLineExitStatus::shared().exitStatus;
    const std::int32_t before = status;
    for (const std::int32_t value : {0, 1, -1, 256, std::numeric_limits<std::int32_t>::min(),
                                     std::numeric_limits<std::int32_t>::max()}) {
        status = value;
        EXPECT_EQ(CommandLineExitStatus::shared().exitStatus, value);
    }
    status = before;
}

TEST(CommandLineExitStatus, IsOneForAllThreads) {
    CommandLineExitStatus* onThread = nullptr;
    std::thread([&] { onThread = &CommandLineExitStatus::shared(); }).join();
    EXPECT_EQ(onThread, &CommandLineExitStatus::shared());
}

TEST(CommandLineExitStatus, IsReachedThroughSharedAlone) {
    static_assert(!std::is_default_constructible_v<CommandLineExitStatus>);
    static_assert(!std::is_copy_constructible_v<CommandLineExitStatus>);
    static_assert(!std::is_copy_assignable_v<CommandLineExitStatus>);
    static_assert(!std::is_polymorphic_v<CommandLineExitStatus>);
}

TEST_F(FreshProcess, HasTheFixedTextForSubsystemWithoutABundleIdentifier) {
    EXPECT_EXIT(
        {
            platform().bundleIdentifier = std::nullopt;
            const bool isDefault = Internal::subsystem() == "com.brenvale.package.Optrella";
            std::exit(isDefault ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(FreshProcess, HasTheBundleIdentifierForSubsystemAndAsksForItOnce) {
    EXPECT_EXIT(
        {
            platform().bundleIdentifier = "com.example.tool";
            bool isRight = Internal::subsystem() == "com.example.tool";
            platform().bundleIdentifier = "com.example.other";
            isRight = isRight && Internal::subsystem() == "com.example.tool";
            std::exit(isRight && platform().bundleQuestions == 1 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(FreshProcess, MakesTheSubsystemOnceForManyThreads) {
    EXPECT_EXIT(
        {
            platform().bundleIdentifier = "com.example.tool";
            std::vector<std::thread> threads;
            for (int i = 0; i < 16; ++i) {
                threads.emplace_back([] { static_cast<void>(Internal::subsystem()); });
            }
            for (std::thread& thread : threads) thread.join();
            std::exit(platform().bundleQuestions == 1 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(FreshProcess, MayReportAnErrorWhileItsStaticObjectsAreDestroyed) {
    EXPECT_EXIT(
        {
            // Registered before the subsystem is made, and so called after it would be destroyed.
            std::atexit([] {
                outputErrorMessage("late");
                if (platform().logEntries.back().subsystem != "com.example.tool") std::_Exit(1);
            });
            platform().bundleIdentifier = "com.example.tool";
            outputErrorMessage("early");
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(OutputErrorMessageTest, WritesTheMessageAndThenALineEnd) {
    outputErrorMessage("No such item");
    EXPECT_EQ(platform().errorWrites, (std::vector<std::string>{"No such item", "\n"}));
}

TEST_F(OutputErrorMessageTest, KeepsAnEmptyMessageAndALineEndOfTheMessagesOwn) {
    outputErrorMessage("");
    outputErrorMessage("line\n");
    EXPECT_EQ(platform().errorWrites, (std::vector<std::string>{"", "\n", "line\n", "\n"}));
}

TEST_F(OutputErrorMessageTest, WritesBytesAsTheyAre) {
    const std::string message("caf\u00E9 \xFF\0 x", 10);
    outputErrorMessage(message);
    EXPECT_EQ(platform().errorWrites, (std::vector<std::string>{message, "\n"}));
}

TEST_F(OutputErrorMessageTest, RecordsOneEntryWithTheNameOfItsFileAsCategory) {
    outputErrorMessage("No such item");
    const std::vector<Tests::FakePlatform::LogEntry> expected{
        {Internal::subsystem().str(), "CommandLineExitStatus.cpp", "outputErrorMessage(message:)",
         "No such item"}};
    EXPECT_EQ(platform().logEntries, expected);
}

TEST_F(OutputErrorMessageTest, RecordsTheEntryBeforeItWrites) {
    outputErrorMessage("message");
    EXPECT_EQ(platform().logEntries.size(), 1U);
    EXPECT_EQ(platform().errorWritesAtLastLogEntry, 0U);
}

TEST_F(OutputErrorMessageTest, PrintsNothingOnStandardOutput) {
    EXPECT_EQ(Tests::capture([] { outputErrorMessage("No such item"); }), Tests::Output());
}

TEST_F(OutputErrorMessageTest, LeavesTheExitStatusAlone) {
    const std::int32_t before = CommandLineExitStatus::shared().exitStatus;
    outputErrorMessage("No such item");
    EXPECT_EQ(CommandLineExitStatus::shared().exitStatus, before);
}

}  // namespace
