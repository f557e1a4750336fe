#include "Optrella/Platform/Descriptor.hpp"

#include <fcntl.h>
#include <unistd.h>

namespace Optrella::Platform {

namespace {

bool closeInPrograms(const Descriptor& descriptor) noexcept {
    return ::fcntl(descriptor.number(), F_SETFD, FD_CLOEXEC) == 0;
}

}  // namespace

// There is no call that does all of this at once.
std::optional<Pipe> makePipe() noexcept {
    int ends[2];
    if (::pipe(ends) != 0) return std::nullopt;
    Pipe pipe{Descriptor(ends[0]), Descriptor(ends[1])};
    if (!closeInPrograms(pipe.readEnd) || !closeInPrograms(pipe.writeEnd)) return std::nullopt;
    return pipe;
}

}  // namespace Optrella::Platform
