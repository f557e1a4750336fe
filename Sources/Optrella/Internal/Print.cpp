#include "Optrella/Internal/Print.hpp"

#include <cstdio>

namespace Optrella::Internal {

void print(std::string text, char terminator) {
    text += terminator;
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stdout));
}

}  // namespace Optrella::Internal
