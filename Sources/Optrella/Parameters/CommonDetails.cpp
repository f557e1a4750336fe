#include "Optrella/Parameters/CommonDetails.hpp"

#include <cstdint>

namespace Optrella {

namespace Internal {

bool isSameDeclaration(const commonDetails& left, const commonDetails& right) noexcept {
    return left.tags == right.tags && left.tagHelp == right.tagHelp &&
           left.hasParameter == right.hasParameter;
}

}  // namespace Internal

namespace {

class Hasher {
public:
    explicit Hasher(std::uint64_t seed) noexcept : state_(seed) {}

    void feed(std::uint64_t value) noexcept {
        state_ ^= value + 0x9E3779B97F4A7C15 + (state_ << 6) + (state_ >> 2);
    }
    void feed(const Text& text) noexcept { feed(std::hash<Text>()(text)); }

    // Spreads every bit of the state over all of them.
    [[nodiscard]] std::size_t finalised() const noexcept {
        std::uint64_t x = state_;
        x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9;
        x = (x ^ (x >> 27)) * 0x94D049BB133111EB;
        return static_cast<std::size_t>(x ^ (x >> 31));
    }

private:
    std::uint64_t state_;
};

}  // namespace

std::size_t hashValue(const commonDetails& common, std::size_t seed) noexcept {
    Hasher hasher(seed);
    hasher.feed(common.tagHelp);
    for (const Text& tag : common.tags) hasher.feed(tag);
    hasher.feed(common.userValue);
    hasher.feed(static_cast<std::uint64_t>(common.hasParameter));
    hasher.feed(common.parameterName);
    return hasher.finalised();
}

}  // namespace Optrella
