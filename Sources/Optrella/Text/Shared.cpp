#include "Optrella/Text/Shared.hpp"

namespace Optrella::Internal {

void SharedObject::release() noexcept {
    if (object_->owners.drop()) object_->destroy(object_);
}

}  // namespace Optrella::Internal
