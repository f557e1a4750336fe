// OwnOptions.hpp - what every tool answers by itself.

#ifndef OPTRELLA_HELPPAGE_OWNOPTIONS_HPP
#define OPTRELLA_HELPPAGE_OWNOPTIONS_HPP

#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "Optrella/HelpPage/Sheet.hpp"
#include "Optrella/Tool/Grammar.hpp"

namespace Optrella::Internal {

// A tag that a declaration has is the declaration's.
class OwnOptions {
public:
    OwnOptions(const Tool& tool, const Grammar& grammar) noexcept
        : tool_(tool), grammar_(grammar) {}

    // Returns how help is asked for, if it can be.
    [[nodiscard]] std::optional<Text> help() const noexcept;
    // Append the row of help, and that of the version.
    void addHelp(Rows& rows, std::string_view helpOfHelp) const noexcept;
    void addVersion(Rows& rows) const noexcept;
    // Returns those for who builds a package of the tool.
    [[nodiscard]] Prose ofPackagers() const noexcept;

private:
    void add(Rows& rows, std::span<const Text> tags, std::string_view help) const noexcept;
    [[nodiscard]] std::vector<Text> free(std::span<const Text> tags) const noexcept;

    const Tool& tool_;
    const Grammar& grammar_;
};

}  // namespace Optrella::Internal

#endif
