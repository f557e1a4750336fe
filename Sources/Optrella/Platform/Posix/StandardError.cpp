#include <unistd.h>

#include <cerrno>

#include "Optrella/Platform/Process.hpp"

namespace Optrella::Platform {

void writeStandardError(std::string_view bytes) noexcept {
    while (!bytes.empty()) {
        const ssize_t written = ::write(STDERR_FILENO, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            return;
        }
    }
}

}  // namespace Optrella::Platform
