// Checks passwords and looks at its own process, for PamTests.py: pam-probe INPUT OUTPUT
//
// The arguments are descriptors: the usual three are left to the tests. Every line on the one is
// answered by a line on the other; TEXT is hexadecimal, every byte masked, so that no password
// stands in the process but where the check puts it.
//
//     check USER TEXT   whether the password is right
//     seen TEXT         how often it stands in the process's memory
//     held TEXT         the same, while the process holds it as a password
//     state             open descriptors, number of threads, what SIGCHLD does, blocked signals

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Optrella/Platform/PasswordCheck.hpp"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define MEMORY_IS_SHADOWED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define MEMORY_IS_SHADOWED
#endif
#endif

using namespace Optrella::Platform;

namespace {

constexpr unsigned mask = 0x5A;

unsigned char unmasked(char byte) {
    return static_cast<unsigned char>(static_cast<unsigned char>(byte) ^ mask);
}

std::string fromHexadecimal(const std::string& digits) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
    return bytes;
}

Password passwordOf(const std::string& masked) {
    Password password;
    for (const char byte : masked) {
        const char plain = static_cast<char>(unmasked(byte));
        if (!password.append({&plain, 1})) std::abort();
    }
    return password;
}

#ifdef MEMORY_IS_SHADOWED

std::string timesSeen(const std::string&) { return "shadowed"; }

#else

struct Range {
    std::uintptr_t begin;
    std::uintptr_t end;
};

std::vector<Range> readableMemory() {
    std::vector<Range> ranges;
    std::FILE* const maps = std::fopen("/proc/self/maps", "re");
    char line[4400];
    while (maps != nullptr && std::fgets(line, sizeof line, maps) != nullptr) {
        Range range{};
        char rights = 0;
        if (std::sscanf(line, "%lx-%lx %c", &range.begin, &range.end, &rights) != 3) std::abort();
        if (rights == 'r' && std::strstr(line, "[v") == nullptr) ranges.push_back(range);
    }
    if (maps == nullptr || ranges.empty()) std::abort();
    std::fclose(maps);
    return ranges;
}

std::array<char, 1 << 16> block;

// Reads memory into the block, and nothing of the block itself: it holds what was read before.
std::size_t readBlock(int memory, const Range& range) {
    const std::size_t wanted = std::min<std::size_t>(block.size(), range.end - range.begin);
    const ssize_t size = ::pread(memory, block.data(), wanted, static_cast<off_t>(range.begin));
    if (size <= 0) return 0;
    const auto own = reinterpret_cast<std::uintptr_t>(block.data());
    const std::uintptr_t end = range.begin + static_cast<std::size_t>(size);
    for (std::uintptr_t at = std::max(own, range.begin); at < std::min(own + block.size(), end);
         ++at) {
        block[at - range.begin] = '\0';
    }
    return static_cast<std::size_t>(size);
}

std::string timesSeen(const std::string& masked) {
    const int memory = ::open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
    if (memory < 0) std::abort();
    const auto isMaskedOf = [](char plain, char byte) {
        return static_cast<unsigned char>(plain) == unmasked(byte);
    };
    int times = 0;
    for (Range range : readableMemory()) {
        while (range.end - range.begin >= masked.size()) {
            const std::size_t size = readBlock(memory, range);
            if (size < masked.size()) break;
            const auto end = block.begin() + static_cast<std::ptrdiff_t>(size);
            for (auto at = block.begin();; ++at, ++times) {
                at = std::search(at, end, masked.begin(), masked.end(), isMaskedOf);
                if (at == end) break;
            }
            range.begin += size - masked.size() + 1;
        }
    }
    block.fill('\0');
    ::close(memory);
    return std::to_string(times);
}

#endif

std::string timesSeenWhileHeld(const std::string& masked) {
    const Password password = passwordOf(masked);
    return timesSeen(masked);
}

std::set<int> entries(const char* directory) {
    std::set<int> numbers;
    DIR* const stream = ::opendir(directory);
    if (stream == nullptr) std::abort();
    while (const dirent* entry = ::readdir(stream)) {
        if (entry->d_name[0] != '.') numbers.insert(std::atoi(entry->d_name));
    }
    numbers.erase(::dirfd(stream));
    ::closedir(stream);
    return numbers;
}

std::string state() {
    std::ostringstream text;
    text << "descriptors";
    for (const int descriptor : entries("/proc/self/fd")) text << ' ' << descriptor;
    text << "; threads " << entries("/proc/self/task").size() << "; SIGCHLD ";
    struct sigaction action;
    ::sigaction(SIGCHLD, nullptr, &action);
    text << (action.sa_handler == SIG_IGN   ? "ignored"
             : action.sa_handler == SIG_DFL ? "default"
                                            : "handled")
         << "; blocked";
    sigset_t blocked;
    ::sigprocmask(SIG_BLOCK, nullptr, &blocked);
    for (int number = 1; number <= SIGRTMAX; ++number) {
        if (::sigismember(&blocked, number) == 1) text << ' ' << number;
    }
    return text.str();
}

std::string answer(const std::string& line) {
    std::istringstream words(line);
    std::string command;
    std::string user;
    std::string digits;
    words >> command;
    if (command == "state") return state();
    if (command == "check") words >> user;
    words >> digits;
    const std::string masked = fromHexadecimal(digits);
    if (command == "check") return verifyPassword(user, passwordOf(masked)) ? "true" : "false";
    if (command == "seen") return timesSeen(masked);
    if (command == "held") return timesSeenWhileHeld(masked);
    std::abort();
}

// Unbuffered, so that no line stays in a buffer of the C library.
bool readLine(int input, std::string& line) {
    line.clear();
    for (char byte; ::read(input, &byte, 1) == 1; line += byte) {
        if (byte == '\n') return true;
    }
    return false;
}

}  // namespace

int main(int, char* words[]) {
    const int input = std::atoi(words[1]);
    const int output = std::atoi(words[2]);
    for (std::string line; readLine(input, line);) {
        const std::string text = answer(line) + "\n";
        if (::write(output, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
            return 1;
    }
    return 0;
}
