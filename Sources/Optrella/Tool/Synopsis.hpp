// Synopsis.hpp - how a declaration is written in a line of usage.

#ifndef OPTRELLA_TOOL_SYNOPSIS_HPP
#define OPTRELLA_TOOL_SYNOPSIS_HPP

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Optrella/Tool/Grammar.hpp"

namespace Optrella::Internal {

// How much of a declaration is written.
enum class Extent : std::uint8_t {
    whole,
    shortened,  // "[OPTIONS]" stands for those that need not be given
};

// A part of a synopsis: "list|ls", "create NAME", "[-s|--sort ORDER]".
struct SynopsisPart {
    std::string text;
    std::size_t wordSize;  // of the command's word that it begins with: 7, 6, 0 bytes
};

// Returns the words, the options, the operands. Their texts are as they were declared: nothing is
// escaped.
[[nodiscard]] std::vector<SynopsisPart> synopsisParts(const Form& form, Extent extent) noexcept;

// Returns "list [-s|--sort ORDER] DISK...": the words, the options, the operands. Where that is
// wider than `width` columns, "[OPTIONS]" stands for those that need not be given.
[[nodiscard]] std::string synopsis(const Form& form, std::size_t width) noexcept;

// Returns the words that name the command, "volume create", or the whole synopsis where it has
// none.
[[nodiscard]] std::string commandName(const Form& form) noexcept;

// Returns the names of commands in quotation marks; their synopses where two have one name.
// `nothing` is what stands for a command without any parameter.
[[nodiscard]] std::vector<std::string> distinctNames(std::span<const Form* const> forms,
                                                     std::string_view nothing) noexcept;

// Returns the name of the value in capitals, which tell it from what is typed as it stands.
[[nodiscard]] std::string valueName(const SlotRules& rules) noexcept;

// Returns what a person calls a parameter: DISK for an operand, '-n' in quotation marks otherwise.
[[nodiscard]] std::string label(const SlotRules& rules) noexcept;

// Returns a text in quotation marks, as a terminal may get it.
[[nodiscard]] std::string quoted(std::string_view bytes) noexcept;

}  // namespace Optrella::Internal

#endif
