#include "Optrella/Parameters.hpp"
#include "Optrella/Parameters/Decimal.hpp"

namespace Optrella {

namespace Internal {

std::optional<std::int64_t> decimal(std::string_view text) noexcept {
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    if (text.empty()) return std::nullopt;
    std::int64_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return std::nullopt;
        // Downwards for a negative number: the least one has no positive twin.
        const std::int64_t digit = isNegative ? '0' - c : c - '0';
        if (__builtin_mul_overflow(value, 10, &value)) return std::nullopt;
        if (__builtin_add_overflow(value, digit, &value)) return std::nullopt;
    }
    return value;
}

}  // namespace Internal

std::int64_t ParameterNumber::getValue() const noexcept {
    return Internal::decimal(common.userValue).value_or(defaultValue());
}

}  // namespace Optrella
