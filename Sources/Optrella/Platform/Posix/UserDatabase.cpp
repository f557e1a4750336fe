#include "Optrella/Platform/Posix/UserDatabase.hpp"

#include <pwd.h>
#include <sys/types.h>

#include "Optrella/Platform/Directory.hpp"

namespace Optrella::Platform {

std::optional<std::string> nameOfUser(unsigned id) {
    passwd record;
    std::vector<char> buffer;
    const passwd* entry =
        findRecord(record, buffer, [id](auto... rest) { return ::getpwuid_r(uid_t{id}, rest...); });
    if (entry == nullptr) return std::nullopt;
    return entry->pw_name;
}

std::string nameOfRoot() { return nameOfUser(0).value_or("root"); }

}  // namespace Optrella::Platform
