#include "Optrella/Platform/Process.hpp"

#include <CoreFoundation/CoreFoundation.h>
#include <crt_externs.h>

#include "Optrella/Platform/MacOS/Strings.hpp"

namespace Optrella::Platform {

std::optional<std::string> bundleIdentifier() {
    // Both belong to the system, as long as the process lives.
    const CFBundleRef bundle = CFBundleGetMainBundle();
    if (bundle == nullptr) return std::nullopt;
    const CFStringRef identifier = CFBundleGetIdentifier(bundle);
    if (identifier == nullptr) return std::nullopt;
    return textOf(identifier);
}

// A shared library has no variable `environ` of its own to read.
char** environment() noexcept { return *_NSGetEnviron(); }

}  // namespace Optrella::Platform
