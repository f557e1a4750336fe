// Who the user is, membership, passwords and the log, on stand-ins for the services of macOS: which
// calls with which arguments in which order, and what follows from every answer and failure.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ChildProcess/Secret.hpp"
#include "Optrella/Platform/Descriptor.hpp"
#include "Optrella/Platform/Directory.hpp"
#include "Optrella/Platform/Log.hpp"
#include "Optrella/Platform/MacOS/Strings.hpp"
#include "Optrella/Platform/OwnProgram.hpp"
#include "Optrella/Platform/PasswordCheck.hpp"
#include "Optrella/Platform/Process.hpp"
#include "Optrella/Platform/StartArguments.hpp"
#include "Platform/Child.hpp"
#include "Support/MacOS/Services.hpp"
#include "Support/TemporaryDirectory.hpp"

namespace {

using namespace Optrella::Platform;
using Tests::services;
using Tests::ServiceTest;
using Calls = std::vector<std::string>;

// What follows a query that has failed, too.
bool isStop(const std::string& call) { return call.starts_with("CSIdentityQueryStop "); }

// Where this call fails the answer is no, without a word and a leak, and it was the last that was
// asked.
template <class Ask>
void expectNoOnFailureOf(const std::string& call, Ask ask) {
    SCOPED_TRACE(call);
    services().calls.clear();
    services().failing = call;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const bool answer = ask();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_FALSE(answer);
    EXPECT_EQ(Tests::unbalancedObjects(), 0);
    std::erase_if(services().calls, isStop);
    EXPECT_TRUE(services().calls.back().starts_with(call.substr(0, call.find(' '))))
        << services().calls.back();
}

// ---- The user ----

// The name of the user that a process with these ids has.
std::string userWithIds(uid_t real, uid_t effective) {
    const char* const names[] = {"root", "nobody"};
    const int code = Tests::exitCodeOf([&] {
        if (::setresuid(real, effective, 0) != 0) return 99;
        const std::optional<std::string> user = loggedInUser();
        return user == names[0] ? 0 : user == names[1] ? 1 : 98;
    });
    return code == 0 || code == 1 ? names[code] : "code " + std::to_string(code);
}

TEST(User, IsTheEffectiveOneUnlessThatIsRoot) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root may change its user id";
    constexpr uid_t nobody = 65534;
    EXPECT_EQ(userWithIds(0, 0), "root");
    EXPECT_EQ(userWithIds(nobody, nobody), "nobody");
    EXPECT_EQ(userWithIds(nobody, 0), "nobody");
    EXPECT_EQ(userWithIds(0, nobody), "nobody");
}

// ---- Membership ----

class Membership : public ServiceTest {
protected:
    void SetUp() override {
        services().users = {{"anna", 501, "Anna Example", {"staff", "admin"}},
                            {"bert", 502, "Bert Example", {"staff"}},
                            {"root", 0, "System Administrator", {"wheel"}, true}};
        services().groups = {{"wheel", 0, "System Group", {}, true},
                             {"staff", 20, "Staff", {}},
                             {"admin", 80, "Administrators", {}}};
    }
};

TEST_F(Membership, IsAskedOfTheDefaultAuthorityInThisOrder) {
    EXPECT_TRUE(isMember("anna", 80));
    EXPECT_EQ(services().calls,
              (Calls{
                  "CSIdentityQueryCreateForName default anna equals user default authority",
                  "CSIdentityQueryExecute user named anna 2 null",
                  "CSIdentityQueryCopyResults user named anna",
                  "CSIdentityQueryStop user named anna",
                  "CSIdentityGetPosixName user anna",
                  "CSIdentityQueryCreateForPosixID default 80 group default authority",
                  "CSIdentityQueryExecute group with number 80 2 null",
                  "CSIdentityQueryCopyResults group with number 80",
                  "CSIdentityQueryStop group with number 80",
                  "CSIdentityIsMemberOfGroup user anna of group admin",
              }));
}

TEST_F(Membership, IsWhatTheAuthorityReports) {
    EXPECT_TRUE(isMember("anna", 20));
    EXPECT_FALSE(isMember("anna", 0));
    EXPECT_TRUE(isMember("bert", 20));
    EXPECT_FALSE(isMember("bert", 80));
}

TEST_F(Membership, OfRootAndInItsGroupAreKnownThoughHidden) {
    EXPECT_TRUE(isMember("root", 0));
    EXPECT_FALSE(isMember("root", 80));
}

TEST_F(Membership, OfAnUnknownUserIsNotAskedForTheGroup) {
    EXPECT_FALSE(isMember("nobody-of-that-name", 80));
    EXPECT_EQ(services().calls.size(), 4u);
}

