// Text.hpp - texts that share one block of the heap.

#ifndef OPTRELLA_INTERNAL_TEXT_HPP
#define OPTRELLA_INTERNAL_TEXT_HPP

#include <cstddef>
#include <span>

#include "Optrella/Text.hpp"

namespace Optrella::Internal {

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
