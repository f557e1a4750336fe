#include "Optrella/Platform/OwnProgram.hpp"

#include <elf.h>
#include <link.h>
#include <linux/magic.h>
#include <sys/auxv.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cstddef>
#include <utility>

namespace Optrella::Platform {

namespace {

constexpr const char* running = "/proc/self/exe";

// Whether the kernel has started a loader that was given the program as an argument: the program
// asks for a loader, and the kernel has loaded none for the file that it has started.
bool isStartedByLoader() {
    bool asksForLoader = false;
    const auto lookAtProgram = [](dl_phdr_info* program, std::size_t, void* asks) {
        for (int i = 0; i < program->dlpi_phnum; ++i) {
            if (program->dlpi_phdr[i].p_type == PT_INTERP) *static_cast<bool*>(asks) = true;
        }
        return 1;  // it is listed first
    };
    ::dl_iterate_phdr(lookAtProgram, &asksForLoader);
    return asksForLoader && ::getauxval(AT_BASE) == 0;
}

std::string target(const char* link) {
    std::string path(256, '\0');
    for (;;) {
        const ssize_t size = ::readlink(link, path.data(), path.size());
        if (size < 0) return {};
        if (static_cast<std::size_t>(size) < path.size()) {
            path.resize(static_cast<std::size_t>(size));
            return path;
        }
        path.resize(path.size() * 2);
    }
}

// Whether the path, or a link that it leads to, means another file to every process: sudo would
// start itself by /proc/self/exe.
bool isOfOneProcess(std::string path) {
    for (int links = 0; links < 40; ++links) {  // as many as the system follows
        const std::string directory = path.substr(0, path.rfind('/') + 1);
        struct statfs system {};
        if (::statfs(directory.empty() ? "." : directory.c_str(), &system) == 0 &&
            system.f_type == PROC_SUPER_MAGIC) {
            return true;
        }
        const std::string next = target(path.c_str());
        if (next.empty()) return false;
        path = next.starts_with('/') ? next : directory + next;
    }
    return true;
}

}  // namespace

std::optional<ProgramFile> programFile() {
    if (isStartedByLoader()) return std::nullopt;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): that is how the kernel tells it
    const auto* name = reinterpret_cast<const char*>(::getauxval(AT_EXECFN));
    std::string startedAs = name != nullptr ? name : "";
    if (isOfOneProcess(startedAs)) startedAs.clear();
    return ProgramFile{std::move(startedAs), target(running), running};
}

}  // namespace Optrella::Platform
