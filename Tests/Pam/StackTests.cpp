// Stacks of modules, played by the system's PAM from a directory of the test.

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "Optrella/Platform/Linux/Pam.hpp"
#include "Support/Capture.hpp"

using namespace Optrella::Platform;
namespace fs = std::filesystem;

extern "C" {
[[gnu::weak]] void __lsan_disable();
[[gnu::weak]] void __lsan_enable();
}

namespace {

// PAM's library itself leaks a little when it cannot start.
class Leaks {
public:
    Leaks() {
        if (__lsan_disable != nullptr) __lsan_disable();
    }
    Leaks(const Leaks&) = delete;
    Leaks& operator=(const Leaks&) = delete;
    ~Leaks() {
        if (__lsan_enable != nullptr) __lsan_enable();
    }
};

const std::string played = "auth required " PAM_TEST_MODULE " ";

bool canUseAnotherDirectory() {
    void* const library = ::dlopen("libpam.so.0", RTLD_NOW | RTLD_LOCAL);
    const bool can = library != nullptr && ::dlsym(library, "pam_start_confdir") != nullptr;
    if (library != nullptr) ::dlclose(library);
    return can;
}

class PamStack : public testing::Test {
protected:
    void SetUp() override {
        if (!canUseAnotherDirectory()) GTEST_SKIP() << "no PAM here that reads another directory";
        std::string name = testing::TempDir() + "optrella-pam-XXXXXX";
        ASSERT_NE(::mkdtemp(name.data()), nullptr);
        directory = name;
    }
    void TearDown() override {
        if (!directory.empty()) fs::remove_all(directory);
    }

    void service(const std::string& stack, const char* name = "sudo") const {
        std::ofstream(directory / name) << stack << "\n";
    }

    // The stack's answer; anything that it writes is a failed expectation.
    [[nodiscard]] bool accepts(std::string_view text) const {
        Password password;
        EXPECT_TRUE(password.append(text));
        bool isAccepted = false;
        const Tests::Output output = Tests::capture(
            [&] { isAccepted = Pam::verify("tadmin", password, directory.c_str()); });
        EXPECT_EQ(output, Tests::Output());
        return isAccepted;
    }
    [[nodiscard]] bool stackAccepts(const std::string& stack, std::string_view text) const {
        service(stack);
        return accepts(text);
    }

    [[nodiscard]] std::string recording() const { return "record=" + recorded().string() + " "; }
    [[nodiscard]] fs::path recorded() const { return directory / "recorded"; }
    [[nodiscard]] std::string record() const {
        std::ifstream file(recorded());
        return {std::istreambuf_iterator<char>(file), {}};
    }

