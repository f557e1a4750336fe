// Which of PAM's functions are called, in which order, and what becomes of every failure. Linked
// with the loader's functions wrapped: PAM is a script here.

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Optrella/Platform/Linux/Pam.hpp"
#include "Optrella/Platform/PasswordCheck.hpp"

using namespace Optrella::Platform;

namespace {

// What the loader and PAM do, and what they were asked.
struct Script {
    bool hasLibrary = true;
    std::string missingFunction;
    std::map<std::string, int> statuses;  // by function, or by function and item: "pam_set_item 8"
    std::vector<int> messages = {Pam::promptWithoutEcho};
    std::string rightPassword = "right";
    const char* userAfterwards = "tadmin";
    std::string calls;
};
Script script;
std::atomic<int> timesOpened = 0;

constexpr int authenticationError = 7;
char libraryItself;
char handleItself;
Pam::Conversation conversation;
void (*failDelay)(int, unsigned, void*);

void note(const std::string& call) { script.calls += call + "\n"; }

int scripted(const std::string& function) {
    const auto found = script.statuses.find(function);
    return found == script.statuses.end() ? Pam::success : found->second;
}

std::string itemName(int item) { return std::to_string(item); }

int start(const char* service, const char* user, const Pam::Conversation* with,
          const char* directory, Pam::Handle** handle) {
    const char* function = directory == nullptr ? "pam_start" : "pam_start_confdir";
    note(std::string(function) + " " + service + " " + user +
         (directory == nullptr ? "" : std::string(" ") + directory));
    conversation = *with;
    failDelay = nullptr;
    // Even on failure: a handle that was refused must not be used.
    *handle = reinterpret_cast<Pam::Handle*>(&handleItself);
    return scripted(function);
}

int startPlain(const char* service, const char* user, const Pam::Conversation* with,
               Pam::Handle** handle) {
    return start(service, user, with, nullptr, handle);
}

int setItem(Pam::Handle*, int item, const void* value) {
    if (item == Pam::failDelayItem) {
        failDelay = reinterpret_cast<void (*)(int, unsigned, void*)>(const_cast<void*>(value));
        note("pam_set_item " + itemName(item) + (value == nullptr ? " null" : " function"));
    } else {
        note("pam_set_item " + itemName(item) + " " + static_cast<const char*>(value));
    }
    return scripted("pam_set_item " + itemName(item));
}

int getItem(const Pam::Handle*, int item, const void** value) {
    note("pam_get_item " + itemName(item));
    *value = script.userAfterwards;
    return scripted("pam_get_item");
}

bool isRight() {
    bool isRight = true;
    for (const int style : script.messages) {
        const Pam::Message message{style, "Password: "};
        const Pam::Message* messages = &message;
        Pam::Response* responses = nullptr;
        const int status = conversation.converse(1, &messages, &responses, conversation.context);
        if (status != Pam::success) return false;
        if (responses->text != nullptr) isRight = responses->text == script.rightPassword;
        std::free(responses->text);
        std::free(responses);
    }
    return isRight;
}

int authenticate(Pam::Handle*, int flags) {
    note("pam_authenticate " + std::to_string(flags));
    const bool isAccepted = isRight();
    if (failDelay != nullptr) failDelay(authenticationError, 2'000'000, conversation.context);
    return isAccepted ? scripted("pam_authenticate") : authenticationError;
}

int end(Pam::Handle*, int status) {
    note("pam_end " + std::to_string(status));
    return scripted("pam_end");
}

template <class Function>
void* address(Function* function) {
    return reinterpret_cast<void*>(function);
}

void* function(const std::string& name) {
    if (name == script.missingFunction) return nullptr;
    if (name == "pam_start") return address(&startPlain);
    if (name == "pam_start_confdir") return address(&start);
    if (name == "pam_set_item") return address(&setItem);
    if (name == "pam_get_item") return address(&getItem);
    if (name == "pam_authenticate") return address(&authenticate);
    if (name == "pam_end") return address(&end);
    ADD_FAILURE() << "asked for " << name;
    return nullptr;
}

}  // namespace

extern "C" {

void* __wrap_dlopen(const char* file, int flags);
void* __wrap_dlsym(void* library, const char* name);
int __wrap_dlclose(void* library);

void* __wrap_dlopen(const char* file, int flags) {
    ++timesOpened;
    note(std::string("dlopen ") + file +
         (flags == (RTLD_NOW | RTLD_LOCAL) ? " now, local" : " otherwise"));
    return script.hasLibrary ? &libraryItself : nullptr;
}
void* __wrap_dlsym(void* library, const char* name) {
    EXPECT_EQ(library, &libraryItself);
    return function(name);
}
int __wrap_dlclose(void*) {
    note("dlclose");
    return 0;
}

}  // extern "C"

