#include "Optrella/Text/Characters.hpp"

#include <utf8proc.h>

#include <algorithm>

#include "Optrella/Text/Escapes.hpp"
#include "Optrella/Text/Unicode.hpp"

namespace Optrella::Internal {

namespace {

void append(std::string& to, CodePoint::Value value) noexcept {
    utf8proc_uint8_t encoded[4];
    const utf8proc_ssize_t size = utf8proc_encode_char(value, encoded);
    to.append(reinterpret_cast<const char*>(encoded), static_cast<std::size_t>(size));
}

// The canonical decomposition; broken bytes stay.
std::string decomposed(std::string_view bytes) noexcept {
    if (isASCII(bytes) || !isUTF8(bytes)) return std::string(bytes);
    std::string canonical;
    CanonicalReader reader;
    reader = bytes;
    for (auto next = reader.next(); next != CanonicalReader::end; next = reader.next()) {
        append(canonical, next);
    }
    return canonical;
}

// The case folding of one code point.
struct Folding {
    static constexpr utf8proc_ssize_t most = 8;  // none is longer than three

    explicit Folding(CodePoint::Value value) noexcept {
        constexpr auto options =
            static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_CASEFOLD);
        int boundary = 0;
        size = utf8proc_decompose_char(value, parts, most, options, &boundary);
    }

    utf8proc_int32_t parts[most];
    utf8proc_ssize_t size;
};

std::size_t columnsOfCharacter(std::string_view character) noexcept {
    std::size_t widest = 0;
    while (!character.empty()) {
        const CodePoint next = firstCodePoint(character);
        const int width = next.isValid() ? utf8proc_charwidth(next.value) : 1;
        widest = std::max(widest, static_cast<std::size_t>(std::max(width, 0)));
        character.remove_prefix(next.size);
    }
    return widest;
}

}  // namespace

std::vector<std::string> canonicalCharacters(std::string_view bytes) noexcept {
    std::vector<std::string> characters;
    while (!bytes.empty()) {
        const std::size_t size = firstCharacterSize(bytes);
        characters.push_back(decomposed(bytes.substr(0, size)));
        bytes.remove_prefix(size);
    }
    return characters;
}

std::string withoutCase(std::string_view bytes) noexcept {
    if (isASCII(bytes)) {
        std::string folded(bytes);
        for (char& byte : folded) {
            if (byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte - 'A' + 'a');
        }
        return folded;
    }
    const std::string canonical = decomposed(bytes);
    std::string folded;
    for (std::string_view rest = canonical; !rest.empty();) {
        const CodePoint next = firstCodePoint(rest);
        if (next.isValid()) {
            const Folding folding(next.value);
            for (utf8proc_ssize_t i = 0; i < folding.size; ++i) append(folded, folding.parts[i]);
        } else {
            folded += rest.front();
        }
        rest.remove_prefix(next.size);
    }
    return decomposed(folded);
}

std::string upperCase(std::string_view bytes) noexcept {
    std::string capitals;
    for (; !bytes.empty(); bytes.remove_prefix(firstCodePoint(bytes).size)) {
        const CodePoint next = firstCodePoint(bytes);
        if (next.isValid()) {
            append(capitals, utf8proc_toupper(next.value));
        } else {
            capitals += bytes.front();
        }
    }
    return capitals;
}

std::size_t columns(std::string_view bytes) noexcept {
    std::size_t sum = 0;
    while (!bytes.empty()) {
        const std::size_t size = firstCharacterSize(bytes);
        sum += columnsOfCharacter(bytes.substr(0, size));
        bytes.remove_prefix(size);
    }
    return sum;
}

bool holdsUnprintable(std::string_view bytes) noexcept {
    std::string escaped;
    appendEscaped(escaped, bytes);
    // Quotation marks and backslashes are escaped, too, and broken bytes.
    std::string shown;
    for (; !bytes.empty(); bytes.remove_prefix(firstCodePoint(bytes).size)) {
        const std::string_view point = bytes.substr(0, firstCodePoint(bytes).size);
        if (!firstCodePoint(bytes).isValid()) {
            appendEscaped(shown, point);
            continue;
        }
        if (point == "\"" || point == "'" || point == "\\") shown += '\\';
        shown += point;
    }
    return escaped != shown;
}

}  // namespace Optrella::Internal
