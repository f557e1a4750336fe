// TextBlock.hpp - copies of strings, as texts that share one block of the heap.

#ifndef OPTRELLA_TEXT_TEXTBLOCK_HPP
#define OPTRELLA_TEXT_TEXTBLOCK_HPP

#include <cstddef>
#include <span>
#include <string_view>

#include "Optrella/Export.hpp"
#include "Optrella/Text.hpp"

namespace Optrella::Internal {

// The block lives as long as this, a copy of it, or a copy of one of its texts.
class OPTRELLA_API TextBlock {
public:
    // Holds no texts.
    TextBlock() noexcept = default;
    // Copies the strings with one heap call. STOPS the process when one is a null pointer.
    explicit TextBlock(std::span<const char* const> strings) noexcept { copy(strings); }
    explicit TextBlock(std::span<const std::string_view> strings) noexcept { copy(strings); }
    // Copies share the block. Moving copies: texts() stays good.
    TextBlock(const TextBlock&) = default;
    TextBlock& operator=(const TextBlock&) = default;
    ~TextBlock() = default;

    [[nodiscard]] std::span<const Text> texts() const noexcept { return {texts_, count_}; }

private:
    template <class String>
    void copy(std::span<const String> strings) noexcept;

    Text owner_;  // a copy of one of the texts: it keeps the block
    const Text* texts_ = nullptr;
    std::size_t count_ = 0;
};

}  // namespace Optrella::Internal

#endif
