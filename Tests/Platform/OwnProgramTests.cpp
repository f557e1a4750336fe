// The file of the program that runs, and another program in its place, on the real system.

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "ChildProcess/Traces.hpp"
#include "Platform/Child.hpp"
#include "Support/TemporaryDirectory.hpp"

namespace fs = std::filesystem;

namespace {

using Words = std::vector<std::string>;

// The loader that the kernel starts for the probe.
std::string loader() {
    for (const char* path : {"/lib64/ld-linux-x86-64.so.2", "/lib/ld-linux-aarch64.so.1"}) {
        if (fs::exists(path)) return path;
    }
    return {};
}

class OwnProgram : public testing::Test {
protected:
    OwnProgram() {
        fs::create_directory("bin");
        fs::create_directory("other");
        fs::copy_file(Tests::programBeside("own-program-probe"), tool_);
    }

    // What the probe writes that is started by this path, with these words after its name.
    static std::string told(const std::string& path, const Words& wishes,
                            const std::string& name = "tool") {
        Words words{name};
        words.insert(words.end(), wishes.begin(), wishes.end());
        const Tests::Told answer = Tests::toldBy(path, words, [] {});
        EXPECT_EQ(answer.exitCode, 0);
        return answer.output;
    }

    Tests::TemporaryDirectory directory_;
    const std::string& here_ = directory_.path();
    const std::string tool_ = here_ + "/bin/tool";
    const std::string itself_ = "program " + tool_ + "\n";
    const std::string none_ = "program\n";
};

// ---- The file ----

TEST_F(OwnProgram, HasThePathThatItWasStartedBy) {
    EXPECT_EQ(told(tool_, {"program"}), itself_);
    EXPECT_EQ(told(here_ + "/other/../bin/tool", {"program"}),
              "program " + here_ + "/other/../bin/tool\n");
}

TEST_F(OwnProgram, DoesNotTakeThePathFromItsFirstArgument) {
    for (const char* name : {"", "-bash", "-e", "A=B", "/bin/sh", "tool", "./other"}) {
        EXPECT_EQ(told(tool_, {"program"}, name), itself_) << name;
    }
}

TEST_F(OwnProgram, KeepsTheNameOfALink) {
    fs::create_symlink(tool_, "other/link");
    fs::create_hard_link(tool_, "other/hard");
    EXPECT_EQ(told(here_ + "/other/link", {"program"}), "program " + here_ + "/other/link\n");
    EXPECT_EQ(told(here_ + "/other/hard", {"program"}), "program " + here_ + "/other/hard\n");
}

TEST_F(OwnProgram, CountsARelativePathFromTheDirectoryOfTheStart) {
    EXPECT_EQ(told("bin/tool", {"program"}), itself_);
    EXPECT_EQ(told("./bin/tool", {"program"}), itself_);
    EXPECT_EQ(told("././bin/tool", {"chdir", "/", "program"}), itself_);
    EXPECT_EQ(told("other/../bin/tool", {"chdir", "other", "program"}),
              "program " + here_ + "/other/../bin/tool\n");
}

TEST_F(OwnProgram, IsNotThatOfTheSameNameInAnotherDirectory) {
    fs::copy_file(tool_, here_ + "/other/tool");
    fs::current_path("bin");
    EXPECT_EQ(told("./tool", {"chdir", here_ + "/other", "program"}), itself_);
    EXPECT_EQ(told("tool", {"chdir", here_ + "/other", "program"}), itself_);
}

TEST_F(OwnProgram, HasItsNewPathWhenItWasMoved) {
    EXPECT_EQ(told(tool_, {"move", tool_, here_ + "/other/new", "program"}),
              "program " + here_ + "/other/new\n");
}

TEST_F(OwnProgram, HasItsOwnPathWhenTheLinkIsGoneOrLeadsElsewhere) {
    fs::create_symlink(tool_, "link");
    EXPECT_EQ(told("./link", {"remove", "link", "program"}), itself_);
    fs::create_symlink(tool_, "link");
    EXPECT_EQ(told("./link", {"remove", "link", "copy", tool_, "link", "program"}), itself_);
}

// By /proc/self/exe another process would start itself.
TEST_F(OwnProgram, HasItsOwnPathWhereTheOneOfTheStartMeansAnotherFileToOtherProcesses) {
    fs::create_symlink("/proc/self/exe", "other/itself");
    fs::create_symlink("other/itself", "itself");
    fs::create_symlink("/proc/self", "self");
    for (const char* path : {"/proc/self/exe", "/proc/../proc/self/exe", "self/exe", "itself"}) {
        EXPECT_EQ(told(tool_, {"replace", path, "tool", "program", "--"}), itself_) << path;
    }
}

TEST_F(OwnProgram, HasNoPathWhenItWasDeletedOrReplaced) {
    fs::copy_file(tool_, "other/tool");
    EXPECT_EQ(told(tool_, {"remove", tool_, "program"}), none_);
    fs::copy_file("other/tool", tool_);
    EXPECT_EQ(told(tool_, {"remove", tool_, "copy", "other/tool", tool_, "program"}), none_);
}

// The system adds " (deleted)" to the path of a file that was removed.
TEST_F(OwnProgram, IsNotTheFileThatHasTheNameOfADeletedOne) {
    EXPECT_EQ(told(tool_, {"copy", tool_, tool_ + " (deleted)", "remove", tool_, "program"}),
              none_);
}

TEST_F(OwnProgram, MayHaveALongPath) {
    std::string path = here_;
    for (int i = 0; i < 12; ++i) {
        path += '/' + std::string(200, 'd');
        fs::create_directory(path);
    }
    fs::rename(tool_, path + "/tool");
    fs::create_symlink(path + "/tool", "link");
    EXPECT_EQ(told("./link", {"remove", "link", "program"}), "program " + path + "/tool\n");
}

TEST_F(OwnProgram, HasNoPathWhereALoaderWasGivenTheProgram) {
    if (loader().empty()) GTEST_SKIP() << "it is not known where the loader is on this processor";
    EXPECT_EQ(told(loader(), {tool_, "program"}), none_);
    EXPECT_EQ(told(loader(), {"bin/tool", "program"}), none_);
    EXPECT_EQ(told(loader(), {"--argv0", tool_, "bin/tool", "program"}), none_);
}

// ---- Another program in its place ----

TEST_F(OwnProgram, GivesItsPlaceToAnotherWithTheseArguments) {
    EXPECT_EQ(told(tool_, {"replace", "/bin/sh", "a name", "-c", R"(printf '<%s>' "$0" "$@")",
                           "zero", "", "a b", "\xff", "--", "print", "never"}),
              "<zero><><a b><\xff>");
    EXPECT_EQ(told(tool_, {"replace", tool_, "-x", "program", "--"}), itself_);
}

TEST_F(OwnProgram, WritesBeforeWhatWaitsInStandardOutput) {
    EXPECT_EQ(told(tool_, {"print", "first, ", "replace", "/bin/echo", "echo", "second", "--"}),
              "first, second\n");
}

TEST_F(OwnProgram, GivesTheOtherTheSignalMaskOfTheStart) {
    EXPECT_EQ(told(tool_, {"mask", "block", "mask", "replace", tool_, "tool", "mask", "--"}),
              "mask\nmask 10 15\nmask\n");
}

TEST_F(OwnProgram, GivesTheOtherWhatWasBlockedWhenItWasStarted) {
    sigset_t some;
    ::sigemptyset(&some);
    ::sigaddset(&some, SIGHUP);
    ::pthread_sigmask(SIG_BLOCK, &some, nullptr);
    const std::string output =
        told(tool_, {"block", "mask", "replace", tool_, "tool", "mask", "--"});
    ::pthread_sigmask(SIG_UNBLOCK, &some, nullptr);
    EXPECT_EQ(output, "mask 10 15\nmask 1\n");
}

TEST_F(OwnProgram, TellsWhyThereIsNoOtherAndKeepsTheSignalMask) {
    std::ofstream("plain") << "no program";
    fs::permissions("plain", fs::perms::owner_read);
    const std::vector<std::pair<std::string, int>> reasons = {
        {"absent", ENOENT}, {"plain", EACCES}, {"other", EACCES}, {"plain/tool", ENOTDIR}};
    for (const auto& [path, number] : reasons) {
        EXPECT_EQ(told(tool_, {"block", "replace", path, "name", "--", "mask"}),
                  "error " + std::to_string(number) + "\nmask 10 15\n")
            << path;
    }
    fs::permissions("plain", fs::perms::owner_all);
    EXPECT_EQ(told(tool_, {"replace", "plain", "name", "--"}),
              "error " + std::to_string(ENOEXEC) + "\n");
}

TEST_F(OwnProgram, DoesNotLookForTheOtherOnThePath) {
    EXPECT_EQ(told(tool_, {"replace", "echo", "echo", "--"}),
              "error " + std::to_string(ENOENT) + "\n");
}

TEST_F(OwnProgram, GivesNoPartOfAnArgumentWithANul) {
    EXPECT_EQ(told(tool_, {"replace", "/bin/echo", "echo", "aNULb", "--", "mask"}),
              "error " + std::to_string(EINVAL) + "\nmask\n");
}

}  // namespace
