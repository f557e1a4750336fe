#include "Optrella/Platform/OwnProgram.hpp"

#include <libproc.h>
#include <mach-o/dyld.h>
#include <unistd.h>

#include <cstdint>

namespace Optrella::Platform {

namespace {

// The path that the system was given: its link, if it was one.
std::string startedAs() {
    std::string path(PROC_PIDPATHINFO_MAXSIZE, '\0');
    auto size = static_cast<std::uint32_t>(path.size());
    if (_NSGetExecutablePath(path.data(), &size) != 0) return {};
    path.resize(path.find('\0'));
    return path;
}

}  // namespace

std::optional<ProgramFile> programFile() {
    std::string path(PROC_PIDPATHINFO_MAXSIZE, '\0');
    const int size =
        ::proc_pidpath(::getpid(), path.data(), static_cast<std::uint32_t>(path.size()));
    if (size <= 0) return std::nullopt;
    path.resize(static_cast<std::size_t>(size));
    // There is no name that outlives the path: where another file stands there now, it is taken.
    return ProgramFile{startedAs(), path, path};
}

}  // namespace Optrella::Platform
