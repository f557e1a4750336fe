#include "Optrella/Platform/Worker.hpp"

#include <CoreFoundation/CoreFoundation.h>
#include <dispatch/dispatch.h>

#include <atomic>
#include <utility>

#include "Optrella/Platform/MacOS/Owned.hpp"

namespace Optrella::Platform {

namespace {

// Stands in the caller's frame until its end is said.
struct Job {
    void (*work)(void* context);
    void* context;
    CFRunLoopRef loop;
    CFRunLoopSourceRef source = nullptr;
    std::atomic<bool> hasEnded{false};
};

// What this thread waits for: its loop may call code that waits for another piece of work.
thread_local const Job* awaited = nullptr;

extern "C" void stopLoop(void* job) { CFRunLoopStop(static_cast<const Job*>(job)->loop); }

// An exception must not reach the queue: it ends the process, as one that leaves a thread does.
extern "C" void callWork(void* argument) noexcept {
    Job& job = *static_cast<Job*>(argument);
    job.work(job.context);
    const Owned<CFRunLoopRef> loop = coOwned(job.loop);
    const Owned<CFRunLoopSourceRef> source = coOwned(job.source);
    // From here on the caller may be gone, and the job with it.
    job.hasEnded = true;
    CFRunLoopSourceSignal(source.get());
    CFRunLoopWakeUp(loop.get());
}

}  // namespace

// The worker does not stop the caller's loop itself: a loop that does not run yet would not notice.
// It wakes a source on that loop, which keeps until the loop runs, and which keeps a loop without
// anything else on it from returning at once.
bool runOnWorker(void (*work)(void* context), void* context) {
    Job job{work, context, CFRunLoopGetCurrent()};
    CFRunLoopSourceContext stop{};
    // Sources with the same information are the same source to a loop, which keeps one of them.
    stop.info = &job;
    stop.perform = stopLoop;
    const Owned<CFRunLoopSourceRef> source(CFRunLoopSourceCreate(kCFAllocatorDefault, 0, &stop));
    if (!source) return false;
    job.source = source.get();
    CFRunLoopAddSource(job.loop, job.source, kCFRunLoopDefaultMode);

    dispatch_async_f(dispatch_get_global_queue(QOS_CLASS_BACKGROUND, 0), &job, callWork);
    const Job* const outer = std::exchange(awaited, &job);
    // Again and again: others may stop the loop too.
    constexpr CFTimeInterval forever = 1e10;
    while (!job.hasEnded) CFRunLoopRunInMode(kCFRunLoopDefaultMode, forever, 0);
    awaited = outer;
    // Else a source that was not reached would stop the tool's own next run of the loop.
    CFRunLoopSourceInvalidate(job.source);
    // The outer one's stop may have met this run of the loop instead of its own.
    if (outer != nullptr && outer->hasEnded) CFRunLoopSourceSignal(outer->source);
    return true;
}

}  // namespace Optrella::Platform
