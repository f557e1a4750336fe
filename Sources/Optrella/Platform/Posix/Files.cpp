#include "Optrella/Platform/Files.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace Optrella::Platform {

bool fileExists(const char* path) noexcept {
    struct stat status;
    return ::stat(path, &status) == 0;
}

bool isDirectory(const char* path) noexcept {
    struct stat status;
    return ::lstat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

std::optional<std::string> currentDirectory() {
    std::string path(256, '\0');
    while (::getcwd(path.data(), path.size()) == nullptr) {
        if (errno != ERANGE) return std::nullopt;
        path.resize(path.size() * 2);
    }
    path.resize(path.find('\0'));
    return path;
}

}  // namespace Optrella::Platform
