#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "Traces.hpp"

namespace Tests {

std::string ownPath() {
    char path[4096];
    const ssize_t size = ::readlink("/proc/self/exe", path, sizeof path);
    return {path, static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
}

std::size_t countThreads() {
    const std::filesystem::directory_iterator threads("/proc/self/task");
    return static_cast<std::size_t>(std::distance(begin(threads), end(threads)));
}

}  // namespace Tests
