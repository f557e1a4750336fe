// Reads one password while a system call of the reader fails, for FaultTests.py:
//
//   FaultProbe REPORT                          no call fails
//   FaultProbe REPORT CALL FIRST LAST ERRNO    the calls of this name with these numbers fail
//   FaultProbe REPORT CALL FIRST LAST lie      they fail, but say that they have succeeded
//   FaultProbe REPORT CALL FIRST LAST short    these writes write only their first byte
//   FaultProbe REPORT keep                     no call fails, and the password is not destroyed
//
// Reports, line by line: whether the result is "none", "right" or "wrong"; how many descriptors
// have been left open; how many signals are handled in another way than before; whether a part of
// the password is in memory; and the number of each call. Linked with --wrap for each of the calls.

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/select.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string>

#include "Optrella/Platform/Terminal.hpp"

namespace {

using Optrella::Platform::Password;

// ---- Faults ----

enum class Fault { error, lie, cutShort };

struct Call {
    const char* name;
    int count = 0;
};

Call calls[] = {{"open"},      {"pipe"},   {"fcntl"}, {"sigaction"}, {"tcgetattr"},
                {"tcsetattr"}, {"select"}, {"read"},  {"write"},     {"mmap"}};

bool isReading = false;
std::string failing;
int firstFailing = 0;
int lastFailing = 0;
Fault fault = Fault::error;
int error = 0;

// Counts the call; true when it is to fail.
bool fails(const char* name) {
    if (!isReading) return false;
    for (Call& call : calls) {
        if (std::strcmp(call.name, name) != 0) continue;
        ++call.count;
        return failing == name && firstFailing <= call.count && call.count <= lastFailing;
    }
    std::abort();
}

int failure() {
    if (fault == Fault::lie) return 0;
    errno = error;
    return -1;
}

}  // namespace

// The linker sends the library's calls to __wrap_..., and __real_... to the system.
extern "C" {

int __real_open(const char* path, int flags, ...);
int __real_pipe2(int* ends, int flags);
int __real_fcntl(int number, int command, ...);
int __real_sigaction(int signal, const struct sigaction* action, struct sigaction* before);
int __real_tcgetattr(int number, termios* settings);
int __real_tcsetattr(int number, int when, const termios* settings);
int __real_select(int count, fd_set* read, fd_set* write, fd_set* other, timeval* time);
ssize_t __real_read(int number, void* buffer, size_t size);
ssize_t __real_write(int number, const void* buffer, size_t size);
void* __real_mmap(void* address, size_t size, int access, int flags, int number, off_t offset);

int __wrap_open(const char* path, int flags, ...) {
    return fails("open") ? failure() : __real_open(path, flags);
}
int __wrap_pipe2(int* ends, int flags) {
    return fails("pipe") ? failure() : __real_pipe2(ends, flags);
}
int __wrap_fcntl(int number, int command, ...) {
    std::va_list arguments;
    va_start(arguments, command);
    const int argument = va_arg(arguments, int);
    va_end(arguments);
    return fails("fcntl") ? failure() : __real_fcntl(number, command, argument);
}
int __wrap_sigaction(int signal, const struct sigaction* action, struct sigaction* before) {
    return fails("sigaction") ? failure() : __real_sigaction(signal, action, before);
}
int __wrap_tcgetattr(int number, termios* settings) {
    return fails("tcgetattr") ? failure() : __real_tcgetattr(number, settings);
}
int __wrap_tcsetattr(int number, int when, const termios* settings) {
    return fails("tcsetattr") ? failure() : __real_tcsetattr(number, when, settings);
}
int __wrap_select(int count, fd_set* read, fd_set* write, fd_set* other, timeval* time) {
    return fails("select") ? failure() : __real_select(count, read, write, other, time);
}
ssize_t __wrap_read(int number, void* buffer, size_t size) {
    return fails("read") ? failure() : __real_read(number, buffer, size);
}
ssize_t __wrap_write(int number, const void* buffer, size_t size) {
    if (!fails("write")) return __real_write(number, buffer, size);
    return fault == Fault::cutShort ? __real_write(number, buffer, 1) : failure();
}
void* __wrap_mmap(void* address, size_t size, int access, int flags, int number, off_t offset) {
    if (!fails("mmap")) return __real_mmap(address, size, access, flags, number, offset);
    failure();
    return MAP_FAILED;
}

}  // extern "C"

namespace {

// ---- What is left ----

constexpr unsigned char mask = 0x5a;

// "Kq7#vR2!mX9@zB4$", the password that is typed, masked: this program does not hold it otherwise.
constexpr std::array<unsigned char, 16> masked = {0x11, 0x2b, 0x6d, 0x79, 0x2c, 0x08, 0x68, 0x7b,
                                                  0x37, 0x02, 0x63, 0x1a, 0x20, 0x18, 0x6e, 0x7e};
constexpr std::size_t partSize = 4;

bool isMasked(const char* bytes, std::size_t first, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        if ((static_cast<unsigned char>(bytes[i]) ^ mask) != masked[first + i]) return false;
    }
    return true;
}

