// Matching.hpp - whether the arguments fit a declaration, and what they give to it.

#ifndef OPTRELLA_COMMANDLINE_MATCHING_HPP
#define OPTRELLA_COMMANDLINE_MATCHING_HPP

#include <cstdint>
#include <optional>
#include <span>

#include "Optrella/CommandLine.hpp"
#include "Optrella/CommandLine/Declaration.hpp"
#include "Optrella/CommandLine/MatchGroup.hpp"
#include "Optrella/Text/Unicode.hpp"

namespace Optrella::Internal {

// What is left to do of a declaration that the arguments fit: copies, since a tool may change its
// declarations as soon as its own kinds are asked, and while the action runs.
struct Fit {
    bool requiresRoot;
    Action run;
    Parameters given;  // required ones first, each group in the order of the arguments
};

// Matches arguments against one declaration after the other, and keeps what need not be found out
// again for each. For one thread.
class Matcher {
public:
    // Views the arguments, without the program name.
    explicit Matcher(std::span<const Text> passedLine) noexcept
        : passedLine_(passedLine),
          first_(passedLine.empty() ? TagFilter::Key() : TagFilter::Key(passedLine.front())),
          firstMark_(passedLine.empty() ? 0 : TagMarks::markOf(passedLine.front())) {}

    // Returns false for most declarations that the first argument does not belong to: those that
    // need not be asked, because couldRun would return nothing and print nothing.
    [[nodiscard]] bool mayFit(const CommandLinePossibility& commandLine) const noexcept {
        return Declaration::tags(commandLine).mayContain(first_);
    }

    // Returns how the arguments fit the declaration, or nothing when they do not. Prints a line
    // when the value of the last tag is missing.
    [[nodiscard]] std::optional<Fit> couldRun(const CommandLinePossibility& commandLine) noexcept;

private:
    bool takesAll(const CommandLinePossibility& commandLine) noexcept;

    std::span<const Text> passedLine_;
    TagFilter::Key first_;
    std::uint32_t firstMark_;
    CanonicalComparer comparer_;
    MatchGroup required_;
    MatchGroup optional_;
};

}  // namespace Optrella::Internal

#endif
