// Process.hpp - the process's own matters.

#ifndef OPTRELLA_PLATFORM_PROCESS_HPP
#define OPTRELLA_PLATFORM_PROCESS_HPP

#include <optional>
#include <span>
#include <string>

namespace Optrella::Platform {

// Returns the identifier of the bundle that the process runs from, nothing where there is none.
[[nodiscard]] std::optional<std::string> bundleIdentifier();

// Returns the process's environment as it is now, null at its end.
[[nodiscard]] char** environment() noexcept;

// Returns the value of a variable of the environment, nothing when there is none, and removes it:
// programs that are started from now on do not get it. Not while another thread reads the
// environment.
[[nodiscard]] std::optional<std::string> takeVariable(const char* name);

// Returns whether the process has the rights of root: by its effective user.
[[nodiscard]] bool hasRightsOfRoot() noexcept;

// Puts another program in the place of this one, with these arguments (its name first). It keeps
// the process, its streams, terminal, directory and environment; it gets the signal mask that the
// process was started with, and what waits in C's `stdout` is written before. `program` is a path
// that is not searched for. Returns only when that was not possible: the system's number for why.
[[nodiscard]] int replaceProcess(const char* program, std::span<const std::string> arguments);

}  // namespace Optrella::Platform

#endif
