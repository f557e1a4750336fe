#include "Optrella/Text/Print.hpp"

#include <cstdio>

#include "Optrella/Text/StringBuilder.hpp"

namespace Optrella::Internal {

void print(std::string_view text) noexcept {
    if (!text.empty()) static_cast<void>(std::fwrite(text.data(), 1, text.size(), stdout));
}

void printLine(std::initializer_list<std::string_view> pieces) noexcept {
    StringBuilder line;
    for (const std::string_view piece : pieces) line.append(piece);
    line.append("\n");
    print(line);
}

void flushPrinted() noexcept { static_cast<void>(std::fflush(stdout)); }

}  // namespace Optrella::Internal
