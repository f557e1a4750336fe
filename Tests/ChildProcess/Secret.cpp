#include "ChildProcess/Secret.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

namespace Tests {

namespace {

constexpr std::size_t secretSize = 32;
// Volatile, or the compiler would compute the secret.
volatile unsigned char mask = 0xa5;

char secretByte(std::size_t i) { return static_cast<char>((0xc1 ^ (i * 7 & 0x3f) ^ mask) & 0x7f); }

// Whether one half of the secret stands there.
bool isHalf(const char* bytes, std::size_t begin) {
    for (std::size_t i = 0; i < secretSize / 2; ++i) {
        if (bytes[i] != secretByte(begin + i)) return false;
    }
    return true;
}

int halvesIn(const std::vector<char>& bytes, std::size_t begin) {
    constexpr std::size_t half = secretSize / 2;
    const char first = secretByte(begin);
    const char* const end = bytes.data() + bytes.size();
    int count = 0;
    for (const char* at = bytes.data(); static_cast<std::size_t>(end - at) >= half; ++at) {
        const auto left = static_cast<std::size_t>(end - at) - half + 1;
        at = static_cast<const char*>(std::memchr(at, first, left));
        if (at == nullptr) break;
        if (isHalf(at, begin)) ++count;
    }
    return count;
}

struct Area {
    unsigned long begin;
    unsigned long end;
};

// The areas of memory that the process may write to.
std::vector<Area> writableAreas() {
    // A larger one is a sanitizer's own, and holds no bytes of the program.
    constexpr unsigned long largest = 1ul << 30;
    std::vector<Area> areas;
    std::FILE* maps = std::fopen("/proc/self/maps", "re");
    char line[4096];
    while (std::fgets(line, sizeof line, maps) != nullptr) {
        Area area{};
        char access[5] = "";
        if (std::sscanf(line, "%lx-%lx %4s", &area.begin, &area.end, access) != 3) continue;
        if (access[1] == 'w' && area.end - area.begin <= largest) areas.push_back(area);
    }
    std::fclose(maps);
    return areas;
}

// The runs of pages that are in memory or swapped out: others have never been written to.
std::vector<Area> pagesOf(const Area& area, int pageMap) {
    constexpr unsigned long page = 4096;
    constexpr std::uint64_t isThere = std::uint64_t{3} << 62;
    std::vector<std::uint64_t> entries((area.end - area.begin) / page);
    const auto offset = static_cast<off_t>(area.begin / page * sizeof entries[0]);
    const ssize_t size =
        ::pread(pageMap, entries.data(), entries.size() * sizeof entries[0], offset);
    // Without the map, all of it.
    if (size != static_cast<ssize_t>(entries.size() * sizeof entries[0])) return {area};
    std::vector<Area> runs;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const unsigned long at = area.begin + i * page;
        if ((entries[i] & isThere) == 0) continue;
        if (runs.empty() || runs.back().end != at) runs.push_back({at, at});
        runs.back().end += page;
    }
    return runs;
}

}  // namespace

Optrella::Platform::Password secret() {
    Optrella::Platform::Password password;
    for (std::size_t i = 0; i < secretSize; ++i) {
        const char byte = secretByte(i);
        static_cast<void>(password.append({&byte, 1}));
    }
    return password;
}

std::string secretInHex() {
    std::string text;
    for (std::size_t i = 0; i < secretSize; ++i) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned>(secretByte(i)));
        text += digits;
    }
    return text;
}

int secretsInMemory() {
    constexpr std::size_t chunk = std::size_t{1} << 20;
    const int memory = ::open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
    const int pageMap = ::open("/proc/self/pagemap", O_RDONLY | O_CLOEXEC);
    std::vector<Area> runs;
    for (const Area& area : writableAreas()) {
        for (const Area& run : pagesOf(area, pageMap)) runs.push_back(run);
    }
    int count = 0;
    std::vector<char> bytes;
    bytes.reserve(chunk + secretSize);
    for (const Area& run : runs) {
        // Chunks overlap, so that no half is cut.
        for (unsigned long at = run.begin; at < run.end; at += chunk) {
            bytes.resize(std::min<std::size_t>(chunk + secretSize / 2 - 1, run.end - at));
            const ssize_t size =
                ::pread(memory, bytes.data(), bytes.size(), static_cast<off_t>(at));
            bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
            count += halvesIn(bytes, 0) + halvesIn(bytes, secretSize / 2);
            std::fill(bytes.begin(), bytes.end(), '\0');
        }
    }
    ::close(pageMap);
    ::close(memory);
    return count;
}

}  // namespace Tests
