#include "Optrella/Text.hpp"

#include <atomic>
#include <bit>
#include <cstring>
#include <new>
#include <string>

#include "Optrella/Internal/Text.hpp"
#include "Optrella/Internal/Unicode.hpp"

namespace Optrella {

// ---- Shared blocks ----

namespace {

// A block begins with its number of owners.
struct alignas(Text) Block {
    std::atomic<std::size_t> owners;
};

void retainBlock(Block* block) noexcept { block->owners.fetch_add(1, std::memory_order_relaxed); }

void releaseBlock(Block* block) noexcept {
    if (block->owners.fetch_sub(1, std::memory_order_acq_rel) == 1) ::operator delete(block);
}

using Distance = std::size_t;

Block* blockOf(const char* bytes) noexcept {
    Distance distance;
    std::memcpy(&distance, bytes - sizeof distance, sizeof distance);
    return reinterpret_cast<Block*>(const_cast<char*>(bytes) - distance);
}

std::uint64_t wordAt(const char* bytes) noexcept {
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
    return word;
}

}  // namespace

namespace Internal {

void fatalStop() noexcept { __builtin_trap(); }
void textLiteralHoldsNUL() noexcept { fatalStop(); }

}  // namespace Internal

Text::Text(void* block, char* place, std::string_view bytes) noexcept
    : bytes_(place + sizeof(Distance)) {
    char* copy = place + sizeof(Distance);
    const auto distance = static_cast<Distance>(copy - static_cast<char*>(block));
    std::memcpy(place, &distance, sizeof distance);
    std::memset(copy + bytes.size() / wordSize * wordSize, 0, wordSize);
    std::memcpy(copy, bytes.data(), bytes.size());
    Description description;
    for (std::size_t i = 0; i < bytes.size(); i += wordSize) description.add(wordAt(bytes_ + i));
    description_ = description.of(bytes.size()) | sharedFlag;
}

Text::Text(std::string_view bytes, CopyOf) {
    if (bytes.empty()) return;
    auto* block = ::new (::operator new(sizeof(Block) + roomFor(bytes.size()))) Block{1};
    *this = Text(block, reinterpret_cast<char*>(block + 1), bytes);
}

void Text::retain() const noexcept { retainBlock(blockOf(bytes_)); }
void Text::release() noexcept { releaseBlock(blockOf(bytes_)); }

std::string Text::str() const { return {bytes_, size()}; }

bool Text::equal(std::string_view left, std::string_view right) noexcept {
    return left == right || Internal::isCanonicallyEqual(left, right);
}

// The owners first, then the texts, then the bytes of each.
Internal::TextBlock::TextBlock(std::span<const char* const> strings) : count_(strings.size()) {
    std::size_t size = sizeof(Block) + count_ * sizeof(Text);
    for (const char* string : strings) size += Text::roomFor(Text::viewOf(string).size());
    auto* block = ::new (::operator new(size)) Block{1};
    block_ = block;
    texts_ = reinterpret_cast<Text*>(block + 1);
    char* place = reinterpret_cast<char*>(texts_ + count_);
    for (std::size_t i = 0; i < count_; ++i) {
        const std::string_view bytes = strings[i];
        ::new (texts_ + i) Text(block, place, bytes);
        place += Text::roomFor(bytes.size());
    }
}

// The texts need not be destroyed: they are no owners, only their copies are.
Internal::TextBlock::~TextBlock() { releaseBlock(static_cast<Block*>(block_)); }

}  // namespace Optrella

std::size_t std::hash<Optrella::Text>::operator()(const Optrella::Text& text) const noexcept {
    return Optrella::Internal::canonicalHash(text);
}
