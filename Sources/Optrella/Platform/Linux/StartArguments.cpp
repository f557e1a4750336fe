#include "Optrella/Platform/StartArguments.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace Optrella::Platform {

std::string argumentsOfTheSystem() {
    std::string text;
    const int file = ::open("/proc/self/cmdline", O_RDONLY | O_CLOEXEC);
    if (file < 0) return text;
    char buffer[4096];
    for (;;) {
        const ssize_t size = ::read(file, buffer, sizeof buffer);
        if (size > 0) {
            text.append(buffer, static_cast<std::size_t>(size));
        } else if (size == 0 || errno != EINTR) {
            break;
        }
    }
    ::close(file);
    return text;
}

}  // namespace Optrella::Platform
