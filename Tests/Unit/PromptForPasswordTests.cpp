#include "Optrella/PromptForPassword.hpp"

#include <gtest/gtest.h>

#include "Support/Death.hpp"
#include "Support/FakePlatform.hpp"

namespace {

using Optrella::PromptForPassword::validateGroupMembership;
using Tests::platform;

class ValidateGroupMembershipTest : public Tests::PolicyTest {};

TEST_F(ValidateGroupMembershipTest, AsksOnceForTheLoggedInUserAndTheGroup) {
    platform().user = "anna";
    platform().groupsOfUser = {0, 80};
    EXPECT_TRUE(validateGroupMembership(80));
    const std::vector<Tests::FakePlatform::Membership> asked{{"anna", 80}};
    EXPECT_EQ(platform().membershipQuestions, asked);
}

TEST_F(ValidateGroupMembershipTest, IsFalseForAnotherGroup) {
    platform().groupsOfUser = {80};
    EXPECT_FALSE(validateGroupMembership(0));
}

TEST_F(ValidateGroupMembershipTest, IsFalseWithoutALoggedInUserAndAsksNoFurther) {
    platform().user = std::nullopt;
    EXPECT_FALSE(validateGroupMembership(0));
    EXPECT_TRUE(platform().membershipQuestions.empty());
}

TEST_F(ValidateGroupMembershipTest, TakesTheLargestGroupNumber) {
    EXPECT_FALSE(validateGroupMembership(4294967295));
    const std::vector<Tests::FakePlatform::Membership> asked{{"tester", 4294967295}};
    EXPECT_EQ(platform().membershipQuestions, asked);
}

TEST_F(ValidateGroupMembershipTest, StopsSilentlyForWhatIsNoGroupNumber) {
    EXPECT_SILENT_STOP(validateGroupMembership(-1));
    EXPECT_SILENT_STOP(validateGroupMembership(4294967296));
}

}  // namespace
