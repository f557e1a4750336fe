#include "Optrella/Text.hpp"

#include <bit>
#include <cstring>
#include <new>
#include <span>
#include <string>

#include "Optrella/Text/Shared.hpp"
#include "Optrella/Text/TextBlock.hpp"
#include "Optrella/Text/Unicode.hpp"

namespace Optrella {

namespace {

using Internal::TextDigest;

// What a block of the heap begins with. Of a text there stand, one after the other: its distance
// from the block's beginning, its bytes, zeros up to the end of the last word.
struct alignas(Text) Block {
    Internal::OwnerCount owners;
};
using Distance = std::size_t;

constexpr std::size_t roomFor(std::size_t size) noexcept {
    return sizeof(Distance) + (size / TextDigest::wordSize + 1) * TextDigest::wordSize;
}

Block* newBlock(std::size_t roomForTexts) {
    return ::new (::operator new(sizeof(Block) + roomForTexts)) Block{};
}

Block* blockOf(const char* bytes) noexcept {
    Distance distance;
    std::memcpy(&distance, bytes - sizeof distance, sizeof distance);
    void* block = const_cast<char*>(bytes) - distance;
    return static_cast<Block*>(block);
}

void releaseBlock(Block* block) noexcept {
    if (block->owners.drop()) ::operator delete(block);
}

std::uint64_t littleEndian(std::uint64_t word) noexcept {
    return std::endian::native == std::endian::big ? __builtin_bswap64(word) : word;
}

// The word that the bytes make, with zeros after them. Without a call, since most arguments are as
// short. REQUIRES: fewer than in a word.
std::uint64_t lastWord(const char* bytes, std::size_t size) noexcept {
    char padded[TextDigest::wordSize] = {};
    std::size_t done = 0;
    if ((size & 4) != 0) {
        std::memcpy(padded, bytes, 4);
        done = 4;
    }
    if ((size & 2) != 0) {
        std::memcpy(padded + done, bytes + done, 2);
        done += 2;
    }
    if ((size & 1) != 0) padded[done] = bytes[done];
    std::uint64_t word;
    std::memcpy(&word, padded, sizeof word);
    return word;
}

// Copies the bytes, with zeros up to the end of the last word, and returns their digest.
[[gnu::always_inline]] inline TextDigest copyAndDigest(std::string_view bytes,
                                                       char* place) noexcept {
    constexpr std::size_t wordSize = TextDigest::wordSize;
    TextDigest::Builder builder;
    const char* from = bytes.data();
    std::size_t left = bytes.size();
    for (; left >= wordSize; left -= wordSize, from += wordSize, place += wordSize) {
        std::uint64_t word;
        std::memcpy(&word, from, wordSize);
        std::memcpy(place, &word, wordSize);
        builder.add(littleEndian(word));
    }
    const std::uint64_t word = lastWord(from, left);
    std::memcpy(place, &word, wordSize);
    if (left > 0) builder.add(littleEndian(word));
    return builder.digest(bytes.size(), true);
}

const char* bytesOf(const char* string) noexcept { return string; }
// A view of nothing need not have bytes.
const char* bytesOf(std::string_view string) noexcept {
    return string.empty() ? "" : string.data();
}

}  // namespace

namespace Internal {

void fatalStop() noexcept { __builtin_trap(); }
void textLiteralHoldsNUL() noexcept { fatalStop(); }

}  // namespace Internal

Text::Text(void* block, char* place, std::string_view bytes) noexcept
    : bytes_(place + sizeof(Distance)), digest_(copyAndDigest(bytes, place + sizeof(Distance))) {
    const auto distance = static_cast<Distance>(bytes_ - static_cast<char*>(block));
    std::memcpy(place, &distance, sizeof distance);
}

Text::Text(std::string_view bytes, CopyOf) noexcept {
    if (bytes.empty()) return;
    Block* block = newBlock(roomFor(bytes.size()));
    *this = Text(block, reinterpret_cast<char*>(block + 1), bytes);
}

void Text::retain(const char* bytes) noexcept { blockOf(bytes)->owners.add(); }
void Text::release(const char* bytes) noexcept { releaseBlock(blockOf(bytes)); }

std::string Text::str() const noexcept { return {c_str(), size()}; }

bool Text::equal(std::string_view left, std::string_view right) noexcept {
    return Internal::isCanonicallyEqual(left, right);
}

// The owners first, then the texts, then the bytes of each. The texts in the block need not be
// destroyed: they are no owners, only their copies are.
template <class String>
void Internal::TextBlock::copy(std::span<const String> strings) noexcept {
    if (strings.empty()) return;
    count_ = strings.size();
    // Few strings, as most tools have arguments, are measured once.
    constexpr std::size_t few = 32;
    const bool areFew = count_ <= few;
    std::size_t sizes[few];
    std::size_t room = count_ * sizeof(Text);
    for (std::size_t i = 0; i < count_; ++i) {
        const std::size_t size = viewOf(strings[i]).size();
        if (areFew) sizes[i] = size;
        room += roomFor(size);
    }
    Block* block = newBlock(room);
    Text* texts = reinterpret_cast<Text*>(block + 1);
    texts_ = texts;
    char* place = reinterpret_cast<char*>(texts + count_);
    for (std::size_t i = 0; i < count_; ++i) {
        const std::size_t size = areFew ? sizes[i] : viewOf(strings[i]).size();
        ::new (texts + i) Text(block, place, {bytesOf(strings[i]), size});
        place += roomFor(size);
    }
    // Takes over the owner that a new block has. There is a text.
    owner_.bytes_ = texts_->bytes_;  // NOLINT(clang-analyzer-core.uninitialized.Assign)
    owner_.digest_ = texts_->digest_;
}

template void Internal::TextBlock::copy(std::span<const char* const> strings) noexcept;
template void Internal::TextBlock::copy(std::span<const std::string_view> strings) noexcept;

}  // namespace Optrella

std::size_t std::hash<Optrella::Text>::operator()(const Optrella::Text& text) const noexcept {
    return Optrella::Internal::canonicalHash(text);
}
