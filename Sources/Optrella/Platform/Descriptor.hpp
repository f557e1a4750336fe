// Descriptor.hpp - a descriptor that closes itself, and pipes that no other program shall inherit.

#ifndef OPTRELLA_PLATFORM_DESCRIPTOR_HPP
#define OPTRELLA_PLATFORM_DESCRIPTOR_HPP

#include <optional>
#include <utility>

namespace Optrella::Platform {

class Descriptor {
public:
    // Owns the number; a negative one is none.
    explicit Descriptor(int number) noexcept : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor() { close(); }

    [[nodiscard]] bool isOpen() const noexcept { return number_ >= 0; }
    [[nodiscard]] int number() const noexcept { return number_; }
    void close() noexcept;

private:
    int number_;
};

struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;
};

// Closed in every program that is started, from the moment on which it exists where the system can
// make it so; else a program that another thread starts at that moment gets it. Nothing when the
// system has none to give.
[[nodiscard]] std::optional<Pipe> makePipe() noexcept;

}  // namespace Optrella::Platform

#endif
