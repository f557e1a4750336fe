#include "Optrella/Platform/StandardStreams.hpp"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace Optrella::Platform {

namespace {

// Whether a descriptor that may not wait takes more now; a reader that takes nothing for so long is
// not waited for any longer.
bool awaitRoom(int descriptor) noexcept {
    constexpr int mostMilliseconds = 2000;
    pollfd end{descriptor, POLLOUT, 0};
    int ready = -1;
    do {
        ready = ::poll(&end, 1, mostMilliseconds);
    } while (ready < 0 && errno == EINTR);
    return ready > 0;
}

void writeAll(int descriptor, std::string_view bytes) noexcept {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN ? !awaitRoom(descriptor) : errno != EINTR) {
            return;
        }
    }
}

}  // namespace

void writeStandardError(std::string_view bytes) noexcept { writeAll(STDERR_FILENO, bytes); }

void writeStandardOutput(std::string_view bytes) noexcept {
    if (bytes.empty()) return;
    ::flockfile(stdout);
    const int descriptor = ::fileno(stdout);
    // The C library drops what a descriptor that may not wait does not take at once.
    if (descriptor >= 0) static_cast<void>(awaitRoom(descriptor));
    static_cast<void>(std::fflush(stdout));
    // Past the stream: of what that writes, a signal may make it lose the rest, and nobody can tell
    // how much.
    if (descriptor >= 0) {
        writeAll(descriptor, bytes);
    } else {
        static_cast<void>(std::fwrite(bytes.data(), 1, bytes.size(), stdout));
        static_cast<void>(std::fflush(stdout));
    }
    ::funlockfile(stdout);
}

}  // namespace Optrella::Platform
