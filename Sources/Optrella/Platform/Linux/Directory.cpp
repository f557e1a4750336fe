#include "Optrella/Platform/Directory.hpp"

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "Optrella/Platform/Posix/UserDatabase.hpp"

namespace Optrella::Platform {

namespace {

bool groupExists(gid_t group) {
    struct group record;
    std::vector<char> buffer;
    return findRecord(record, buffer,
                      [group](auto... rest) { return ::getgrgid_r(group, rest...); }) != nullptr;
}

std::optional<gid_t> primaryGroup(const std::string& user) {
    passwd record;
    std::vector<char> buffer;
    const passwd* entry = findRecord(
        record, buffer, [&user](auto... rest) { return ::getpwnam_r(user.c_str(), rest...); });
    if (entry == nullptr) return std::nullopt;
    return entry->pw_gid;
}

std::vector<gid_t> groupsOf(const std::string& user, gid_t primary) {
    constexpr std::size_t largest = std::size_t{1} << 20;
    for (std::vector<gid_t> groups(64); groups.size() <= largest;
         groups.resize(groups.size() * 2)) {
        int count = static_cast<int>(groups.size());
        if (::getgrouplist(user.c_str(), primary, groups.data(), &count) >= 0) {
            groups.resize(static_cast<std::size_t>(count));
            return groups;
        }
    }
    return {};
}

}  // namespace

// Of the real user id: those who check the password and start the command again go by that one too.
std::optional<std::string> loggedInUser() { return nameOfUser(::getuid()); }

bool isMember(const std::string& user, std::uint32_t group) {
    // getgrouplist alone would do for neither question: it answers for unknown users too, and names
    // a primary group that does not exist.
    const std::optional<gid_t> primary = primaryGroup(user);
    if (!primary || !groupExists(group)) return false;
    const std::vector<gid_t> groups = groupsOf(user, *primary);
    return std::find(groups.begin(), groups.end(), group) != groups.end();
}

}  // namespace Optrella::Platform
