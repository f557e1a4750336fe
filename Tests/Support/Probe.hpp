// Probe.hpp - what the programs that play a part in a test have in common.

#ifndef OPTRELLA_TESTS_SUPPORT_PROBE_HPP
#define OPTRELLA_TESTS_SUPPORT_PROBE_HPP

#include <string>
#include <string_view>

namespace Tests {

// What happened cannot be told to the test, whose expectation fails by it.
[[noreturn]] void giveUp();

[[nodiscard]] std::string hex(std::string_view bytes);
[[nodiscard]] std::string bytesOf(std::string_view hexDigits);

void writeAll(int descriptor, std::string_view bytes);

// Waits until what was written into a pipe has been read: so a write is a block for its reader.
void awaitDrained(int descriptor);

// All of it.
[[nodiscard]] std::string standardInput();

}  // namespace Tests

#endif
