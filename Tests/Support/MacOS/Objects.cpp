#include "Objects.hpp"

#include <map>
#include <mutex>

namespace Tests {

namespace {

struct Owners {
    std::mutex mutex;
    std::map<CFTypeRef, int> counts;
};

Owners& owners() {
    static Owners& owners = *new Owners();  // asked until the process ends
    return owners;
}

}  // namespace

int unbalancedObjects() {
    const std::scoped_lock lock(owners().mutex);
    return static_cast<int>(owners().counts.size());
}

void forgetObjects() {
    const std::scoped_lock lock(owners().mutex);
    owners().counts.clear();
}

void count(CFTypeRef object, int by) {
    if (object == nullptr) return;
    const std::scoped_lock lock(owners().mutex);
    if ((owners().counts[object] += by) == 0) owners().counts.erase(object);
}

}  // namespace Tests

using Tests::count;
using Tests::given;

// Weak, for programs in which nothing is wrapped.
extern "C" {

[[gnu::weak]] CFTypeRef __real_CFRetain(CFTypeRef);
[[gnu::weak]] void __real_CFRelease(CFTypeRef);
[[gnu::weak]] CFStringRef __real_CFStringCreateWithBytes(CFAllocatorRef, const UInt8*, CFIndex,
                                                         CFStringEncoding, Boolean);
[[gnu::weak]] CFStringRef __real_CFStringCreateWithBytesNoCopy(CFAllocatorRef, const UInt8*,
                                                               CFIndex, CFStringEncoding, Boolean,
                                                               CFAllocatorRef);
[[gnu::weak]] CFRunLoopSourceRef __real_CFRunLoopSourceCreate(CFAllocatorRef, CFIndex,
                                                              CFRunLoopSourceContext*);

CFTypeRef __wrap_CFRetain(CFTypeRef object) {
    count(object, 1);
    return __real_CFRetain(object);
}

void __wrap_CFRelease(CFTypeRef object) {
    // First: afterwards another object may stand there.
    count(object, -1);
    __real_CFRelease(object);
}

CFStringRef __wrap_CFStringCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes,
                                           CFIndex size, CFStringEncoding encoding,
                                           Boolean isExternal) {
    return given(__real_CFStringCreateWithBytes(allocator, bytes, size, encoding, isExternal));
}

CFStringRef __wrap_CFStringCreateWithBytesNoCopy(CFAllocatorRef allocator, const UInt8* bytes,
                                                 CFIndex size, CFStringEncoding encoding,
                                                 Boolean isExternal, CFAllocatorRef ofTheBytes) {
    return given(__real_CFStringCreateWithBytesNoCopy(allocator, bytes, size, encoding, isExternal,
                                                      ofTheBytes));
}

CFRunLoopSourceRef __wrap_CFRunLoopSourceCreate(CFAllocatorRef allocator, CFIndex order,
                                                CFRunLoopSourceContext* context) {
    return given(__real_CFRunLoopSourceCreate(allocator, order, context));
}
}
