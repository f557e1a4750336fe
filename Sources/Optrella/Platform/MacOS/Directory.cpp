#include "Optrella/Platform/Directory.hpp"

#include <CoreServices/CoreServices.h>
#include <unistd.h>

#include "Optrella/Platform/MacOS/Owned.hpp"
#include "Optrella/Platform/MacOS/Strings.hpp"
#include "Optrella/Platform/Posix/UserDatabase.hpp"

namespace Optrella::Platform {

namespace {

using Identities = Owned<CFArrayRef>;

// What a query finds, root and the groups of the system included, which are hidden ones. None when
// it fails.
Identities run(const Owned<CSIdentityQueryRef>& query) noexcept {
    constexpr CSIdentityQueryFlags all = kCSIdentityQueryIncludeHiddenIdentities;
    if (!query) return Identities(nullptr);
    const bool hasRun = CSIdentityQueryExecute(query.get(), all, nullptr) != 0;
    const CFArrayRef found = hasRun ? CSIdentityQueryCopyResults(query.get()) : nullptr;
    CSIdentityQueryStop(query.get());  // asked for before the last release of a query
    return Identities(found);
}

CFIndex sizeOf(const Identities& identities) noexcept {
    return identities ? CFArrayGetCount(identities.get()) : 0;
}

CSIdentityRef at(const Identities& identities, CFIndex index) noexcept {
    // The array holds what can be changed as what cannot.
    return static_cast<CSIdentityRef>(
        const_cast<void*>(CFArrayGetValueAtIndex(identities.get(), index)));
}

// The one whose log-in name it is: a query finds full names and other ones too, and those may be
// anybody's.
CSIdentityRef withName(CFStringRef name, const Identities& identities) noexcept {
    for (CFIndex i = 0; i < sizeOf(identities); ++i) {
        const CFStringRef own = CSIdentityGetPosixName(at(identities, i));
        if (own != nullptr && CFEqual(own, name) != 0) return at(identities, i);
    }
    return nullptr;
}

}  // namespace

// As the system's own question for the user's name answers.
std::optional<std::string> loggedInUser() {
    const uid_t effective = ::geteuid();
    return nameOfUser(effective != 0 ? effective : ::getuid());
}

bool isMember(const std::string& user, std::uint32_t group) {
    const CSIdentityAuthorityRef authority = CSGetDefaultIdentityAuthority();
    const Owned<CFStringRef> name = stringOf(user);
    if (!name) return false;
    const Identities users = run(Owned<CSIdentityQueryRef>(
        CSIdentityQueryCreateForName(kCFAllocatorDefault, name.get(), kCSIdentityQueryStringEquals,
                                     kCSIdentityClassUser, authority)));
    const CSIdentityRef identity = withName(name.get(), users);
    if (identity == nullptr) return false;

    // More than one group may have the number.
    const Identities groups = run(Owned<CSIdentityQueryRef>(CSIdentityQueryCreateForPosixID(
        kCFAllocatorDefault, group, kCSIdentityClassGroup, authority)));
    for (CFIndex i = 0; i < sizeOf(groups); ++i) {
        if (CSIdentityIsMemberOfGroup(identity, at(groups, i)) != 0) return true;
    }
    return false;
}

}  // namespace Optrella::Platform
