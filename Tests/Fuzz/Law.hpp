// Law.hpp - the laws that a target checks.

#ifndef OPTRELLA_TESTS_FUZZ_LAW_HPP
#define OPTRELLA_TESTS_FUZZ_LAW_HPP

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace Tests {

// Ends the run as a finding when the law does not hold.
inline void law(bool holds, const char* statement) {
    if (holds) return;
    std::fprintf(stderr, "Broken law: %s\n", statement);
    std::abort();
}

// The same for texts that must be equal byte by byte; shows both.
inline void sameBytes(std::string_view actual, std::string_view expected, const char* statement) {
    if (actual == expected) return;
    std::fprintf(stderr, "actual:   [%.*s]\nexpected: [%.*s]\n", static_cast<int>(actual.size()),
                 actual.data(), static_cast<int>(expected.size()), expected.data());
    law(false, statement);
}

}  // namespace Tests

#endif
