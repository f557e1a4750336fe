// UTF8.hpp - code points as bytes, and bytes that are none.

#ifndef OPTRELLA_TESTS_SUPPORT_UTF8_HPP
#define OPTRELLA_TESTS_SUPPORT_UTF8_HPP

#include <cstdint>
#include <string>
#include <string_view>

namespace Tests {

constexpr std::uint32_t endOfUnicode = 0x110000;

constexpr bool isSurrogate(std::uint32_t c) { return c >= 0xD800 && c <= 0xDFFF; }

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

// Sequences that begin like UTF-8 but are not UTF-8.
constexpr std::string_view brokenSequences[] = {
    "\x80",
    "\xBF",
    "\xC0\x80",
    "\xC1\xBF",
    "\xC3",
    "\xE2\x82",
    "\xE2",
    "\xE0\x80\x80",
    "\xED\xA0\x80",
    "\xED\xBF\xBF",
    "\xF0\x9F\x98",
    "\xF0\x9F",
    "\xF0",
    "\xF0\x80\x80\x80",
    "\xF4\x90\x80\x80",
    "\xF5\x80\x80\x80",
    "\xF8\x88\x80\x80\x80",
    "\xFE",
    "\xFF",
};

}  // namespace Tests

#endif
