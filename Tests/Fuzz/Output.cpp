#include "Output.hpp"

#include <sys/types.h>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace Tests {

namespace {

ssize_t append(void* kept, const char* bytes, std::size_t size) {
    static_cast<std::string*>(kept)->append(bytes, size);
    return static_cast<ssize_t>(size);
}

std::string& kept() {
    static std::string& bytes = *new std::string();
    static const bool isRedirected = [] {
        std::FILE* memory = ::fopencookie(&bytes, "w", {nullptr, append, nullptr, nullptr});
        // Large enough for a whole run, so that only a flush hands anything on.
        if (memory == nullptr || std::setvbuf(memory, nullptr, _IOFBF, 1 << 20) != 0) std::abort();
        stdout = memory;
        return true;
    }();
    static_cast<void>(isRedirected);
    return bytes;
}

}  // namespace

std::string takeHandedOn() { return std::exchange(kept(), {}); }

std::string takePrinted() {
    kept();
    std::fflush(stdout);
    return takeHandedOn();
}

}  // namespace Tests
