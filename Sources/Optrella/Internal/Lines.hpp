// Lines.hpp - text that is built of many small pieces.
//
// For a listing of thousands of them: each piece of a std::string is a call into the standard
// library, here a few instructions.

#ifndef OPTRELLA_INTERNAL_LINES_HPP
#define OPTRELLA_INTERNAL_LINES_HPP

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

namespace Optrella::Internal {

class Lines {
public:
    [[nodiscard]] operator std::string_view() const noexcept { return {bytes_.get(), size_}; }

    // Literals, and whatever is a text.
    template <class... Pieces>
    void append(const Pieces&... pieces) {
        const std::size_t size = (viewOf(pieces).size() + ...);
        if (room_ - size_ < size) makeRoomFor(size);
        char* end = bytes_.get() + size_;
        ((end = endOfCopy(viewOf(pieces), end)), ...);
        size_ += size;
    }
    // The number of bytes, and those behind the first few. REQUIRES: begin <= size().
    [[nodiscard]] std::size_t size() const noexcept { return size_; }
    [[nodiscard]] std::string_view from(std::size_t begin) const noexcept {
        return {bytes_.get() + begin, size_ - begin};
    }
    // REQUIRES: size <= size().
    void shorten(std::size_t size) noexcept { size_ -= size; }
    void clear() noexcept { size_ = 0; }

private:
    template <std::size_t N>
    static constexpr std::string_view viewOf(const char (&literal)[N]) noexcept {
        return {literal, N - 1};
    }
    static constexpr std::string_view viewOf(std::string_view text) noexcept { return text; }

    // Copies the piece.
    static char* endOfCopy(std::string_view piece, char* to) noexcept {
        if (!piece.empty()) std::memcpy(to, piece.data(), piece.size());
        return to + piece.size();
    }
    // Apart, because it is rare, and many functions append.
    [[gnu::noinline]] void makeRoomFor(std::size_t size) {
        room_ = std::max(2 * room_, size_ + size);
        std::unique_ptr<char[]> larger(new char[room_]);
        std::copy_n(bytes_.get(), size_, larger.get());
        bytes_ = std::move(larger);
    }

    std::unique_ptr<char[]> bytes_;
    std::size_t size_ = 0;
    std::size_t room_ = 0;
};

}  // namespace Optrella::Internal

#endif