bool isPart(const char* bytes) {
    for (std::size_t first = 0; first + partSize <= masked.size(); ++first) {
        if (isMasked(bytes, first, partSize)) return true;
    }
    return false;
}

constexpr std::size_t pageSize = 4096;
constexpr std::size_t windowSize = 256 * pageSize;
constexpr char emptyPage[pageSize] = {};

// How often four bytes of the password stand together in these.
int countParts(const char* bytes, std::size_t size) {
    int count = 0;
    for (std::size_t i = 0; i + partSize <= size; ++i) {
        const bool isPageThere = i % pageSize == 0 && i + pageSize <= size;
        if (isPageThere && std::memcmp(bytes + i, emptyPage, pageSize) == 0) {
            i += pageSize - 1;
        } else if (isPart(bytes + i)) {
            ++count;
        }
    }
    return count;
}

int countParts(int memory, std::size_t begin, std::size_t end, char* window) {
    int count = 0;
    while (begin + partSize <= end) {
        const std::size_t size = std::min(windowSize, end - begin);
        const ssize_t got = ::pread(memory, window, size, static_cast<off_t>(begin));
        if (got != static_cast<ssize_t>(size)) return count;  // pages of the system's own
        count += countParts(window, size);
        begin += size == end - begin ? size : size - pageSize;  // a part may lie on two windows
    }
    return count;
}

// Searches all memory that can be written to, but for the window it is looked at through. The maps
// of a sanitizer, which are larger than any memory, are left out.
int countPartsInMemory() {
    constexpr std::size_t largest = std::size_t{64} << 20;
    void* window =
        ::mmap(nullptr, windowSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    const int memory = ::open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
    std::FILE* maps = std::fopen("/proc/self/maps", "re");
    if (window == MAP_FAILED || memory < 0 || maps == nullptr) std::abort();

    int count = 0;
    char line[4096];
    while (std::fgets(line, sizeof line, maps) != nullptr) {
        std::size_t begin = 0;
        std::size_t end = 0;
        char access[5];
        if (std::sscanf(line, "%zx-%zx %4s", &begin, &end, access) != 3) std::abort();
        if (access[0] != 'r' || access[1] != 'w' || end - begin > largest) continue;
        const auto own = reinterpret_cast<std::size_t>(window);
        // Neighbouring maps are joined: the window can lie inside one.
        const std::size_t ownEnd = own + windowSize;
        count += countParts(memory, begin, std::min(end, std::max(begin, own)),
                            static_cast<char*>(window));
        count += countParts(memory, std::max(begin, std::min(end, ownEnd)), end,
                            static_cast<char*>(window));
    }
    std::fclose(maps);
    ::close(memory);
    ::munmap(window, windowSize);
    return count;
}

std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                         std::filesystem::directory_iterator());
}

int changedHandlers() {
    int changed = 0;
    for (int signal = 1; signal < 32; ++signal) {
        struct sigaction action {};
        ::sigaction(signal, nullptr, &action);
        if (signal == SIGTERM ? action.sa_handler != SIG_IGN : action.sa_handler != SIG_DFL) {
            ++changed;
        }
    }
    return changed;
}

// Starts from handlings that are the same under every tool that this may run under.
void setHandlers() {
    for (int signal = 1; signal < 32; ++signal) {
        ::signal(signal, signal == SIGTERM ? SIG_IGN : SIG_DFL);
    }
}

const char* described(const std::optional<Password>& password) {
    if (!password) return "none";
    const std::string_view bytes = password->bytes();
    const bool isRight = bytes.size() == masked.size() && isMasked(bytes.data(), 0, bytes.size());
    return isRight ? "right" : "wrong";
}

void chooseFault(char* argv[]) {
    failing = argv[2];
    firstFailing = std::atoi(argv[3]);
    lastFailing = std::atoi(argv[4]);
    if (std::strcmp(argv[5], "lie") == 0) {
        fault = Fault::lie;
    } else if (std::strcmp(argv[5], "short") == 0) {
        fault = Fault::cutShort;
    } else {
        error = std::atoi(argv[5]);
    }
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc < 2) return 64;
    if (argc > 5) chooseFault(argv);
    const bool isKept = argc == 3;
    const int report = std::atoi(argv[1]);
    setHandlers();
    const std::ptrdiff_t descriptorsBefore = openDescriptors();
    // Among all that a sanitizer keeps, four bytes may look like a part by chance.
    const int partsBefore = countPartsInMemory();

    isReading = true;
    std::optional<Password> password = Optrella::Platform::readPassword("Password:");
    isReading = false;

    const char* result = described(password);
    if (!isKept) password.reset();
    const bool isLeft = countPartsInMemory() > partsBefore;
    ::dprintf(report, "%s\n%td\n%d\n%s\n", result, openDescriptors() - descriptorsBefore,
              changedHandlers(), isLeft ? "in memory" : "nowhere");
    for (const Call& call : calls) ::dprintf(report, "%s %d\n", call.name, call.count);
    return 0;
}
