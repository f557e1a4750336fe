#include "Optrella/Platform/OwnProgram.hpp"

#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <linux/magic.h>
#include <sys/auxv.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cstdint>
#include <utility>

namespace Optrella::Platform {

namespace {

constexpr const char* running = "/proc/self/exe";

// Where the headers of the file are that the kernel has started. From the kernel itself: a loader
// that was started with the program as its argument may have changed what the C library tells.
std::uintptr_t headersOfTheStart() {
    const int file = ::open("/proc/self/auxv", O_RDONLY | O_CLOEXEC);
    if (file < 0) return 0;
    std::uintptr_t headers = 0;
    for (ElfW(auxv_t) entry; ::read(file, &entry, sizeof entry) == sizeof entry;) {
        if (entry.a_type == AT_PHDR) headers = entry.a_un.a_val;
    }
    ::close(file);
    return headers;
}

// Where those of the program are: it is listed first.
std::uintptr_t headersOfTheProgram() {
    std::uintptr_t headers = 0;
    const auto takeFirst = [](dl_phdr_info* object, std::size_t, void* first) {
        *static_cast<std::uintptr_t*>(first) = reinterpret_cast<std::uintptr_t>(object->dlpi_phdr);
        return 1;
    };
    ::dl_iterate_phdr(takeFirst, &headers);
    return headers;
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
    const std::uintptr_t headers = headersOfTheStart();
    if (headers == 0 || headers != headersOfTheProgram()) return std::nullopt;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): that is how the kernel tells it
    const auto* name = reinterpret_cast<const char*>(::getauxval(AT_EXECFN));
    std::string startedAs = name != nullptr ? name : "";
    if (isOfOneProcess(startedAs)) startedAs.clear();
    return ProgramFile{std::move(startedAs), target(running), running};
}

}  // namespace Optrella::Platform
