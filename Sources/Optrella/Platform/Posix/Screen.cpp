#include "Optrella/Platform/Screen.hpp"

#include <sys/ioctl.h>
#include <unistd.h>

namespace Optrella::Platform {

namespace {

int descriptorOf(Stream stream) noexcept {
    return stream == Stream::output ? STDOUT_FILENO : STDERR_FILENO;
}

}  // namespace

bool isTerminal(Stream stream) noexcept { return ::isatty(descriptorOf(stream)) == 1; }

std::optional<std::size_t> screenColumns(Stream stream) noexcept {
    winsize size{};
    const bool isKnown = ::ioctl(descriptorOf(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? std::optional<std::size_t>(size.ws_col) : std::nullopt;
}

}  // namespace Optrella::Platform
