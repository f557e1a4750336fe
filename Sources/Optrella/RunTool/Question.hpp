// Question.hpp - what a line asks of a tool, where it runs no command.

#ifndef OPTRELLA_RUNTOOL_QUESTION_HPP
#define OPTRELLA_RUNTOOL_QUESTION_HPP

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "Optrella/Tool.hpp"
#include "Optrella/Tool/Grammar.hpp"

namespace Optrella::Internal {

struct Question {
    enum class About : std::uint8_t {
        tool,       // help: an overview
        commands,   // help: those that the words before it leave
        noCommand,  // help: of what is none
        version,
        completion,  // the script of a shell
        manual,
        description,
    };

    About about;
    std::vector<std::size_t> commands{};  // their indices
    std::span<const Text> words{};        // of help: what the line says of the command
    std::optional<Text> shell{};          // as it is typed; nothing when it is missing
};

// Returns what a line asks that no declaration fits, if it does: by the first of the options that
// every tool has, before "--" and before what belongs to another command's line. Where the words
// before it name commands that all have a use for the option, it is theirs. Views the arguments.
// REQUIRES: the tool's whole grammar, in the conventional spelling.
[[nodiscard]] std::optional<Question> questionOf(const Tool& tool, const Grammar& grammar,
                                                 std::span<const Text> arguments) noexcept;

}  // namespace Optrella::Internal

#endif
