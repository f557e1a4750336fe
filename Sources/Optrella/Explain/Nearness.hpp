// Nearness.hpp - how near a typed text is to a tag that may have been meant.

#ifndef OPTRELLA_EXPLAIN_NEARNESS_HPP
#define OPTRELLA_EXPLAIN_NEARNESS_HPP

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Optrella::Internal {

// A text made ready to be compared with many: without leading dashes.
class Comparable {
public:
    explicit Comparable(std::string_view bytes) noexcept;

    // Returns 0 for what is equal but for case or dashes, otherwise the number of mistakes, or
    // nothing for what is too far away to have been meant.
    [[nodiscard]] std::optional<std::size_t> distanceTo(const Comparable& tag) const noexcept;

private:
    [[nodiscard]] std::vector<std::string> characters() const noexcept;

    std::string bytes_;
    std::string folded_;                   // without case
    bool isPlain_;                         // each byte is a character
    std::vector<std::string> characters_;  // where they are not
    std::size_t size_;                     // in characters
};

}  // namespace Optrella::Internal

#endif
