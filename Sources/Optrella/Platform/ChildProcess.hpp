// ChildProcess.hpp - run another program: feed it, relay what it writes, wait for its end.

#ifndef OPTRELLA_PLATFORM_CHILDPROCESS_HPP
#define OPTRELLA_PLATFORM_CHILDPROCESS_HPP

#include <span>
#include <string>
#include <string_view>

#include "Optrella/Platform/Password.hpp"

namespace Optrella::Platform {

// Where the blocks of a child's output go, in their order and never an empty one. Called on one
// thread, which is not the one that waits; signals that are sent to the process stay away from it.
struct BlockHandler {
    void (*handle)(void* context, std::string_view block);
    void* context;
};

// Starts `program`, a path that is not searched for, with these arguments after its name. The
// child inherits the environment, the working directory and the process group; signals that are
// ignored stay so, all others are at their defaults, and none is blocked. Writes `input` to its
// standard input in one write, wipes it, and closes that pipe. Standard output and standard error
// share a second pipe; what one read of it brings, 64 KiB at most, is one block.
//
// Returns when the child has ended, however it did, and what stood in the pipe by then has been
// handled; it does not wait for others who hold the pipe open. False when the child could not be
// started: nothing was handled then, and `input` is wiped too. One at a time in a process.
[[nodiscard]] bool runChild(const char* program, std::span<const std::string> arguments,
                            Password input, BlockHandler handler);

}  // namespace Optrella::Platform

#endif
