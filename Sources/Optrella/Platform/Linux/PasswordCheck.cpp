#include "Optrella/Platform/PasswordCheck.hpp"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <optional>
#include <span>

#include "Optrella/Platform/Linux/Pam.hpp"

namespace Optrella::Platform {

namespace Pam {

namespace {

// The stack that the command's second start will meet: a password that passes here passes there.
constexpr const char* service = "sudo";

struct Library {
    int (*start)(const char* service, const char* user, const Conversation*, Handle**);
    // Only where PAM has it; null otherwise.
    int (*startWithDirectory)(const char* service, const char* user, const Conversation*,
                              const char* directory, Handle**);
    int (*setItem)(Handle*, int item, const void* value);
    int (*getItem)(const Handle*, int item, const void** value);
    int (*authenticate)(Handle*, int flags);
    int (*end)(Handle*, int status);
};

template <class Function>
bool find(void* library, const char* name, Function*& function) noexcept {
    function = reinterpret_cast<Function*>(::dlsym(library, name));
    return function != nullptr;
}

std::optional<Library> open() noexcept {
    void* const file = ::dlopen("libpam.so.0", RTLD_NOW | RTLD_LOCAL);
    if (file == nullptr) return std::nullopt;
    Library library;
    find(file, "pam_start_confdir", library.startWithDirectory);
    if (find(file, "pam_start", library.start) && find(file, "pam_set_item", library.setItem) &&
        find(file, "pam_get_item", library.getItem) &&
        find(file, "pam_authenticate", library.authenticate) &&
        find(file, "pam_end", library.end)) {
        return library;
    }
    ::dlclose(file);
    return std::nullopt;
}

// Opened at the first attempt and kept for those that follow.
const std::optional<Library>& library() noexcept {
    static const std::optional<Library> opened = open();
    return opened;
}

// A handle of PAM, from its start to its end.
class Transaction {
public:
    Transaction(const Library& library, const std::string& user, const Conversation& conversation,
                const char* directory) noexcept
        : library_(library) {
        if (start(user.c_str(), conversation, directory) != success) handle_ = nullptr;
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction() {
        if (isStarted()) library_.end(handle_, status_);
    }

    [[nodiscard]] bool isStarted() const noexcept { return handle_ != nullptr; }
    // REQUIRES of all that follow: isStarted().
    [[nodiscard]] bool set(int item, const void* value) noexcept {
        return hasSucceeded(library_.setItem(handle_, item, value));
    }
    [[nodiscard]] bool authenticate() noexcept {
        return hasSucceeded(library_.authenticate(handle_, silent));
    }
    [[nodiscard]] bool isAbout(const std::string& user) noexcept {
        const void* name = nullptr;
        return hasSucceeded(library_.getItem(handle_, userItem, &name)) && name != nullptr &&
               user == static_cast<const char*>(name);
    }

private:
    int start(const char* user, const Conversation& conversation, const char* directory) noexcept {
        if (directory == nullptr) return library_.start(service, user, &conversation, &handle_);
        if (library_.startWithDirectory == nullptr) return bufferError;
        return library_.startWithDirectory(service, user, &conversation, directory, &handle_);
    }
    bool hasSucceeded(int status) noexcept {
        status_ = status;
        return status == success;
    }

    const Library& library_;
    Handle* handle_ = nullptr;
    int status_ = success;
};

void noDelay(int /*status*/, unsigned /*microseconds*/, void* /*context*/) noexcept {}

bool setTerminal(Transaction& transaction) noexcept {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        char name[256];
        if (::ttyname_r(descriptor, name, sizeof name) == 0) {
            return transaction.set(terminalItem, name);
        }
    }
    return true;
}

// No remote host: modules would look its name up, and there is none.
bool describe(Transaction& transaction, const std::string& user) noexcept {
    return transaction.set(failDelayItem, reinterpret_cast<const void*>(&noDelay)) &&
           transaction.set(requestingUserItem, user.c_str()) && setTerminal(transaction);
}

struct Free {
    void operator()(void* memory) const noexcept { std::free(memory); }
};

char* copyForPam(std::string_view password) noexcept {
    char* const copy = static_cast<char*>(std::malloc(password.size() + 1));
    if (copy != nullptr) copy[password.copy(copy, password.size())] = '\0';
    return copy;
}

}  // namespace

int converse(int count, const Message** messages, Response** responses, void* context) noexcept {
    *responses = nullptr;
    if (count < 1 || count > mostMessages) return conversationError;

    // All messages are looked at before the password is copied once.
    Attempt& attempt = *static_cast<Attempt*>(context);
    const std::span all(messages, static_cast<std::size_t>(count));
    std::optional<std::size_t> prompt;
    for (std::size_t i = 0; i < all.size(); ++i) {
        const int style = all[i]->style;
        if (style == errorText || style == informationText) continue;
        if (style != promptWithoutEcho || attempt.isAnswered || prompt) return conversationError;
        prompt = i;
    }

    std::unique_ptr<Response[], Free> answers(
        static_cast<Response*>(std::calloc(all.size(), sizeof(Response))));
    if (answers == nullptr) return bufferError;
    if (prompt) {
        answers[*prompt].text = copyForPam(attempt.password);
        if (answers[*prompt].text == nullptr) return bufferError;
        attempt.isAnswered = true;
    }
    *responses = answers.release();
    return success;
}

bool verify(const std::string& user, const Password& password, const char* directory) {
    const std::string_view bytes = password.bytes();
    // PAM would not take the one, and would take the other for a shorter password.
    if (bytes.size() >= responseSize || bytes.find('\0') != std::string_view::npos) return false;
    if (!library()) return false;

    Attempt attempt{bytes};
    const Conversation conversation{converse, &attempt};
    Transaction transaction(*library(), user, conversation, directory);
    if (!transaction.isStarted() || !describe(transaction, user)) return false;
    // A module may have gone on with another user, and an account without a password is let in
    // without a question: then only the empty password is right, or any text would be.
    return transaction.authenticate() && transaction.isAbout(user) &&
           (attempt.isAnswered || bytes.empty());
}

}  // namespace Pam

bool verifyPassword(const std::string& user, const Password& password) {
    constexpr const char* ofTheSystem = nullptr;
    return Pam::verify(user, password, ofTheSystem);
}

}  // namespace Optrella::Platform
