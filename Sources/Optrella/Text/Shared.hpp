// Shared.hpp - objects that copies of a value share: the one count of owners.

#ifndef OPTRELLA_TEXT_SHARED_HPP
#define OPTRELLA_TEXT_SHARED_HPP

#include <cstddef>
#include <utility>

#include "Optrella/Export.hpp"

namespace Optrella::Internal {

// The number of owners, one at first. They may live on several threads.
class OwnerCount {
public:
    void add() noexcept { __atomic_fetch_add(&owners_, 1, __ATOMIC_RELAXED); }
    // Returns whether that was the last owner.
    [[nodiscard]] bool drop() noexcept {
        return __atomic_fetch_sub(&owners_, 1, __ATOMIC_ACQ_REL) == 1;
    }

private:
    std::size_t owners_ = 1;
};

// What is shared begins with this.
struct Shared {
    void (*destroy)(Shared* shared) noexcept;
    OwnerCount owners = {};
};

// One of the owners of an object; the last of them destroys it.
class OPTRELLA_API SharedObject {
public:
    constexpr SharedObject() noexcept = default;
    // Owns a new object; null is none.
    explicit SharedObject(Shared* object) noexcept : object_(object) {}
    constexpr SharedObject(const SharedObject& other) noexcept : object_(other.object_) {
        if (object_ != nullptr) object_->owners.add();
    }
    constexpr SharedObject(SharedObject&& other) noexcept
        : object_(std::exchange(other.object_, nullptr)) {}
    SharedObject& operator=(SharedObject other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    constexpr ~SharedObject() {
        if (object_ != nullptr) release();
    }

    // Returns null when it owns none.
    [[nodiscard]] constexpr Shared* get() const noexcept { return object_; }

private:
    void release() noexcept;

    Shared* object_ = nullptr;
};

}  // namespace Optrella::Internal

#endif
