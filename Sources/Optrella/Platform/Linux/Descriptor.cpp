#include "Optrella/Platform/Descriptor.hpp"

#include <fcntl.h>
#include <unistd.h>

namespace Optrella::Platform {

std::optional<Pipe> makePipe() noexcept {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return std::nullopt;
    return Pipe{Descriptor(ends[0]), Descriptor(ends[1])};
}

}  // namespace Optrella::Platform
