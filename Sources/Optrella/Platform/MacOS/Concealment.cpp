#include "Optrella/Platform/Concealment.hpp"

namespace Optrella::Platform {

// There is no /proc to open descriptors through, and the system lets nobody but root and a debugger
// that the user has allowed look into another process; nothing is left to close. (PT_DENY_ATTACH
// cannot be taken back.) Core dumps are written only where the user has raised their limit.
bool isInspectable() noexcept { return false; }

void setInspectable(bool /*isInspectable*/) noexcept {}

}  // namespace Optrella::Platform
