// Process.hpp - the process's own matters.

#ifndef OPTRELLA_PLATFORM_PROCESS_HPP
#define OPTRELLA_PLATFORM_PROCESS_HPP

#include <optional>
#include <string>
#include <string_view>

namespace Optrella::Platform {

// The identifier of the bundle that the process runs from, nothing where there is none.
[[nodiscard]] std::optional<std::string> bundleIdentifier();

// The process's environment as it is now, null at its end.
[[nodiscard]] char** environment() noexcept;

// Writes all of the bytes straight to descriptor 2; gives up silently when a write fails. A closed
// pipe strikes with SIGPIPE, as it does in any program.
void writeStandardError(std::string_view bytes) noexcept;

}  // namespace Optrella::Platform

#endif
