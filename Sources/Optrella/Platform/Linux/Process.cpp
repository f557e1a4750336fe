#include "Optrella/Platform/Process.hpp"

#include <unistd.h>

namespace Optrella::Platform {

std::optional<std::string> bundleIdentifier() { return std::nullopt; }

char** environment() noexcept { return environ; }

}  // namespace Optrella::Platform
