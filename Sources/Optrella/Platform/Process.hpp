// Process.hpp - the process's own matters.

#ifndef OPTRELLA_PLATFORM_PROCESS_HPP
#define OPTRELLA_PLATFORM_PROCESS_HPP

#include <optional>
#include <string>

namespace Optrella::Platform {

// Returns the identifier of the bundle that the process runs from, nothing where there is none.
[[nodiscard]] std::optional<std::string> bundleIdentifier();

// Returns the process's environment as it is now, null at its end.
[[nodiscard]] char** environment() noexcept;

}  // namespace Optrella::Platform

#endif
