#include "Optrella/CommandLine/TagMarks.hpp"

#include "Optrella/Text/Unicode.hpp"

namespace Optrella::Internal {

std::uint32_t TagMarks::markOfOther(const Text& argument) noexcept {
    return mayBeEquivalentToASCII(argument) ? anything : open;
}

}  // namespace Optrella::Internal
