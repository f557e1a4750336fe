// TagMarks.hpp - what tells most arguments from the tags of a parameter without reading these.

#ifndef OPTRELLA_COMMANDLINE_TAGMARKS_HPP
#define OPTRELLA_COMMANDLINE_TAGMARKS_HPP

#include <cstddef>
#include <cstdint>

#include "Optrella/Export.hpp"
#include "Optrella/Parameters.hpp"

namespace Optrella::Internal {

// Of each of two tags the lower half of its digest. They stand in a row for all parameters of a
// declaration, so that the search for an argument's owner looks at little else.
class OPTRELLA_API TagMarks {
public:
    constexpr TagMarks() noexcept = default;
    constexpr explicit TagMarks(const Tags& tags) noexcept {
        std::size_t count = 0;
        for (const Text& tag : tags) {
            if (!tag.isASCII() || count == most) {
                marks_[0] = open;
                return;
            }
            marks_[count++] = TextDigest::of(tag).mark();
        }
    }

    // Returns the mark of an argument, for mayContain.
    [[nodiscard]] static std::uint32_t markOf(const Text& argument) noexcept {
        return argument.isASCII() ? TextDigest::of(argument).mark() : markOfOther(argument);
    }
    // Returns false for what is none of the tags; true for each of them, and now and then for
    // another argument.
    [[nodiscard]] bool mayContain(std::uint32_t mark) const noexcept {
        return marks_[0] == mark || marks_[1] == mark || marks_[0] == open || mark == anything;
    }

private:
    static std::uint32_t markOfOther(const Text& argument) noexcept;

    static constexpr std::size_t most = 2;
    // Odd, as no digest's is.
    static constexpr std::uint32_t open = 1;      // of texts that are not ASCII, and of more tags
    static constexpr std::uint32_t anything = 3;  // may equal an ASCII tag, too
    static constexpr std::uint32_t none = 0;

    std::uint32_t marks_[most] = {none, none};
};

}  // namespace Optrella::Internal

#endif
