#include <sys/mman.h>

#include "Optrella/Platform/Password.hpp"

namespace Optrella::Platform {

void keepOutOfDumps(void* memory, std::size_t size) noexcept {
    static_cast<void>(::madvise(memory, size, MADV_DONTDUMP));
}

}  // namespace Optrella::Platform
