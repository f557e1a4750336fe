#include "Optrella/Platform/Password.hpp"

#include <sys/mman.h>

#include <cstring>
#include <utility>

namespace Optrella::Platform {

namespace {

// Whole pages: what is kept out of dumps and swap must hold nothing else, and what holds nothing
// else leaves the process for good when it is given back.
char* newPages() noexcept {
    constexpr int none = -1;
    void* pages = ::mmap(nullptr, Password::capacity, PROT_READ | PROT_WRITE,
                         MAP_PRIVATE | MAP_ANONYMOUS, none, 0);
    if (pages == MAP_FAILED) return nullptr;
    keepOutOfDumps(pages, Password::capacity);
    // Fails where the user may lock no more; the password is then as safe as any other memory.
    static_cast<void>(::mlock(pages, Password::capacity));
    return static_cast<char*>(pages);
}

// The compiler must take it that the pointer may have changed: a plain memset of memory that nobody
// reads again could be left out.
void* (*volatile const fill)(void*, int, std::size_t) = std::memset;

}  // namespace

Password::Password() noexcept = default;

Password::Password(Password&& other) noexcept
    : memory_(std::exchange(other.memory_, nullptr)), size_(std::exchange(other.size_, 0)) {}

Password& Password::operator=(Password&& other) noexcept {
    Password taken(std::move(other));
    std::swap(memory_, taken.memory_);
    std::swap(size_, taken.size_);
    return *this;
}

Password::~Password() {
    if (memory_ == nullptr) return;
    wipe();
    ::munmap(memory_, capacity);
}

bool Password::append(std::string_view bytes) noexcept {
    if (bytes.empty()) return true;
    const std::span<char> rest = room();
    if (bytes.size() > rest.size()) return false;
    std::memcpy(rest.data(), bytes.data(), bytes.size());
    extend(bytes.size());
    return true;
}

std::span<char> Password::room() noexcept {
    if (memory_ == nullptr) memory_ = newPages();
    if (memory_ == nullptr) return {};
    return {memory_ + size_, capacity - size_};
}

void Password::wipe() noexcept {
    if (memory_ != nullptr) overwrite(memory_, capacity);
    size_ = 0;
}

void overwrite(void* memory, std::size_t size) noexcept { fill(memory, 0, size); }

}  // namespace Optrella::Platform