TEST_F(Membership, OfASimilarNameIsNone) {
    for (const char* name : {"ann", "Anna", "anna ", ""}) EXPECT_FALSE(isMember(name, 80)) << name;
}

TEST_F(Membership, IsThatOfTheLogInNameWhereAnotherHasItAsFullName) {
    services().users = {{"bert", 502, "anna", {}}, {"anna", 501, "Anna Example", {"admin"}}};
    EXPECT_TRUE(isMember("anna", 80));
    services().users = {{"bert", 502, "anna", {"admin"}}, {"anna", 501, "Anna Example", {}}};
    EXPECT_FALSE(isMember("anna", 80));
    services().users = {{"bert", 502, "anna", {"admin"}}};
    EXPECT_FALSE(isMember("anna", 80));
}

TEST_F(Membership, InAnUnknownGroupIsNone) { EXPECT_FALSE(isMember("anna", 81)); }

TEST_F(Membership, InAnyOfTwoGroupsOfTheNumberCounts) {
    services().groups = {{"other", 80, "Other", {}}, {"admin", 80, "Administrators", {}}};
    EXPECT_TRUE(isMember("anna", 80));
    services().groups = {{"admin", 80, "Administrators", {}}, {"other", 80, "Other", {}}};
    EXPECT_TRUE(isMember("anna", 80));
    EXPECT_FALSE(isMember("bert", 80));
}

TEST_F(Membership, InTheLargestGroupNumbersIsKnown) {
    services().groups = {{"large", 4294967295U, "Large", {}}};
    services().users[0].groups = {"large"};
    EXPECT_TRUE(isMember("anna", 4294967295U));
}

TEST_F(Membership, OfANameOfManyCharactersIsKnown) {
    services().users = {{"jos\u00e9-\u5c71", 501, "", {"admin"}}};
    EXPECT_TRUE(isMember("jos\u00e9-\u5c71", 80));
}

TEST_F(Membership, OfANameThatIsNoTextIsNone) {
    EXPECT_FALSE(isMember("ann\xff", 80));
    EXPECT_EQ(services().calls, Calls{});
}

TEST_F(Membership, IsNoneOnEveryFailure) {
    for (const char* failing : {"CSIdentityQueryCreateForName", "CSIdentityQueryExecute 1",
                                "CSIdentityQueryCopyResults 1", "CSIdentityGetPosixName",
                                "CSIdentityQueryCreateForPosixID", "CSIdentityQueryExecute 2",
                                "CSIdentityQueryCopyResults 2", "CSIdentityIsMemberOfGroup"}) {
        expectNoOnFailureOf(failing, [] { return isMember("anna", 80); });
    }
}

TEST_F(Membership, StopsAQueryThatCouldNotRun) {
    services().failing = "CSIdentityQueryExecute";
    EXPECT_FALSE(isMember("anna", 80));
    EXPECT_EQ(services().calls.back(), "CSIdentityQueryStop user named anna");
}

// ---- The password ----

class VerifyPassword : public ServiceTest {
protected:
    void SetUp() override {
        services().passwords = {
            {"anna", "right pass"}, {"bert", ""}, {"carl", "sch\u00f6n \u5c71"}};
    }

    static bool verify(const std::string& user, std::string_view typed) {
        Password password;
        EXPECT_TRUE(password.append(typed));
        return verifyPassword(user, password);
    }
};

TEST_F(VerifyPassword, AsksTheRecordOfTheUserInTheLocalNodes) {
    EXPECT_TRUE(verify("anna", "right pass"));
    EXPECT_EQ(services().calls, (Calls{
                                    "ODSessionCreate default null null",
                                    "ODNodeCreateWithNodeType default session 0x2200 null",
                                    "ODNodeCopyRecord node dsRecTypeStandard:Users anna null null",
                                    "ODRecordVerifyPassword record of anna right pass null",
                                }));
}

TEST_F(VerifyPassword, IsWhatTheRecordAnswers) {
    EXPECT_FALSE(verify("anna", "wrong"));
    EXPECT_FALSE(verify("anna", ""));
    EXPECT_FALSE(verify("anna", "right pass "));
    EXPECT_TRUE(verify("bert", ""));
    EXPECT_FALSE(verify("bert", "right pass"));
}

TEST_F(VerifyPassword, HandsOnEveryCharacter) { EXPECT_TRUE(verify("carl", "sch\u00f6n \u5c71")); }

