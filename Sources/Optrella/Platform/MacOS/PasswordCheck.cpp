#include "Optrella/Platform/PasswordCheck.hpp"

#include <OpenDirectory/OpenDirectory.h>

#include "Optrella/Platform/MacOS/Owned.hpp"
#include "Optrella/Platform/MacOS/Strings.hpp"

namespace Optrella::Platform {

namespace {

// Reads the password where it stands, as long as it is all ASCII; else the string makes a copy.
// REQUIRES: the password outlives the string.
Owned<CFStringRef> stringOf(const Password& password) noexcept {
    const std::string_view bytes = password.bytes();
    constexpr Boolean isExternal = 0;
    return Owned<CFStringRef>(CFStringCreateWithBytesNoCopy(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
        static_cast<CFIndex>(bytes.size()), kCFStringEncodingUTF8, isExternal, kCFAllocatorNull));
}

}  // namespace

// What fails says why in an error object; nobody is told, so none is asked for.
bool verifyPassword(const std::string& user, const Password& password) {
    const Owned<CFStringRef> name = stringOf(user);
    if (!name) return false;
    // Not the shared session: what others have told that one must not answer here.
    const Owned<ODSessionRef> session(ODSessionCreate(kCFAllocatorDefault, nullptr, nullptr));
    if (!session) return false;
    const Owned<ODNodeRef> node(ODNodeCreateWithNodeType(kCFAllocatorDefault, session.get(),
                                                         kODNodeTypeLocalNodes, nullptr));
    if (!node) return false;
    const Owned<ODRecordRef> record(
        ODNodeCopyRecord(node.get(), kODRecordTypeUsers, name.get(), nullptr, nullptr));
    if (!record) return false;
    const Owned<CFStringRef> typed = stringOf(password);
    return typed && ODRecordVerifyPassword(record.get(), typed.get(), nullptr);
}

}  // namespace Optrella::Platform