    fs::path directory;
};

TEST_F(PamStack, AcceptsTheRightPasswordAndNoOther) {
    service(played + "talk=1 right=secret");
    EXPECT_TRUE(accepts("secret"));
    for (const char* wrong : {"", "secre", "secret ", " secret", "SECRET", "junk"}) {
        EXPECT_FALSE(accepts(wrong)) << wrong;
    }
}

TEST_F(PamStack, IsGivenThePasswordOnceAndWhole) {
    const std::string password = " \xFF\xC3\xA9 space at both ends ";
    EXPECT_TRUE(stackAccepts(played + recording() + "talk=1", password));
    EXPECT_EQ(record(), "conversation 0 responses " + password + "\n");
}

TEST_F(PamStack, SaysTextsThatNobodySees) {
    EXPECT_TRUE(
        stackAccepts(played + recording() + "talk=4,3 talk=4,1,3 talk=3 right=secret", "secret"));
    EXPECT_EQ(record(),
              "conversation 0 responses - -\nconversation 0 responses - secret -\n"
              "conversation 0 responses -\n");
}

TEST_F(PamStack, ThatAsksNothingAcceptsOnlyTheEmptyPassword) {
    for (const std::string& stack :
         {std::string("auth required pam_permit.so"), std::string("auth sufficient pam_permit.so"),
          played, played + "talk=4,3"}) {
        service(stack);
        EXPECT_TRUE(accepts("")) << stack;
        EXPECT_FALSE(accepts("junk")) << stack;
    }
}

TEST_F(PamStack, ThatWasRefusedTheAnswerAndGoesOnAcceptsOnlyTheEmptyPassword) {
    for (const char* words : {"try=2", "try=1,2", "try=2,1", "try=1,1", "flood=33"}) {
        service(played + words);
        EXPECT_TRUE(accepts("")) << words;
        EXPECT_FALSE(accepts("junk")) << words;
    }
}

TEST_F(PamStack, Denies) {
    EXPECT_FALSE(stackAccepts("auth required pam_deny.so", "secret"));
    EXPECT_FALSE(accepts(""));
    EXPECT_FALSE(stackAccepts(played + "talk=1\nauth required pam_deny.so", "secret"));
}

TEST_F(PamStack, ThatHasNoOpinionDenies) {
    EXPECT_FALSE(stackAccepts(played + "talk=1 status=25", "secret"));
    EXPECT_FALSE(stackAccepts("account required pam_permit.so", ""));
    EXPECT_FALSE(stackAccepts("", ""));
}

TEST_F(PamStack, ThatChangesTheUserDenies) {
    EXPECT_FALSE(stackAccepts(played + "talk=1 user=root", "secret"));
    EXPECT_FALSE(stackAccepts(played + "talk=1 user=tadmin2", "secret"));
    EXPECT_FALSE(stackAccepts(played + "user=root", ""));
    EXPECT_TRUE(stackAccepts(played + "talk=1 user=root user=tadmin", "secret"));
}

TEST_F(PamStack, IsThatOfOtherWhereTheServiceIsMissing) {
    service("auth required pam_deny.so", "other");
    EXPECT_FALSE(accepts(""));
    service(played + "talk=1 right=secret", "other");
    EXPECT_TRUE(accepts("secret"));
    EXPECT_FALSE(accepts("junk"));
}

TEST_F(PamStack, IsMissing) {
    const Leaks leaks;
    EXPECT_FALSE(accepts(""));
}

TEST_F(PamStack, IsNotThatOfAnotherService) {
    const Leaks leaks;
    service("auth required pam_permit.so", "login");
    EXPECT_FALSE(accepts(""));
}

TEST_F(PamStack, HasMistakes) {
    for (const char* stack : {"auth required", "auth nonsense pam_permit.so", "nonsense",
                              "auth required pam_no_such_module.so", "auth required /dev/null",
                              "auth include no-such-service"}) {
        EXPECT_FALSE(stackAccepts(stack, "")) << stack;
        EXPECT_FALSE(accepts("junk")) << stack;
    }
}

TEST_F(PamStack, IsToldWhoAsks) {
    EXPECT_TRUE(stackAccepts(played + recording() + "items talk=1", "secret"));
    const std::string all = record();
    // Where the tests run on a terminal, it is named.
    const std::size_t terminal = all.find("terminal ");
    EXPECT_EQ(all.substr(0, terminal),
              "service sudo\nuser tadmin\nrequesting user tadmin\nremote host none\n");
    EXPECT_EQ(all.substr(all.find('\n', terminal)),
              "\nflags 32768\nconversation 0 responses secret\n");
}

TEST_F(PamStack, DelaysNothing) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point begin = Clock::now();
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(stackAccepts(played + "delay=5000000 talk=1 right=secret", "wrong"));
    }
    EXPECT_LT(Clock::now() - begin, std::chrono::seconds(1));
}

TEST_F(PamStack, EchoesNothing) {
    std::ofstream(directory / "text") << "a text for the user\n";
    const std::string stack =
        "auth optional pam_echo.so file=" + (directory / "text").string() + "\n";
    EXPECT_TRUE(stackAccepts(stack + played + "talk=1 right=secret", "secret"));
}

TEST_F(PamStack, IsReadAgainForEveryAttempt) {
    EXPECT_TRUE(stackAccepts(played + "talk=1", "secret"));
    EXPECT_FALSE(stackAccepts("auth required pam_deny.so", "secret"));
    EXPECT_TRUE(stackAccepts(played + "talk=1", "secret"));
}

TEST_F(PamStack, IsNotAskedAboutAPasswordThatPamWouldNotTake) {
    service(played + recording() + "talk=1");
    EXPECT_FALSE(accepts(std::string(512, 'x')));
    EXPECT_FALSE(accepts(std::string_view("sec\0ret", 7)));
    EXPECT_FALSE(fs::exists(recorded()));
    EXPECT_TRUE(accepts(std::string(511, 'x')));
    EXPECT_EQ(record(), "conversation 0 responses " + std::string(511, 'x') + "\n");
}

}  // namespace
