#include "Optrella/Internal/Print.hpp"

#include <cstdio>

namespace Optrella::Internal {

void print(std::string text, char terminator) {
    text += terminator;
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stdout));
}

void flushPrinted() noexcept { static_cast<void>(std::fflush(stdout)); }

}  // namespace Optrella::Internal
