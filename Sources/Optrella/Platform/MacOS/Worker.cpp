#include "Optrella/Platform/Worker.hpp"

#include <CoreFoundation/CoreFoundation.h>
#include <dispatch/dispatch.h>

#include <atomic>
#include <utility>

#include "Optrella/Platform/MacOS/Owned.hpp"

namespace Optrella::Platform {

namespace {

// Stands in the caller's frame until its end is said.
struct AwaitedWork {
    void (*call)(void* context);
    void* context;
    CFRunLoopRef loop;
    CFRunLoopSourceRef source = nullptr;
    std::atomic<bool> hasEnded{false};
};

// What this thread waits for: its loop may call code that waits for another piece of work.
thread_local const AwaitedWork* awaited = nullptr;

extern "C" void stopLoop(void* work) { CFRunLoopStop(static_cast<const AwaitedWork*>(work)->loop); }

// An exception must not reach the queue: it ends the process, as one that leaves a thread does.
extern "C" void callWork(void* argument) noexcept {
    AwaitedWork& work = *static_cast<AwaitedWork*>(argument);
    work.call(work.context);
    const Owned<CFRunLoopRef> loop = coOwned(work.loop);
    const Owned<CFRunLoopSourceRef> source = coOwned(work.source);
    // From here on the caller may be gone, and the work with it.
    work.hasEnded = true;
    CFRunLoopSourceSignal(source.get());
    CFRunLoopWakeUp(loop.get());
}

}  // namespace

// The worker does not stop the caller's loop itself: a loop that does not run yet would not notice.
// It wakes a source on that loop, which keeps until the loop runs, and which keeps a loop without
// anything else on it from returning at once.
bool runOnWorker(void (*work)(void* context), void* context) {
    AwaitedWork piece{work, context, CFRunLoopGetCurrent()};
    CFRunLoopSourceContext stop{};
    // Sources with the same information are the same source to a loop, which keeps one of them.
    stop.info = &piece;
    stop.perform = stopLoop;
    const Owned<CFRunLoopSourceRef> source(CFRunLoopSourceCreate(kCFAllocatorDefault, 0, &stop));
    if (!source) return false;
    piece.source = source.get();
    CFRunLoopAddSource(piece.loop, piece.source, kCFRunLoopDefaultMode);

    dispatch_async_f(dispatch_get_global_queue(QOS_CLASS_BACKGROUND, 0), &piece, callWork);
    const AwaitedWork* const outer = std::exchange(awaited, &piece);
    // Again and again: others may stop the loop too.
    constexpr CFTimeInterval forever = 1e10;
    while (!piece.hasEnded) CFRunLoopRunInMode(kCFRunLoopDefaultMode, forever, 0);
    awaited = outer;
    // Else a source that was not reached would stop the tool's own next run of the loop.
    CFRunLoopSourceInvalidate(piece.source);
    // The outer one's stop may have met this run of the loop instead of its own.
    if (outer != nullptr && outer->hasEnded) CFRunLoopSourceSignal(outer->source);
    return true;
}

}  // namespace Optrella::Platform
