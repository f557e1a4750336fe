#include "Optrella/Platform/Worker.hpp"

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>

#include <algorithm>
#include <cerrno>

namespace Optrella::Platform {

namespace {

struct Job {
    void (*work)(void* context);
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
    const Job job = *static_cast<Job*>(argument);
    leaveRealTime();
    lowerPriority();
    job.work(job.context);
    return nullptr;
}

}  // namespace

bool runOnWorker(void (*work)(void* context), void* context) {
    Job job{work, context};
    pthread_t thread;
    if (::pthread_create(&thread, nullptr, callWork, &job) != 0) return false;
    // Waits for the end of the thread, whenever that comes, and is never interrupted by a signal.
    ::pthread_join(thread, nullptr);
    return true;
}

}  // namespace Optrella::Platform
