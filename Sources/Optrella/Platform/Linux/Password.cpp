#include "Optrella/Platform/Password.hpp"

#include <sys/mman.h>

namespace Optrella::Platform {

void keepOutOfDumps(void* memory, std::size_t size) noexcept {
    static_cast<void>(::madvise(memory, size, MADV_DONTDUMP));
}

}  // namespace Optrella::Platform
