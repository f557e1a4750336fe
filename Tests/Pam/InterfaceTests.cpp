// The pieces of PAM's interface that are declared here are those of PAM's own headers.

#include <gtest/gtest.h>

#include <cstddef>

#include "Optrella/Platform/Linux/Pam.hpp"

#if __has_include(<security/pam_appl.h>)

#include <security/pam_appl.h>

using namespace Optrella::Platform;

namespace {

TEST(Interface, HasTheNumbersOfPamsHeaders) {
    EXPECT_EQ(Pam::success, PAM_SUCCESS);
    EXPECT_EQ(Pam::bufferError, PAM_BUF_ERR);
    EXPECT_EQ(Pam::conversationError, PAM_CONV_ERR);
    EXPECT_EQ(Pam::promptWithoutEcho, PAM_PROMPT_ECHO_OFF);
    EXPECT_EQ(Pam::errorText, PAM_ERROR_MSG);
    EXPECT_EQ(Pam::informationText, PAM_TEXT_INFO);
    EXPECT_EQ(Pam::userItem, PAM_USER);
    EXPECT_EQ(Pam::terminalItem, PAM_TTY);
    EXPECT_EQ(Pam::requestingUserItem, PAM_RUSER);
    EXPECT_EQ(Pam::failDelayItem, PAM_FAIL_DELAY);
    EXPECT_EQ(static_cast<unsigned>(Pam::silent), PAM_SILENT);
    EXPECT_EQ(Pam::mostMessages, PAM_MAX_NUM_MSG);
    EXPECT_EQ(Pam::responseSize, static_cast<std::size_t>(PAM_MAX_RESP_SIZE));
}

TEST(Interface, HasTheStructuresOfPamsHeaders) {
    EXPECT_EQ(sizeof(Pam::Message), sizeof(pam_message));
    EXPECT_EQ(offsetof(Pam::Message, style), offsetof(pam_message, msg_style));
    EXPECT_EQ(offsetof(Pam::Message, text), offsetof(pam_message, msg));
    EXPECT_EQ(sizeof(Pam::Response), sizeof(pam_response));
    EXPECT_EQ(offsetof(Pam::Response, text), offsetof(pam_response, resp));
    EXPECT_EQ(offsetof(Pam::Response, unused), offsetof(pam_response, resp_retcode));
    EXPECT_EQ(sizeof(Pam::Conversation), sizeof(pam_conv));
    EXPECT_EQ(offsetof(Pam::Conversation, converse), offsetof(pam_conv, conv));
    EXPECT_EQ(offsetof(Pam::Conversation, context), offsetof(pam_conv, appdata_ptr));
}

}  // namespace

#else

TEST(Interface, HasTheNumbersOfPamsHeaders) { GTEST_SKIP() << "no headers of PAM here"; }
TEST(Interface, HasTheStructuresOfPamsHeaders) { GTEST_SKIP() << "no headers of PAM here"; }

#endif
