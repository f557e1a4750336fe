// A PAM module that plays a script: its arguments in the service's file, one after the other.
//
//     talk=1,4     calls the conversation once, with messages of these styles; its failure ends the
//                  script
//     try=1,2      the same, going on after a failure
//     flood=33     calls it with so many messages
//     right=TEXT   refuses when the last answer was another one
//     user=NAME    goes on with another user
//     delay=USEC   asks for a delay when it fails
//     items        records the items, and the flags
//     record=FILE  where all that was answered to it is recorded from here on
//     status=26    ends the script

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "Optrella/Platform/Linux/Pam.hpp"

namespace Pam = Optrella::Platform::Pam;

namespace {

constexpr int authenticationError = 7;
constexpr int serviceItem = 1;
constexpr int remoteHostItem = 4;
constexpr int conversationItem = 5;

// Linking PAM's library would need its package for developers; the library is there at run time.
template <class Function>
Function* found(const char* name) {
    void* const library = ::dlopen("libpam.so.0", RTLD_NOW | RTLD_NOLOAD);
    void* const function = ::dlsym(library, name);
    ::dlclose(library);
    return reinterpret_cast<Function*>(function);
}

const void* item(Pam::Handle* handle, int number) {
    const void* value = nullptr;
    auto* const get = found<int(const Pam::Handle*, int, const void**)>("pam_get_item");
    return get(handle, number, &value) == Pam::success ? value : nullptr;
}

std::string textItem(Pam::Handle* handle, int number) {
    const void* const value = item(handle, number);
    return value == nullptr ? "none" : static_cast<const char*>(value);
}

std::vector<int> numbers(std::string_view list) {
    std::vector<int> all;
    while (!list.empty()) {
        const std::size_t comma = std::min(list.find(','), list.size());
        all.push_back(std::atoi(std::string(list.substr(0, comma)).c_str()));
        list.remove_prefix(std::min(comma + 1, list.size()));
    }
    return all;
}

class Player {
public:
    Player(Pam::Handle* handle, int flags) : handle_(handle), flags_(flags) {}

    // False when the script is at its end.
    bool play(std::string_view word) {
        const std::size_t equals = std::min(word.find('='), word.size());
        const std::string_view name = word.substr(0, equals);
        const std::string value(word.substr(std::min(equals + 1, word.size())));
        const int number = std::atoi(value.c_str());
        if (name == "talk") return (status = talk(numbers(value))) == Pam::success;
        if (name == "try") return talk(numbers(value)), true;
        if (name == "flood") return talk(std::vector<int>(std::size_t(number), 4)), true;
        if (name == "right") return (status = answer_ == value ? 0 : authenticationError) == 0;
        if (name == "user") return setUser(value);
        if (name == "delay") return delay(unsigned(number));
        if (name == "items") return recordItems();
        if (name == "record") return record_.open(value, std::ios::app), true;
        if (name == "status") status = number;
        return false;
    }

    int status = Pam::success;

private:
    int talk(const std::vector<int>& styles) {
        std::vector<Pam::Message> messages;
        for (const int style : styles) messages.push_back({style, "A message of the module: "});
        std::vector<const Pam::Message*> pointers;
        for (const Pam::Message& message : messages) pointers.push_back(&message);

        const auto* const conversation =
            static_cast<const Pam::Conversation*>(item(handle_, conversationItem));
        Pam::Response* responses = nullptr;
        const int result = conversation->converse(static_cast<int>(styles.size()), pointers.data(),
                                                  &responses, conversation->context);
        record_ << "conversation " << result << (responses == nullptr ? " nothing" : " responses");
        for (std::size_t i = 0; responses != nullptr && i < styles.size(); ++i) {
            record_ << (responses[i].text == nullptr ? " -" : std::string(" ") + responses[i].text);
            if (responses[i].text != nullptr) answer_ = responses[i].text;
            std::free(responses[i].text);
        }
        record_ << std::endl;
        std::free(responses);
        return result;
    }

    bool setUser(const std::string& user) {
        auto* const set = found<int(Pam::Handle*, int, const void*)>("pam_set_item");
        return set(handle_, Pam::userItem, user.c_str()) == Pam::success;
    }

    bool delay(unsigned microseconds) {
        auto* const failDelay = found<int(Pam::Handle*, unsigned)>("pam_fail_delay");
        return failDelay(handle_, microseconds) == Pam::success;
    }

    bool recordItems() {
        record_ << "service " << textItem(handle_, serviceItem) << "\nuser "
                << textItem(handle_, Pam::userItem) << "\nrequesting user "
                << textItem(handle_, Pam::requestingUserItem) << "\nremote host "
                << textItem(handle_, remoteHostItem) << "\nterminal "
                << textItem(handle_, Pam::terminalItem) << "\nflags " << flags_ << std::endl;
        return true;
    }

    Pam::Handle* handle_;
    int flags_;
    std::string answer_;
    std::ofstream record_;
};

}  // namespace

extern "C" {

int pam_sm_authenticate(Pam::Handle* handle, int flags, int count, const char** words);
int pam_sm_setcred(Pam::Handle* handle, int flags, int count, const char** words);

int pam_sm_authenticate(Pam::Handle* handle, int flags, int count, const char** words) {
    Player player(handle, flags);
    for (int i = 0; i < count && player.play(words[i]); ++i) continue;
    return player.status;
}

// Asked only about a user who was let in; a check that asks at all would be noticed.
int pam_sm_setcred(Pam::Handle*, int, int, const char**) { std::abort(); }

}  // extern "C"
