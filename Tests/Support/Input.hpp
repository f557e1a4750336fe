// Input.hpp - drawn bytes, read as what a test needs.

#ifndef OPTRELLA_TESTS_SUPPORT_INPUT_HPP
#define OPTRELLA_TESTS_SUPPORT_INPUT_HPP

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Tests {

// Reads from the front. After the end there are zeros.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size)
        : rest_(reinterpret_cast<const char*>(data), size) {}

    [[nodiscard]] bool empty() const { return rest_.empty(); }
    std::uint8_t byte() {
        if (rest_.empty()) return 0;
        const char first = rest_.front();
        rest_.remove_prefix(1);
        return static_cast<std::uint8_t>(first);
    }
    // 0 to `most`.
    std::size_t upTo(std::size_t most) { return byte() % (most + 1); }
    bool flag() { return byte() % 2 != 0; }
    // Fewer where there are no more.
    std::string bytes(std::size_t count) {
        const std::string taken(rest_.substr(0, count));
        rest_.remove_prefix(taken.size());
        return taken;
    }
    std::string rest() { return bytes(rest_.size()); }

private:
    std::string_view rest_;
};

}  // namespace Tests

#endif
