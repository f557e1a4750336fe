#include "Optrella/Text/Print.hpp"

#include "Optrella/Platform/StandardStreams.hpp"
#include "Optrella/Text/StringBuilder.hpp"

namespace Optrella::Internal {

void print(std::string_view text) noexcept { Platform::writeStandardOutput(text); }

void printLine(std::initializer_list<std::string_view> pieces) noexcept {
    StringBuilder line;
    for (const std::string_view piece : pieces) line.append(piece);
    line.append("\n");
    print(line);
}

}  // namespace Optrella::Internal
