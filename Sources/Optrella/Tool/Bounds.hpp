// Bounds.hpp - between which numbers a value must be, as far as it is said.

#ifndef OPTRELLA_TOOL_BOUNDS_HPP
#define OPTRELLA_TOOL_BOUNDS_HPP

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "Optrella/Parameters.hpp"

namespace Optrella::Internal {

// In digits. The end of what 64 bits can hold is no bound.
struct Bounds {
    explicit Bounds(const ParameterNumber& number) noexcept {
        using Limits = std::numeric_limits<std::int64_t>;
        if (number.rangeMin() != Limits::min()) least = std::to_string(*number.rangeMin());
        if (number.rangeMax() != Limits::max()) greatest = std::to_string(*number.rangeMax());
    }

    std::optional<std::string> least;
    std::optional<std::string> greatest;
};

}  // namespace Optrella::Internal

#endif
