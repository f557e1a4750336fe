// Password.hpp - the one place that a password lives in: it wipes itself.
//
// The bytes stand in memory of their own, which is kept out of core dumps and, as far as the system
// allows, out of swap; they are overwritten before it is given back. A password can be moved, never
// copied, printed or made into a text.

#ifndef OPTRELLA_PLATFORM_PASSWORD_HPP
#define OPTRELLA_PLATFORM_PASSWORD_HPP

#include <cstddef>
#include <span>
#include <string_view>

namespace Optrella::Platform {

class Password {
public:
    // Room for a terminal's longest line, even when every byte of it is replaced by three.
    static constexpr std::size_t capacity = std::size_t{4} * 4096;

    // Makes an empty one.
    Password() noexcept;
    Password(Password&& other) noexcept;
    Password& operator=(Password&& other) noexcept;
    Password(const Password&) = delete;
    Password& operator=(const Password&) = delete;
    ~Password();

    // Returns false, and appends nothing, when there is no room or no memory for it.
    [[nodiscard]] bool append(std::string_view bytes) noexcept;
    // Returns the memory after the bytes, none when there is no room or no memory. What is written
    // to its beginning becomes part of the password by extend(); so nothing is left anywhere else.
    [[nodiscard]] std::span<char> room() noexcept;
    // REQUIRES: room() has been called and has that size at least.
    void extend(std::size_t size) noexcept { size_ += size; }
    // Overwrites all of the memory; empty afterwards.
    void wipe() noexcept;

    [[nodiscard]] bool empty() const noexcept { return size_ == 0; }
    // Views the password until it is changed, moved or destroyed. REQUIRES: nobody copies it.
    [[nodiscard]] std::string_view bytes() const noexcept { return {memory_, size_}; }

private:
    char* memory_ = nullptr;
    std::size_t size_ = 0;
};

// Overwrites memory with zeros, which the compiler never leaves out: for what has to pass through
// other memory on its way.
void overwrite(void* memory, std::size_t size) noexcept;

// Keeps whole pages out of core dumps, where the system can do that.
void keepOutOfDumps(void* memory, std::size_t size) noexcept;

}  // namespace Optrella::Platform

#endif
