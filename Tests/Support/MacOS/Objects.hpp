// Objects.hpp - counts the objects of Core Foundation that the library makes, is given or retains,
// and those that it releases.
//
// The calls are counted where the linker wraps them (--wrap); what Core Foundation does within
// itself is not.

#ifndef OPTRELLA_TESTS_SUPPORT_MACOS_OBJECTS_HPP
#define OPTRELLA_TESTS_SUPPORT_MACOS_OBJECTS_HPP

#include <CoreFoundation/CoreFoundation.h>

namespace Tests {

// How many objects have not been released, or once too often.
int unbalancedObjects();
void forgetObjects();

void count(CFTypeRef object, int by);

// Given to the library, which owns it from now on.
template <class Reference>
Reference given(Reference object) {
    count(object, 1);
    return object;
}

}  // namespace Tests

#endif
