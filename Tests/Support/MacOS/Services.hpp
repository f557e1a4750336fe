// Services.hpp - stand-ins for the services of macOS that Linux has nothing like: they record the
// calls and answer as a test scripts them.

#ifndef OPTRELLA_TESTS_SUPPORT_MACOS_SERVICES_HPP
#define OPTRELLA_TESTS_SUPPORT_MACOS_SERVICES_HPP

#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/CoreServices.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "Objects.hpp"

namespace Tests {

struct Identity {
    std::string logInName;
    id_t id = 0;
    std::string fullName;
    std::set<std::string> groups;  // their log-in names
    bool isHidden = false;
};

struct Services {
    // Answers.
    std::vector<Identity> users;
    std::vector<Identity> groups;
    std::map<std::string, std::string> passwords;
    bool isInfoWanted = true;
    // The call that fails: "ODNodeCopyRecord", or "CSIdentityQueryExecute 2" for the second one.
    std::string failing;
    // Called instead of comparing the password, where there is one.
    std::function<bool(CFStringRef)> verify;
    std::string programStarted = "./tool";  // by the path that it was started by
    std::string programFile;                // by its file; empty where nobody knows

    // Calls, in their order, with their arguments.
    std::vector<std::string> calls;
};

// The services of the running test.
Services& services();

// A test with new services, which may leave no object.
class ServiceTest : public testing::Test {
protected:
    ServiceTest() { services() = Services(); }
    void TearDown() override { EXPECT_EQ(unbalancedObjects(), 0); }
};

}  // namespace Tests

#endif
