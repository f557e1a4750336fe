// OwnOption.hpp - what every tool answers by itself.

#ifndef OPTRELLA_TOOL_OWNOPTION_HPP
#define OPTRELLA_TOOL_OWNOPTION_HPP

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "Optrella/Tool.hpp"
#include "Optrella/Tool/Grammar.hpp"

namespace Optrella::Internal {

enum class OwnOption : std::uint8_t { help, version, completion, manual, description };

// Returns which of them has a tag, if one has. A tool without a version has no option for it.
[[nodiscard]] std::optional<OwnOption> ownOptionOf(const Tool& tool, std::string_view tag) noexcept;

// Returns the tags of one, the short one first, but for those that a declaration has: they are the
// declaration's.
[[nodiscard]] std::vector<Text> ownTags(const Tool& tool, const Grammar& grammar,
                                        OwnOption option) noexcept;

}  // namespace Optrella::Internal

#endif
