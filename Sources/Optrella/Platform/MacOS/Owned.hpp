// Owned.hpp - a Core Foundation object that is released when its owner ends.

#ifndef OPTRELLA_PLATFORM_MACOS_OWNED_HPP
#define OPTRELLA_PLATFORM_MACOS_OWNED_HPP

#include <CoreFoundation/CoreFoundation.h>

namespace Optrella::Platform {

template <class Reference>
class Owned {
public:
    // Takes over what a function with "Create" or "Copy" in its name has returned; null is none.
    explicit Owned(Reference object) noexcept : object_(object) {}
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    ~Owned() {
        if (object_ != nullptr) CFRelease(object_);
    }

    explicit operator bool() const noexcept { return object_ != nullptr; }
    [[nodiscard]] Reference get() const noexcept { return object_; }

private:
    Reference object_;
};

// A further owner of what somebody else owns. REQUIRES: not null.
template <class Reference>
[[nodiscard]] Owned<Reference> coOwned(Reference object) noexcept {
    CFRetain(object);
    return Owned<Reference>(object);
}

}  // namespace Optrella::Platform

#endif
