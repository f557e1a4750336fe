// Pam.hpp - the password check over PAM, as far as its tests reach into it.
//
// The few pieces of PAM's interface that the check needs are declared here, as the X/Open standard
// and Linux's library have them: building needs no headers of PAM, and linking no library.

#ifndef OPTRELLA_PLATFORM_LINUX_PAM_HPP
#define OPTRELLA_PLATFORM_LINUX_PAM_HPP

#include <cstddef>
#include <string>
#include <string_view>

#include "Optrella/Platform/Password.hpp"

namespace Optrella::Platform::Pam {

struct Handle;

struct Message {
    int style;
    const char* text;
};
struct Response {
    char* text;
    int unused;
};
struct Conversation {
    int (*converse)(int count, const Message** messages, Response** responses, void* context);
    void* context;
};

// Results.
constexpr int success = 0;
constexpr int bufferError = 5;
constexpr int conversationError = 19;

// Styles of a message.
constexpr int promptWithoutEcho = 1;
constexpr int errorText = 3;
constexpr int informationText = 4;

// Items of a handle.
constexpr int userItem = 2;
constexpr int terminalItem = 3;
constexpr int requestingUserItem = 8;
constexpr int failDelayItem = 10;

constexpr int silent = 0x8000;
constexpr int mostMessages = 32;
constexpr std::size_t responseSize = 512;  // with the NUL at its end

// One attempt at a password.
struct Attempt {
    std::string_view password;
    bool isAnswered = false;  // PAM has been given the password
};

// Answers what PAM asks the Attempt that `context` points to: the first prompt without echo,
// with a copy that belongs to PAM; texts are swallowed. Every other prompt is refused, and with it
// all messages that came along: the password must not be given to who asks for something else.
// On any error there are no responses, and no copy is left.
int converse(int count, const Message** messages, Response** responses, void* context) noexcept;

// Does what verifyPassword does, with the configuration of the services in a directory, the
// system's when null.
[[nodiscard]] bool verify(const std::string& user, const Password& password, const char* directory);

}  // namespace Optrella::Platform::Pam

#endif
