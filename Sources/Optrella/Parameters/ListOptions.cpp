#include <memory>
#include <new>

#include "Optrella/Parameters.hpp"
#include "Optrella/Text/Shared.hpp"

namespace Optrella {

namespace {

// Stands before the options, in one block with them.
struct alignas(ParameterNone) Block {
    Internal::OwnerCount owners;
};

Block* blockOf(const ParameterNone* first) noexcept {
    return reinterpret_cast<Block*>(const_cast<ParameterNone*>(first)) - 1;
}

}  // namespace

void Internal::constantListTakesANamedArrayOfChoices() noexcept { fatalStop(); }

template <class Source>
void ListOptions::copy(std::span<const Source> sources) noexcept {
    if (sources.empty()) return;
    void* room = ::operator new(sizeof(Block) + sources.size() * sizeof(ParameterNone));
    auto* options = reinterpret_cast<ParameterNone*>(::new (room) Block{} + 1);
    first_ = options;
    size_ = static_cast<std::uint32_t>(sources.size());
    isShared_ = true;
    for (const Source& source : sources) {
        if constexpr (std::is_same_v<Source, Text>) {
            ::new (options++) ParameterNone(source, Text());
        } else {
            ::new (options++) ParameterNone(source);
        }
    }
}

ListOptions::ListOptions(std::span<const ParameterNone> options) noexcept { copy(options); }
void ListOptions::copyList(std::initializer_list<ParameterNone> options) noexcept {
    copy(std::span(options.begin(), options.size()));
}
ListOptions::ListOptions(const std::vector<ParameterNone>& options) noexcept {
    copy(std::span(options));
}
void ListOptions::copyList(std::initializer_list<Text> firstTags) noexcept {
    copy(std::span(firstTags.begin(), firstTags.size()));
}

void ListOptions::retain() const noexcept { blockOf(first_)->owners.add(); }
void ListOptions::release() noexcept {
    Block* block = blockOf(first_);
    if (!block->owners.drop()) return;
    std::destroy_n(first_, size_);
    ::operator delete(block);
}

}  // namespace Optrella
