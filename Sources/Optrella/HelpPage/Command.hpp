// Command.hpp - a declaration as a page shows it.

#ifndef OPTRELLA_HELPPAGE_COMMAND_HPP
#define OPTRELLA_HELPPAGE_COMMAND_HPP

#include <cstddef>
#include <vector>

#include "Optrella/HelpPage/Prose.hpp"
#include "Optrella/Tool/Grammar.hpp"
#include "Optrella/Tool/Synopsis.hpp"

namespace Optrella::Internal {

// Views the tool and its grammar.
class Command {
public:
    Command(const Tool& tool, const Grammar& grammar, std::size_t index) noexcept;

    [[nodiscard]] const Form& form() const noexcept { return *form_; }
    // Returns the words that name it, "volume" and "create"; there may be none.
    [[nodiscard]] const std::vector<Text>& words() const noexcept { return words_; }

    // Returns "volume create -L SIZE [OPTIONS] DISK".
    [[nodiscard]] Prose synopsis(Extent extent) const noexcept;
    // Returns the same after the tool's name, with all options where a few lines of so many columns
    // hold them.
    [[nodiscard]] Prose usage(std::size_t room) const noexcept;
    // Return the help, without what `said` says already, and its first sentence.
    [[nodiscard]] Prose help(const Text& said = {}) const noexcept;
    [[nodiscard]] Prose summary() const noexcept;

private:
    [[nodiscard]] Prose withRights(std::string_view help) const noexcept;

    const Tool* tool_;
    const Form* form_;
    const Text* help_;
    std::vector<Text> words_;
};

}  // namespace Optrella::Internal

#endif
