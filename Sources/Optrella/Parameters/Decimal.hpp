// Decimal.hpp - the numbers that a user may give.

#ifndef OPTRELLA_PARAMETERS_DECIMAL_HPP
#define OPTRELLA_PARAMETERS_DECIMAL_HPP

#include <cstdint>
#include <optional>
#include <string_view>

namespace Optrella::Internal {

// Returns nothing for what is not an optional sign and ASCII digits within 64 bits.
[[nodiscard]] std::optional<std::int64_t> decimal(std::string_view text) noexcept;

}  // namespace Optrella::Internal

#endif
