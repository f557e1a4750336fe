// Answers for each group number on standard input whether the user is a member, for
// DirectoryTests.py.

#include <unistd.h>

#include <iostream>

#include "Optrella/Elevation/PromptForPassword.hpp"

// A leak checker may not look into a process that has the rights of another user.
extern "C" int __lsan_is_turned_off() { return ::getuid() != ::geteuid() ? 1 : 0; }

int main() {
    std::int64_t group;
    while (std::cin >> group) {
        const bool isMember = Optrella::PromptForPassword::validateGroupMembership(group);
        std::cout << (isMember ? "true" : "false") << std::endl;
    }
}
