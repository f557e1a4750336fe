// Input.hpp - the bytes of one run, read as what a target needs, and the laws that it checks.

#ifndef OPTRELLA_TESTS_FUZZ_INPUT_HPP
#define OPTRELLA_TESTS_FUZZ_INPUT_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
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

// Reads from the front. After the end there are zeros.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size)
        : rest_(reinterpret_cast<const char*>(data), size) {}

    [[nodiscard]] bool empty() const { return rest_.empty(); }
    std::uint8_t byte() {
        if (rest_.empty()) return 0;
        const char first = rest_.front();
        rest_.remove_prefix(1);
        return static_cast<std::uint8_t>(first);
    }
    // 0 to `most`.
    std::size_t upTo(std::size_t most) { return byte() % (most + 1); }
    bool flag() { return byte() % 2 != 0; }
    // Fewer where there are no more.
    std::string bytes(std::size_t count) {
        const std::string taken(rest_.substr(0, count));
        rest_.remove_prefix(taken.size());
        return taken;
    }
    std::string rest() { return bytes(rest_.size()); }

private:
    std::string_view rest_;
};

}  // namespace Tests

#endif
