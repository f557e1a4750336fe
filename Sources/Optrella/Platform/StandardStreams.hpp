// StandardStreams.hpp - bytes to the standard streams: all of them, at once.
//
// What a signal interrupts goes on. A descriptor that may not wait is waited for, unless it takes
// nothing for two seconds. Where a write fails, the rest is dropped silently. A closed pipe raises
// SIGPIPE, as it does in any program.

#ifndef OPTRELLA_PLATFORM_STANDARDSTREAMS_HPP
#define OPTRELLA_PLATFORM_STANDARDSTREAMS_HPP

#include <string_view>

namespace Optrella::Platform {

// Writes straight to descriptor 2.
void writeStandardError(std::string_view bytes) noexcept;

// Writes to where C's `stdout` writes, after what that holds, so that the order with printf stays;
// no other thread's output comes between. A `stdout` without a descriptor gets the bytes itself.
void writeStandardOutput(std::string_view bytes) noexcept;

}  // namespace Optrella::Platform

#endif
