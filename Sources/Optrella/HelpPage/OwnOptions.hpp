// OwnOptions.hpp - what the help page says of what every tool answers by itself.

#ifndef OPTRELLA_HELPPAGE_OWNOPTIONS_HPP
#define OPTRELLA_HELPPAGE_OWNOPTIONS_HPP

#include <optional>
#include <string_view>

#include "Optrella/HelpPage/Sheet.hpp"
#include "Optrella/Tool/Grammar.hpp"
#include "Optrella/Tool/OwnOption.hpp"

namespace Optrella::Internal {

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
    void add(Rows& rows, OwnOption option, std::string_view help) const noexcept;

    const Tool& tool_;
    const Grammar& grammar_;
};

}  // namespace Optrella::Internal

#endif
