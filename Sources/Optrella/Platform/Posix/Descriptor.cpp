#include "Optrella/Platform/Descriptor.hpp"

#include <unistd.h>

namespace Optrella::Platform {

void Descriptor::close() noexcept {
    if (isOpen()) ::close(std::exchange(number_, -1));
}

}  // namespace Optrella::Platform