namespace {

std::string everythingFrom(int descriptor) {
    std::string text;
    char block[4096];
    for (ssize_t size; (size = ::read(descriptor, block, sizeof block)) > 0;) {
        text.append(block, static_cast<std::size_t>(size));
    }
    return text;
}

// Runs the code in a process that has not opened the library yet. Returns what was called, and
// then the text that the code returns.
template <class Code>
std::string inNewProcess(Code code) {
    int ends[2];
    if (::pipe(ends) != 0) return "no pipe";
    const pid_t child = ::fork();
    if (child == 0) {
        const int nothing = ::open("/dev/null", O_RDWR);
        for (const int descriptor : {0, 1, 2}) ::dup2(nothing, descriptor);
        const std::string result = code();
        const std::string text = script.calls + result;
        const ssize_t written = ::write(ends[1], text.data(), text.size());
        ::_exit(written == static_cast<ssize_t>(text.size()) ? 0 : 1);
    }
    ::close(ends[1]);
    std::string text = everythingFrom(ends[0]);
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (status != 0) text += "ended with " + std::to_string(status);
    return text;
}

std::string answer(std::string_view text) {
    Password password;
    if (!password.append(text)) return "no memory\n";
    return verifyPassword("tadmin", password) ? "true\n" : "false\n";
}

std::string answers(std::initializer_list<std::string_view> texts) {
    std::string all;
    for (const std::string_view text : texts) all += answer(text);
    return all;
}

class PamLibrary : public testing::Test {
protected:
    void SetUp() override { script = Script(); }

