#include "Optrella/Platform/StandardError.hpp"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace Optrella::Platform {

namespace {

// Whether a descriptor that may not wait takes more now; a reader that takes nothing for so long is
// not waited for any longer.
bool awaitRoom() noexcept {
    constexpr int mostMilliseconds = 2000;
    pollfd end{STDERR_FILENO, POLLOUT, 0};
    int ready = -1;
    do {
        ready = ::poll(&end, 1, mostMilliseconds);
    } while (ready < 0 && errno == EINTR);
    return ready > 0;
}

}  // namespace

void writeStandardError(std::string_view bytes) noexcept {
    while (!bytes.empty()) {
        const ssize_t written = ::write(STDERR_FILENO, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN ? !awaitRoom() : errno != EINTR) {
            return;
        }
    }
}

}  // namespace Optrella::Platform
