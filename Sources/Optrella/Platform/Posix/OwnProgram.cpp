#include "Optrella/Platform/OwnProgram.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <string_view>

namespace Optrella::Platform {

namespace {

// Null when there was none. Never freed: it may be asked for until the process ends.
const char* directoryOfStart = nullptr;

// Before the tool can leave it.
[[gnu::constructor(101)]] void keepDirectory() { directoryOfStart = ::getcwd(nullptr, 0); }

// Empty where the directory is not known.
std::string absolute(std::string_view path) {
    if (path.starts_with('/')) return std::string(path);
    if (path.empty() || directoryOfStart == nullptr) return {};
    while (path.starts_with("./")) path.remove_prefix(2);
    std::string whole = directoryOfStart;
    if (!whole.ends_with('/')) whole += '/';
    return whole.append(path);
}

bool areSameFile(const std::string& left, const std::string& right) {
    struct stat one {};
    struct stat other {};
    return ::stat(left.c_str(), &one) == 0 && ::stat(right.c_str(), &other) == 0 &&
           one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

}  // namespace

std::optional<std::string> ownProgram() {
    const std::optional<ProgramFile> file = programFile();
    if (!file) return std::nullopt;
    for (const std::string& path : {absolute(file->startedAs), file->path}) {
        if (path.starts_with('/') && areSameFile(path, file->running)) return path;
    }
    return std::nullopt;
}

}  // namespace Optrella::Platform
