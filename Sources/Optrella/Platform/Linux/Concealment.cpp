#include "Optrella/Platform/Concealment.hpp"

#include <sys/prctl.h>

namespace Optrella::Platform {

// The kernel asks for the same thing before it writes a core dump and before it lets somebody into
// /proc/PID/mem and /proc/PID/fd. A third state, which only the administrator can choose, counts as
// closed.
bool isInspectable() noexcept { return ::prctl(PR_GET_DUMPABLE) == 1; }

void setInspectable(bool isInspectable) noexcept {
    static_cast<void>(::prctl(PR_SET_DUMPABLE, isInspectable ? 1L : 0L));
}

}  // namespace Optrella::Platform
