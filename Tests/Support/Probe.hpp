// Probe.hpp - what the programs that play a part in a test have in common.

#ifndef OPTRELLA_TESTS_SUPPORT_PROBE_HPP
#define OPTRELLA_TESTS_SUPPORT_PROBE_HPP

#include <string>
#include <string_view>

namespace Tests {

// Ends the process: the test cannot be told what happened, and its expectation fails.
[[noreturn]] void giveUp();

[[nodiscard]] std::string hex(std::string_view bytes);
[[nodiscard]] std::string bytesOf(std::string_view hexDigits);

void writeAll(int descriptor, std::string_view bytes);

// Waits until what was written into a pipe has been read: so a write is a block for its reader.
void awaitDrained(int descriptor);

[[nodiscard]] std::string standardInput();

}  // namespace Tests

#endif
