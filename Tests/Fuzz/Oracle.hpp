// Oracle.hpp - what ICU, which shares no code with the library, says of texts.
//
// ICU 72 and utf8proc 2.8 both know Unicode 15.0. Other pairs may differ in characters that one of
// them does not know yet: knowsTheSameUnicode tells.

#ifndef OPTRELLA_TESTS_FUZZ_ORACLE_HPP
#define OPTRELLA_TESTS_FUZZ_ORACLE_HPP

#include <string>
#include <string_view>
#include <vector>

namespace Tests::Oracle {

[[nodiscard]] bool knowsTheSameUnicode();

struct Sequence {
    std::string_view bytes;
    bool isValid;
};
// Code points and, where bytes are none, the pieces that are shown as one replacement character.
[[nodiscard]] std::vector<Sequence> sequences(std::string_view bytes);
[[nodiscard]] bool isUTF8(std::string_view bytes);

// Whether the text holds an unassigned code point that Unicode has nonetheless reserved for a
// control or a pictograph. utf8proc takes those for ordinary ones, ICU does not, so
// they agree on the characters of all other texts only.
[[nodiscard]] bool holdsReserved(std::string_view bytes);

// User-perceived characters; each byte that is not part of UTF-8 is one.
[[nodiscard]] std::vector<std::string_view> characters(std::string_view bytes);

// REQUIRES: UTF-8.
[[nodiscard]] std::string decomposed(std::string_view text);
[[nodiscard]] std::string composed(std::string_view text);

// Whether the code point may be shown as it is, after the one before it: it controls nothing, and
// it is seen or changes what is seen.
[[nodiscard]] bool isVisible(char32_t codePoint, char32_t before);
[[nodiscard]] char32_t codePoint(std::string_view sequence);

}  // namespace Tests::Oracle

#endif