    static std::string check(std::string_view text = "right") {
        return inNewProcess([text] { return answer(text); });
    }
};

const std::string opened = "dlopen libpam.so.0 now, local\n";
const std::string started = opened + "pam_start sudo tadmin\n";
const std::string described = started + "pam_set_item 10 function\n" + "pam_set_item 8 tadmin\n";
const std::string authenticated = described + "pam_authenticate 32768\n";
const std::string asked = authenticated + "pam_get_item 2\n";

TEST_F(PamLibrary, AcceptsTheRightPassword) { EXPECT_EQ(check(), asked + "pam_end 0\ntrue\n"); }

TEST_F(PamLibrary, RefusesAWrongPasswordAtOnce) {
    EXPECT_EQ(check("wrong"), authenticated + "pam_end 7\nfalse\n");
}

TEST_F(PamLibrary, IsOpenedOnceAndEveryAttemptHasAHandleOfItsOwn) {
    const std::string calls = inNewProcess([] { return answers({"wrong", "right"}); });
    EXPECT_EQ(calls, authenticated + "pam_end 7\n" + asked.substr(opened.size()) +
                         "pam_end 0\nfalse\ntrue\n");
}

TEST_F(PamLibrary, IsOpenedOnceByManyThreads) {
    const std::string calls = inNewProcess([] {
        script.hasLibrary = false;
        std::atomic<int> ready = 0;
        std::vector<std::thread> threads;
        for (int i = 0; i < 8; ++i) {
            threads.emplace_back([&ready] {
                ++ready;
                while (ready < 8) std::this_thread::yield();
                static_cast<void>(answer("right"));
            });
        }
        for (std::thread& thread : threads) thread.join();
        return std::to_string(timesOpened);
    });
    EXPECT_EQ(calls, opened + "1");
}

TEST_F(PamLibrary, IsMissing) {
    script.hasLibrary = false;
    const std::string calls = inNewProcess([] { return answers({"right", ""}); });
    EXPECT_EQ(calls, opened + "false\nfalse\n");
}

TEST_F(PamLibrary, LacksAFunction) {
    for (const char* name :
         {"pam_start", "pam_set_item", "pam_get_item", "pam_authenticate", "pam_end"}) {
        script.missingFunction = name;
        const std::string calls = inNewProcess([] { return answers({"right", "right"}); });
        EXPECT_EQ(calls, opened + "dlclose\nfalse\nfalse\n") << name;
    }
}

TEST_F(PamLibrary, NeedsNoFunctionForAnotherDirectory) {
    script.missingFunction = "pam_start_confdir";
    EXPECT_EQ(check(), asked + "pam_end 0\ntrue\n");
}

TEST_F(PamLibrary, ReadsAnotherDirectoryWhenTold) {
    const auto checkInDirectory = [] {
        return inNewProcess([] {
            Password password;
            static_cast<void>(password.append("right"));
            return Pam::verify("tadmin", password, "/directory") ? "true\n" : "false\n";
        });
    };
    EXPECT_EQ(checkInDirectory(), opened + "pam_start_confdir sudo tadmin /directory\n" +
                                      asked.substr(started.size()) + "pam_end 0\ntrue\n");
    script.missingFunction = "pam_start_confdir";
    EXPECT_EQ(checkInDirectory(), opened + "false\n");
}

TEST_F(PamLibrary, CannotStart) {
    script.statuses["pam_start"] = 4;
    EXPECT_EQ(check(), started + "false\n");
}

TEST_F(PamLibrary, DoesNotTakeAnItem) {
    script.statuses["pam_set_item 10"] = 29;
    EXPECT_EQ(check(), started + "pam_set_item 10 function\npam_end 29\nfalse\n");
    script.statuses = {{"pam_set_item 8", 5}};
    EXPECT_EQ(check(), described + "pam_end 5\nfalse\n");
}

TEST_F(PamLibrary, IsToldTheTerminal) {
    const auto checkOnTerminal = [](int descriptor) {
        return inNewProcess([descriptor] {
            const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
            const char* name = ::ptsname(terminal);
            if (::grantpt(terminal) != 0 || ::unlockpt(terminal) != 0) return std::string("no pty");
            if (::dup2(::open(name, O_RDWR | O_NOCTTY), descriptor) < 0) return std::string("dup2");
            const std::string result = answer("right");
            const std::string line = std::string("pam_set_item 3 ") + name + "\n";
            const std::size_t place = script.calls.find(line);
            if (place == std::string::npos) return "not " + line;
            script.calls.replace(place, line.size(), "pam_set_item 3 TERMINAL\n");
            return result;
        });
    };
    for (const int descriptor : {0, 1, 2}) {
        EXPECT_EQ(checkOnTerminal(descriptor), described + "pam_set_item 3 TERMINAL\n" +
                                                   asked.substr(described.size()) +
                                                   "pam_end 0\ntrue\n");
    }
    script.statuses["pam_set_item 3"] = 5;
    EXPECT_EQ(checkOnTerminal(0), described + "pam_set_item 3 TERMINAL\npam_end 5\nfalse\n");
}

TEST_F(PamLibrary, RefusesByAnyStatusButSuccessAndIsNotAskedAgain) {
    for (int status = 1; status <= 40; ++status) {
        script.statuses["pam_authenticate"] = status;
        EXPECT_EQ(check(), authenticated + "pam_end " + std::to_string(status) + "\nfalse\n");
    }
    script.statuses["pam_authenticate"] = -1;
    EXPECT_EQ(check(), authenticated + "pam_end -1\nfalse\n");
}

TEST_F(PamLibrary, HasChangedTheUser) {
    for (const char* user : {"root", "tadmi", "tadmin2", "TADMIN", ""}) {
        script.userAfterwards = user;
        EXPECT_EQ(check(), asked + "pam_end 0\nfalse\n");
    }
    script.userAfterwards = nullptr;
    EXPECT_EQ(check(), asked + "pam_end 0\nfalse\n");
}

TEST_F(PamLibrary, DoesNotSayTheUser) {
    script.statuses["pam_get_item"] = 29;
    EXPECT_EQ(check(), asked + "pam_end 29\nfalse\n");
}

TEST_F(PamLibrary, FailsAtTheEndWhenAllIsDecided) {
    script.statuses["pam_end"] = 26;
    EXPECT_EQ(check(), asked + "pam_end 0\ntrue\n");
}

TEST_F(PamLibrary, AcceptsOnlyTheEmptyPasswordWithoutAQuestion) {
    for (const std::vector<int>& messages :
         {std::vector<int>{}, {Pam::informationText}, {Pam::errorText, Pam::informationText}}) {
        script.messages = messages;
        EXPECT_EQ(check(""), asked + "pam_end 0\ntrue\n");
        EXPECT_EQ(check("right"), asked + "pam_end 0\nfalse\n");
    }
}

TEST_F(PamLibrary, AcceptsAnEmptyPasswordThatItHasAskedFor) {
    script.rightPassword = "";
    EXPECT_EQ(check(""), asked + "pam_end 0\ntrue\n");
    EXPECT_EQ(check("junk"), authenticated + "pam_end 7\nfalse\n");
}

TEST_F(PamLibrary, IsNotAskedAboutAPasswordThatItWouldNotTake) {
    const std::string longest(511, 'x');
    script.rightPassword = longest;
    EXPECT_EQ(check(longest), asked + "pam_end 0\ntrue\n");
    for (const std::size_t size : {512U, 513U, 600U, 4000U, 16384U}) {
        EXPECT_EQ(check(std::string(size, 'x')), "false\n");
    }
}

TEST_F(PamLibrary, IsNotAskedAboutAPasswordThatHoldsANul) {
    using namespace std::string_view_literals;
    for (const std::string_view text : {"right\0"sv, "right\0x"sv, "\0"sv, "\0right"sv}) {
        EXPECT_EQ(check(text), "false\n");
    }
}

TEST_F(PamLibrary, DoesNotTakeAUserWithANulForAnother) {
    const std::string calls = inNewProcess([] {
        Password password;
        static_cast<void>(password.append("right"));
        return verifyPassword(std::string("tadmin\0x", 8), password) ? "true\n" : "false\n";
    });
    EXPECT_EQ(calls, asked + "pam_end 0\nfalse\n");
}

}  // namespace
