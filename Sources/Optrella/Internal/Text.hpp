// Text.hpp - what a text tells at sight, and texts that share one block of the heap.

#ifndef OPTRELLA_INTERNAL_TEXT_HPP
#define OPTRELLA_INTERNAL_TEXT_HPP

#include <cstddef>
#include <cstdint>
#include <span>

#include "Optrella/Text.hpp"

namespace Optrella::Internal {

// What one text tells before anyone looks at its bytes, for a comparison with many.
class AtSight {
public:
    explicit AtSight(const Text& text) noexcept : description_(text.description_) {}

    // Some bits of a hash of the bytes: ASCII texts that differ in them are not equal.
    [[nodiscard]] unsigned fingerprint() const noexcept {
        return static_cast<unsigned>(description_ >> Text::fingerprintPlace) &
               ((1U << Text::fingerprintSize) - 1);
    }
    // Whether it is known that both are not equal.
    [[nodiscard]] bool differsFrom(const Text& other) const noexcept {
        return Text::differAtSight(description_, other.description_);
    }

private:
    std::uint64_t description_;
};

// Copies of C strings, all from one heap call. The block lives as long as this or a copy of one of
// its texts. STOPS the process when one of the strings is a null pointer.
class TextBlock {
public:
    explicit TextBlock(std::span<const char* const> strings);
    TextBlock(const TextBlock&) = delete;
    TextBlock& operator=(const TextBlock&) = delete;
    ~TextBlock();

    [[nodiscard]] std::span<const Text> texts() const noexcept { return {texts_, count_}; }

private:
    void* block_;
    Text* texts_;
    std::size_t count_;
};

}  // namespace Optrella::Internal

#endif
