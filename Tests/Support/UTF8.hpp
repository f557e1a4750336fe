// UTF8.hpp - a code point as bytes.

#ifndef OPTRELLA_TESTS_SUPPORT_UTF8_HPP
#define OPTRELLA_TESTS_SUPPORT_UTF8_HPP

#include <string>

namespace Tests {

// REQUIRES: no surrogate.
inline std::string utf8(char32_t c) {
    const auto byte = [](char32_t bits) { return static_cast<char>(bits); };
    if (c < 0x80) return {byte(c)};
    if (c < 0x800) return {byte(0xC0 | (c >> 6)), byte(0x80 | (c & 0x3F))};
    if (c < 0x10000) {
        return {byte(0xE0 | (c >> 12)), byte(0x80 | ((c >> 6) & 0x3F)), byte(0x80 | (c & 0x3F))};
    }
    return {byte(0xF0 | (c >> 18)), byte(0x80 | ((c >> 12) & 0x3F)), byte(0x80 | ((c >> 6) & 0x3F)),
            byte(0x80 | (c & 0x3F))};
}

}  // namespace Tests

#endif
