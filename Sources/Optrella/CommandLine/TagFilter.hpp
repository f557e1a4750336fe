// TagFilter.hpp - which arguments may be tags of a declaration, told at a glance.

#ifndef OPTRELLA_COMMANDLINE_TAGFILTER_HPP
#define OPTRELLA_COMMANDLINE_TAGFILTER_HPP

#include <cstdint>

#include "Optrella/Export.hpp"
#include "Optrella/Text.hpp"

namespace Optrella::Internal {

// A Bloom filter of tags: 128 bits, of which each tag sets four, two in each half. An argument one
// of whose four is not set is no tag, so that most declarations need not be searched. Bytes tell
// that of ASCII texts alone, since others may be equal without sharing a byte: a tag that is not
// ASCII sets all bits, and an argument that is not looks at none.
class OPTRELLA_API TagFilter {
public:
    // The bits of one text, made once for many filters. Without a text there are none.
    class Key {
    public:
        constexpr Key() noexcept = default;
        explicit constexpr Key(const Text& argument) noexcept {
            const TextDigest digest = TextDigest::of(argument);
            if (!digest.isASCII()) return;
            const auto bit = [fingerprint = digest.fingerprint()](unsigned place) {
                return std::uint64_t{1} << (fingerprint >> place) % 64;
            };
            low_ = bit(0) | bit(6);
            high_ = bit(12) | bit(18);
        }

    private:
        friend TagFilter;
        std::uint64_t low_ = 0;
        std::uint64_t high_ = 0;
    };

    constexpr void add(const Text& tag) noexcept {
        if (!tag.isASCII()) {
            clearLow_ = clearHigh_ = 0;
            return;
        }
        const Key key(tag);
        clearLow_ &= ~key.low_;
        clearHigh_ &= ~key.high_;
    }
    // Returns false for what is no tag; true for every tag, and for a few other arguments.
    [[nodiscard]] bool mayContain(const Key& argument) const noexcept {
        return (argument.low_ & clearLow_) == 0 && (argument.high_ & clearHigh_) == 0;
    }

private:
    // The bits that are not set.
    std::uint64_t clearLow_ = ~std::uint64_t{0};
    std::uint64_t clearHigh_ = ~std::uint64_t{0};
};

}  // namespace Optrella::Internal

#endif
