// StringBuilder.hpp - text that is built of many small pieces.
//
// For a listing of thousands of them: each piece of a std::string is a call into the standard
// library, here a few instructions. Without memory the process ends at once.

#ifndef OPTRELLA_TEXT_STRINGBUILDER_HPP
#define OPTRELLA_TEXT_STRINGBUILDER_HPP

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>

#include "Optrella/Text/ShortBytes.hpp"

namespace Optrella::Internal {

class StringBuilder {
public:
    [[nodiscard]] operator std::string_view() const noexcept { return from(0); }

    // Appends literals, and whatever is a text.
    template <class... Pieces>
    void append(const Pieces&... pieces) noexcept {
        const std::size_t size = (viewOf(pieces).size() + ...);
        if (static_cast<std::size_t>(limit_ - end_) < size) makeRoomFor(size);
        char* end = end_;
        ((end = copyBytes(viewOf(pieces), end)), ...);
        end_ = end;
    }
    // Returns the number of bytes, and those from a place on. REQUIRES: begin <= size().
    [[nodiscard]] std::size_t size() const noexcept {
        return static_cast<std::size_t>(end_ - bytes_.get());
    }
    [[nodiscard]] std::string_view from(std::size_t begin) const noexcept {
        return {bytes_.get() + begin, size() - begin};
    }
    // Takes the last bytes away. REQUIRES: count <= size().
    void removeLast(std::size_t count) noexcept { end_ -= count; }
    void clear() noexcept { end_ = bytes_.get(); }

private:
    template <std::size_t N>
    static constexpr std::string_view viewOf(const char (&literal)[N]) noexcept {
        return {literal, N - 1};
    }
    static constexpr std::string_view viewOf(std::string_view text) noexcept { return text; }

    // Apart, because it is rare, and many functions append.
    [[gnu::noinline]] void makeRoomFor(std::size_t size) noexcept {
        const auto room = 2 * static_cast<std::size_t>(limit_ - bytes_.get());
        const std::size_t needed = this->size() + size;
        std::unique_ptr<char[]> larger(new char[std::max(room, needed)]);
        end_ = std::copy_n(bytes_.get(), this->size(), larger.get());
        limit_ = larger.get() + std::max(room, needed);
        bytes_ = std::move(larger);
    }

    std::unique_ptr<char[]> bytes_;
    char* end_ = nullptr;
    char* limit_ = nullptr;
};

}  // namespace Optrella::Internal

#endif
