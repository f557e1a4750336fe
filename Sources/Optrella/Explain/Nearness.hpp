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
    [[nodiscard]] bool isBeginningOf(const Comparable& tag) const noexcept;

    std::vector<std::string> characters_;
    std::string folded_;  // without case
};

// Returns the number of characters to insert, remove or change, or of neighbours to exchange, no
// piece being touched twice; nothing when there are more than `most`.
[[nodiscard]] std::optional<std::size_t> mistakes(const std::vector<std::string>& typed,
                                                  const std::vector<std::string>& meant,
                                                  std::size_t most) noexcept;

}  // namespace Optrella::Internal

#endif
