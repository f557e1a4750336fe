// Characters.hpp - the characters of a text, as the library cuts them off its end and shows them.

#ifndef OPTRELLA_TESTS_SUPPORT_CHARACTERS_HPP
#define OPTRELLA_TESTS_SUPPORT_CHARACTERS_HPP

#include <cstddef>
#include <string>
#include <string_view>

#include "Optrella/Text/Escapes.hpp"
#include "Optrella/Text/Unicode.hpp"

namespace Tests {

inline std::size_t countCharacters(std::string_view bytes) {
    std::size_t count = 0;
    for (; !bytes.empty(); ++count) {
        bytes.remove_suffix(Optrella::Internal::sizeOfLastCharacters(bytes, 1));
    }
    return count;
}

inline std::string escaped(std::string_view bytes) {
    std::string text;
    Optrella::Internal::appendEscaped(text, bytes);
    return text;
}

}  // namespace Tests

#endif
