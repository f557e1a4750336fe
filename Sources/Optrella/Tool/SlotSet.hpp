// SlotSet.hpp - a set of parameters of one declaration.

#ifndef OPTRELLA_TOOL_SLOTSET_HPP
#define OPTRELLA_TOOL_SLOTSET_HPP

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Optrella/Tool/Grammar.hpp"

namespace Optrella::Internal {

// Up to 64 without the heap, since searches copy and compare many.
class SlotSet {
public:
    [[nodiscard]] bool contains(Slot slot) const noexcept {
        const auto place = static_cast<std::size_t>(slot);
        if (place < bits) return (few_ >> place & 1) != 0;
        const std::size_t word = place / bits - 1;
        return word < more_.size() && (more_[word] >> place % bits & 1) != 0;
    }
    void insert(Slot slot) noexcept {
        const auto place = static_cast<std::size_t>(slot);
        if (place < bits) {
            few_ |= std::uint64_t{1} << place;
            return;
        }
        const std::size_t word = place / bits - 1;
        if (word >= more_.size()) more_.resize(word + 1);
        more_[word] |= std::uint64_t{1} << place % bits;
    }

    [[nodiscard]] bool empty() const noexcept { return few_ == 0 && more_.empty(); }

private:
    static constexpr std::size_t bits = 64;

    std::uint64_t few_ = 0;
    std::vector<std::uint64_t> more_;
};

}  // namespace Optrella::Internal

#endif
