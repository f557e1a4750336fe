#include "Optrella/Platform/Worker.hpp"

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>

namespace Optrella::Platform {

namespace {

struct Work {
    void (*call)(void* context);
    void* context;
};

// A thread begins with the caller's policy, and a real-time one knows no nice value.
void leaveRealTime() noexcept {
    constexpr pid_t thisThread = 0;
    const int policy = ::sched_getscheduler(thisThread);
    if (policy != SCHED_FIFO && policy != SCHED_RR) return;
    const sched_param none{};
    ::sched_setscheduler(thisThread, SCHED_OTHER, &none);
}

// The nice value belongs to the thread on Linux. A few steps only: the caller waits for this
// thread, which SCHED_IDLE or the lowest priority would starve on a busy machine.
void lowerPriority() noexcept {
    constexpr id_t thisThread = 0;
    constexpr int steps = 5;
    constexpr int lowest = 19;
    errno = 0;
    const int own = ::getpriority(PRIO_PROCESS, thisThread);
    if (errno == 0) ::setpriority(PRIO_PROCESS, thisThread, std::min(own + steps, lowest));
}

extern "C" void* callWork(void* argument) {
    const Work work = *static_cast<Work*>(argument);
    leaveRealTime();
    lowerPriority();
    work.call(work.context);
    return nullptr;
}

// At least as large as the main thread's is by default, whatever the C library would choose: some
// give a thread 2 MB where the process's own stack is not limited, others 128 KB. Where the process
// may not have so much memory, smaller ones are tried.
bool start(pthread_t& thread, Work& work) noexcept {
    constexpr std::size_t usual = std::size_t{8} << 20;
    constexpr std::size_t least = std::size_t{64} << 10;
    pthread_attr_t attributes;
    if (::pthread_attr_init(&attributes) != 0) return false;
    std::size_t size = 0;
    ::pthread_attr_getstacksize(&attributes, &size);
    bool isStarted = false;
    for (size = std::max(size, usual); size >= least && !isStarted; size /= 2) {
        isStarted = ::pthread_attr_setstacksize(&attributes, size) == 0 &&
                    ::pthread_create(&thread, &attributes, callWork, &work) == 0;
    }
    ::pthread_attr_destroy(&attributes);
    return isStarted;
}

}  // namespace

bool runOnWorker(void (*work)(void* context), void* context) {
    Work piece{work, context};
    pthread_t thread;
    if (!start(thread, piece)) return false;
    // Waits for the end of the thread, whenever that comes, and is never interrupted by a signal.
    ::pthread_join(thread, nullptr);
    return true;
}

}  // namespace Optrella::Platform
