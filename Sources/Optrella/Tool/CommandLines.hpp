// CommandLines.hpp - the declarations of a tool, viewed or kept.

#ifndef OPTRELLA_TOOL_COMMANDLINES_HPP
#define OPTRELLA_TOOL_COMMANDLINES_HPP

#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

#include "Optrella/CommandLine.hpp"
#include "Optrella/Export.hpp"
#include "Optrella/Text/Shared.hpp"

namespace Optrella {

namespace Internal {

// What views declarations itself, so that a temporary of it is no reason to copy them.
template <class Range>
inline constexpr bool isView = std::same_as<Range, CommandList>;
template <class Element, std::size_t extent>
inline constexpr bool isView<std::span<Element, extent>> = true;

}  // namespace Internal

// Views an array, a vector or a span that has a name, which must then outlive this and its copies;
// keeps a temporary, or a list in braces, which copies share.
class OPTRELLA_API CommandLines {
public:
    // Holds none.
    CommandLines() noexcept = default;
    // Keeps those in braces.
    CommandLines(std::initializer_list<CommandLinePossibility> declarations) noexcept
        : CommandLines(std::vector<CommandLinePossibility>(declarations)) {}
    // Views a range that has a name, or is a view; keeps any other.
    template <class Range>
    requires Internal::Declarations<std::remove_cvref_t<Range>> ||
        std::same_as<std::remove_cvref_t<Range>, CommandList>
        CommandLines(Range&& declarations)
    noexcept {
        if constexpr (std::is_lvalue_reference_v<Range> ||
                      Internal::isView<std::remove_cvref_t<Range>>) {
            view(CommandList(declarations));
        } else {
            const std::span<const CommandLinePossibility> all(declarations);
            keep({all.begin(), all.end()});
        }
    }
    CommandLines(std::vector<CommandLinePossibility>&& declarations) noexcept {
        keep(std::move(declarations));
    }

    // Return the declarations, in order, their number, and one of them. REQUIRES: index < size().
    [[nodiscard]] const CommandLinePossibility* begin() const noexcept { return first_; }
    [[nodiscard]] const CommandLinePossibility* end() const noexcept { return first_ + count_; }
    [[nodiscard]] std::size_t size() const noexcept { return count_; }
    [[nodiscard]] bool empty() const noexcept { return count_ == 0; }
    [[nodiscard]] const CommandLinePossibility& operator[](std::size_t index) const noexcept {
        return first_[index];
    }
    // Views them: parse and displayHelp take that.
    operator CommandList() const noexcept { return {first_, count_}; }

private:
    struct Kept : Internal::Shared {
        std::vector<CommandLinePossibility> declarations;
    };

    void view(CommandList declarations) noexcept {
        first_ = declarations.empty() ? nullptr : &*declarations.begin();
        count_ = static_cast<std::size_t>(declarations.end() - declarations.begin());
    }
    void keep(std::vector<CommandLinePossibility>&& declarations) noexcept {
        auto* kept =
            new Kept{{[](Internal::Shared* shared) noexcept { delete static_cast<Kept*>(shared); }},
                     std::move(declarations)};
        owner_ = Internal::SharedObject(kept);
        view(kept->declarations);
    }

    const CommandLinePossibility* first_ = nullptr;
    std::size_t count_ = 0;
    Internal::SharedObject owner_;  // of those that are kept
};

}  // namespace Optrella

#endif