TEST_F(VerifyPassword, HandsOnALongOne) {
    const std::string typed(1000, 'x');
    services().passwords["anna"] = typed;
    EXPECT_TRUE(verify("anna", typed));
}

TEST_F(VerifyPassword, MakesASessionForEveryAttempt) {
    EXPECT_FALSE(verify("anna", "wrong"));
    EXPECT_TRUE(verify("anna", "right pass"));
    EXPECT_EQ(services().calls.size(), 8u);
    EXPECT_EQ(services().calls[4], "ODSessionCreate default null null");
}

TEST_F(VerifyPassword, OfAnUnknownUserIsRefused) {
    EXPECT_FALSE(verify("nobody-of-that-name", "right pass"));
    EXPECT_EQ(services().calls.size(), 3u);
}

TEST_F(VerifyPassword, RefusesWhatIsNoText) {
    EXPECT_FALSE(verify("anna", "right pass\xff"));
    EXPECT_FALSE(verify("anna\xff", "right pass"));
}

TEST_F(VerifyPassword, RefusesOnEveryFailure) {
    for (const char* failing : {"ODSessionCreate", "ODNodeCreateWithNodeType", "ODNodeCopyRecord",
                                "ODRecordVerifyPassword"}) {
        expectNoOnFailureOf(failing, [] { return verify("anna", "right pass"); });
    }
}

TEST_F(VerifyPassword, LeavesNoCopyInMemory) {
    services().passwords = {{"anna", ""}};
    ASSERT_EQ(Tests::secretsInMemory(), 0);
    int copies = 0;
    services().verify = [&](CFStringRef) {
        copies = Tests::secretsInMemory();
        return true;
    };
    {
        const Password password = Tests::secret();
        EXPECT_TRUE(verifyPassword("anna", password));
    }
    // The two halves of the password itself.
    EXPECT_EQ(copies, 2);
    EXPECT_EQ(Tests::secretsInMemory(), 0);
}

// ---- The log ----

const Log log{"com.example.tool", "Unit.cpp"};

class LogEntry : public ServiceTest {};

TEST_F(LogEntry, IsAnInfoWithAPublicLabelAndAMessageAsTheSystemProtectsIt) {
    logInfo(log, "label(of:)", "The disk is full.");
    const std::string entry =
        "os_log log 1 \"[**] %{public}s %s\", public \"label(of:)\", by default \"The disk is full.\"";
    ASSERT_GE(services().calls.size(), 2u);
    EXPECT_EQ(services().calls.back(), entry);
    EXPECT_EQ(services().calls[services().calls.size() - 2], "os_log_type_enabled log 1");
}

TEST_F(LogEntry, IsNotMadeWhereInfosAreNotWanted) {
    services().isInfoWanted = false;
    logInfo(log, "label(of:)", "The disk is full.");
    ASSERT_GE(services().calls.size(), 1u);
    EXPECT_EQ(services().calls.back(), "os_log_type_enabled log 1");
    services().calls.clear();
    logInfo(log, "label(of:)", "The disk is full.");
    EXPECT_EQ(services().calls, Calls{"os_log_type_enabled log 1"});
}

TEST_F(LogEntry, IsWantedAsSoonAsTheSystemSaysSo) {
    services().isInfoWanted = false;
    logInfo(log, "label", "first");
    services().isInfoWanted = true;
    logInfo(log, "label", "second");
    EXPECT_EQ(services().calls.back(),
              "os_log log 1 \"[**] %{public}s %s\", public \"label\", by default \"second\"");
}

TEST_F(LogEntry, HasEveryByteOfTheMessageUpToANul) {
    logInfo(log, "label", "100 % %s \n\xff\u00e9");
    EXPECT_EQ(services().calls.back(),
              "os_log log 1 \"[**] %{public}s %s\", public \"label\", by default \"100 % %s \n"
              "\xff\u00e9\"");
    logInfo(log, "label", std::string_view("a\0b", 3));
    EXPECT_EQ(services().calls.back(),
              "os_log log 1 \"[**] %{public}s %s\", public \"label\", by default \"a\"");
    logInfo(log, "label", "");
    EXPECT_EQ(services().calls.back(),
              "os_log log 1 \"[**] %{public}s %s\", public \"label\", by default \"\"");
}

TEST_F(LogEntry, HasAMessageThatEndsWithinItsText) {
    logInfo(log, std::string_view("labels", 5), std::string_view("message and more", 7));
    EXPECT_EQ(services().calls.back(),
              "os_log log 1 \"[**] %{public}s %s\", public \"label\", by default \"message\"");
}

