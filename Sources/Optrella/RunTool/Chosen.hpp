// Chosen.hpp - which command a line runs.

#ifndef OPTRELLA_RUNTOOL_CHOSEN_HPP
#define OPTRELLA_RUNTOOL_CHOSEN_HPP

#include <cstddef>
#include <optional>
#include <span>

#include "Optrella/CommandLine/Matching.hpp"
#include "Optrella/Tool.hpp"

namespace Optrella::Internal {

struct Chosen {
    std::size_t declaration;  // its index
    Fit fit;
};

// Returns the one declaration that the arguments fit conventionally, nothing when none or more than
// one does: what `explain` finds, without reading the line for declarations whose words it does not
// hold.
[[nodiscard]] std::optional<Chosen> chosen(const Tool& tool,
                                           std::span<const Text> arguments) noexcept;

}  // namespace Optrella::Internal

#endif
