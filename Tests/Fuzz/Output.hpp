// Output.hpp - standard output kept in memory: no descriptor, no file.

#ifndef OPTRELLA_TESTS_FUZZ_OUTPUT_HPP
#define OPTRELLA_TESTS_FUZZ_OUTPUT_HPP

#include <string>

namespace Tests {

// What has been printed since the last call. The first call takes C's `stdout` away for good.
std::string takePrinted();

// The part of it that has already left the buffer of `stdout`.
std::string takeHandedOn();

}  // namespace Tests

#endif
