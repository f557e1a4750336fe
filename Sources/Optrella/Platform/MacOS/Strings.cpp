#include "Optrella/Platform/MacOS/Strings.hpp"

namespace Optrella::Platform {

Owned<CFStringRef> stringOf(std::string_view text) noexcept {
    constexpr Boolean isExternal = 0;  // no byte order mark to be looked for
    return Owned<CFStringRef>(CFStringCreateWithBytes(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
        static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, isExternal));
}

std::string textOf(CFStringRef string) {
    constexpr UInt8 replacement = '?';
    constexpr Boolean isExternal = 0;
    const CFRange all{0, CFStringGetLength(string)};
    CFIndex size = 0;
    CFStringGetBytes(string, all, kCFStringEncodingUTF8, replacement, isExternal, nullptr, 0,
                     &size);
    std::string text(static_cast<std::size_t>(size), '\0');
    CFStringGetBytes(string, all, kCFStringEncodingUTF8, replacement, isExternal,
                     reinterpret_cast<UInt8*>(text.data()), size, nullptr);
    return text;
}

}  // namespace Optrella::Platform
