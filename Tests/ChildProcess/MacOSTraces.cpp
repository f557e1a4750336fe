#include <libproc.h>
#include <unistd.h>

#include "Traces.hpp"

namespace Tests {

std::string ownPath() {
    char path[PROC_PIDPATHINFO_MAXSIZE];
    const int size = ::proc_pidpath(::getpid(), path, sizeof path);
    return {path, static_cast<std::size_t>(size > 0 ? size : 0)};
}

std::size_t countThreads() {
    proc_taskinfo task{};
    ::proc_pidinfo(::getpid(), PROC_PIDTASKINFO, 0, &task, sizeof task);
    return static_cast<std::size_t>(task.pti_threadnum);
}

}  // namespace Tests
