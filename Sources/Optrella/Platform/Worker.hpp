// Worker.hpp - one piece of work on a low-priority thread, while the caller waits.

#ifndef OPTRELLA_PLATFORM_WORKER_HPP
#define OPTRELLA_PLATFORM_WORKER_HPP

namespace Optrella::Platform {

// Calls `work` with `context` on a thread other than the caller's, of lower priority, and returns
// when it has returned; what it wrote may then be read. Works on any thread, within a piece of
// work, and on several threads at once. False when no thread could be started: nothing was called.
[[nodiscard]] bool runOnWorker(void (*work)(void* context), void* context);

}  // namespace Optrella::Platform

#endif
