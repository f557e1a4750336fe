#include "Optrella/Platform/Process.hpp"

namespace Optrella::Platform {

std::optional<std::string> bundleIdentifier() { return std::nullopt; }

}  // namespace Optrella::Platform
