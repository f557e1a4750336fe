#include "Support/Probe.hpp"

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <thread>

namespace Tests {

namespace {

constexpr std::string_view digits = "0123456789abcdef";

bool isPipe(int descriptor) {
    struct stat status;
    return ::fstat(descriptor, &status) == 0 && S_ISFIFO(status.st_mode);
}

// Whether a pipe tells at its write end too what waits in it, which not every system does.
bool tellsAtTheWriteEnd() {
    int ends[2];
    if (::pipe(ends) != 0) giveUp();
    writeAll(ends[1], "x");
    int waiting = 0;
    const bool tells = ::ioctl(ends[1], FIONREAD, &waiting) == 0 && waiting == 1;
    for (const int end : ends) ::close(end);
    return tells;
}

}  // namespace

void giveUp() { ::_exit(99); }

std::string hex(std::string_view bytes) {
    std::string text;
    for (const char each : bytes) {
        const auto byte = static_cast<unsigned char>(each);
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

std::string bytesOf(std::string_view hexDigits) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hexDigits.size(); i += 2) {
        const std::size_t byte = digits.find(hexDigits[i]) * 16 + digits.find(hexDigits[i + 1]);
        bytes += static_cast<char>(static_cast<unsigned char>(byte));
    }
    return bytes;
}

void writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written <= 0) giveUp();
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

void awaitDrained(int descriptor) {
    if (!isPipe(descriptor)) return;
    static const bool isTold = tellsAtTheWriteEnd();
    if (!isTold) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        return;
    }
    for (int i = 0; i < 100'000; ++i) {
        int waiting = 0;
        if (::ioctl(descriptor, FIONREAD, &waiting) != 0) giveUp();
        if (waiting == 0) return;
        pollfd end{descriptor, 0, 0};
        if (::poll(&end, 1, 0) != 0) giveUp();  // nobody is left to read it
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    giveUp();
}

std::string standardInput() {
    std::string text;
    char buffer[4096];
    for (;;) {
        const ssize_t size = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (size < 0) giveUp();
        if (size == 0) return text;
        text.append(buffer, static_cast<std::size_t>(size));
    }
}

}  // namespace Tests