TEST(LogHandle, IsMadeOnceWithTheSubsystemAndTheCategory) {
    // In a new process, which has not made it yet.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            services() = {};
            logInfo(log, "label", "first");
            logInfo(log, "label", "second");
            const Calls& calls = services().calls;
            std::_Exit(calls.size() == 5 && calls[0] == "os_log_create com.example.tool Unit.cpp" &&
                               calls[3] == "os_log_type_enabled log 1"
                           ? 0
                           : 1);
        },
        testing::ExitedWithCode(0), "^$");
}

// ---- The process ----

TEST(Process, HasNoBundleIdentifierOutsideOfABundle) {
    EXPECT_EQ(bundleIdentifier(), std::nullopt);
}

TEST(Process, HasTheEnvironmentThatItHasNow) {
    ASSERT_EQ(::setenv("OPTRELLA_TEST_VARIABLE", "now", 1), 0);
    bool isThere = false;
    for (char** each = environment(); *each != nullptr; ++each) {
        if (std::string_view(*each) == "OPTRELLA_TEST_VARIABLE=now") isThere = true;
    }
    ::unsetenv("OPTRELLA_TEST_VARIABLE");
    EXPECT_TRUE(isThere);
}

TEST(Process, HasItsStartArgumentsFromTheSystemToo) {
    std::string joined;
    for (const std::string& each : startArguments()) joined.append(each.c_str(), each.size() + 1);
    EXPECT_NE(joined, "");
    EXPECT_EQ(argumentsOfTheSystem(), joined);
}

// ---- The program's file ----

class Program : public ServiceTest {
protected:
    Program() {
        std::filesystem::create_directory(directory_.path() + "/bin");
        file_ = directory_.path() + "/bin/tool";
        std::ofstream(file_).flush();
        link_ = directory_.path() + "/link";
        std::filesystem::create_symlink("bin/tool", link_);
        services().programFile = file_;
        services().programStarted = file_;
    }

    Tests::TemporaryDirectory directory_;
    std::string file_;
    std::string link_;
};

TEST_F(Program, IsNamedByTheLinkThatItWasStartedBy) {
    services().programStarted = link_;
    EXPECT_EQ(ownProgram(), link_);
}

TEST_F(Program, IsNamedByItsFileWhereTheLinkLeadsElsewhere) {
    services().programStarted = link_;
    std::filesystem::remove(link_);
    EXPECT_EQ(ownProgram(), file_);
    std::ofstream(link_).flush();
    EXPECT_EQ(ownProgram(), file_);
}

TEST_F(Program, IsNamedByItsFileWhereTheStartIsTooLongToTell) {
    services().programStarted = std::string(5000, 'x');
    EXPECT_EQ(ownProgram(), file_);
}

TEST_F(Program, IsNotThereWhenItsFileIsNot) {
    std::filesystem::remove(file_);
    EXPECT_EQ(ownProgram(), std::nullopt);
}

TEST_F(Program, IsNotThereWhenTheSystemDoesNotKnowItsFile) {
    services().programFile = "";
    EXPECT_EQ(ownProgram(), std::nullopt);
}

TEST(Pipe, IsClosedInProgramsThatAreStarted) {
    const std::optional<Pipe> pipe = makePipe();
    ASSERT_TRUE(pipe);
    for (const Descriptor* end : {&pipe->readEnd, &pipe->writeEnd}) {
        EXPECT_EQ(::fcntl(end->number(), F_GETFD), FD_CLOEXEC);
    }
    ASSERT_EQ(::write(pipe->writeEnd.number(), "x", 1), 1);
    char read = 0;
    EXPECT_EQ(::read(pipe->readEnd.number(), &read, 1), 1);
    EXPECT_EQ(read, 'x');
}

TEST(Pipe, IsNothingWhereTheSystemHasNone) {
    EXPECT_EQ(Tests::exitCodeOf([] {
                  const rlimit few{3, 3};
                  if (::setrlimit(RLIMIT_NOFILE, &few) != 0) return 2;
                  return makePipe() ? 1 : 0;
              }),
              0);
}

TEST(Strings, AreTheSameBytesBack) {
    for (const char* text : {"", "abc", "sch\u00f6n \u5c71 \U0001F600"}) {
        const Owned<CFStringRef> string = stringOf(text);
        ASSERT_TRUE(string);
        EXPECT_EQ(textOf(string.get()), text);
    }
}

TEST(Strings, AreNoneForWhatIsNoText) {
    EXPECT_FALSE(stringOf("\xff"));
    EXPECT_FALSE(stringOf("\xed\xa0\x80"));
}

}  // namespace
