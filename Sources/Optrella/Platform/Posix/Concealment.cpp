#include "Optrella/Platform/Concealment.hpp"

#include <mutex>

namespace Optrella::Platform {

namespace {

std::mutex mutex;
int concealments = 0;
bool wasInspectable = false;  // before the first of them

}  // namespace

Concealment::Concealment() noexcept {
    const std::scoped_lock lock(mutex);
    if (concealments++ > 0) return;
    wasInspectable = isInspectable();
    if (wasInspectable) setInspectable(false);
}

Concealment::~Concealment() {
    const std::scoped_lock lock(mutex);
    if (--concealments == 0 && wasInspectable) setInspectable(true);
}

}  // namespace Optrella::Platform
