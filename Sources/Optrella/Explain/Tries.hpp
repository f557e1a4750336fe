// Tries.hpp - how each declaration reads a line.

#ifndef OPTRELLA_EXPLAIN_TRIES_HPP
#define OPTRELLA_EXPLAIN_TRIES_HPP

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "Optrella/Explain.hpp"
#include "Optrella/Explain/Nearness.hpp"
#include "Optrella/Tool/Walk.hpp"

namespace Optrella::Internal {

// Returns the arguments of an argument vector, which may be empty.
[[nodiscard]] inline std::span<const char* const> withoutProgramName(
    int argc, const char* const* argv) noexcept {
    if (argc < 1) return {};
    return std::span(argv, static_cast<std::size_t>(argc)).subspan(1);
}

// How one declaration reads the line, and how near that comes to what was meant.
struct Try {
    Attempt attempt;
    std::vector<Gift> gifts;
    // The required tags: those that are given, and those that an argument is near to, by how near.
    std::int64_t likeness = 0;
    bool isMeant = false;  // one of them is given
};

// Tries declarations with one line, and keeps what need not be found out again for each.
class Tries {
public:
    // Views both.
    Tries(const Grammar& grammar, std::span<const Argument> line) noexcept
        : grammar_(&grammar),
          line_(line),
          tags_(static_cast<std::size_t>(grammar.vocabulary.size())),
          arguments_(line.size()),
          distances_(line.size()) {}

    [[nodiscard]] Try of(std::size_t declaration) noexcept;

private:
    // A tag that may have been meant by an argument.
    struct Near {
        std::size_t distance;
        std::size_t argument;
        const Text* tag;
    };

    void readAll(Walk& walk, Attempt& attempt) noexcept;
    void reject(const Walk& walk, Reading reading, std::size_t place, Attempt& attempt) noexcept;
    void compare(const Walk& walk, Try& result) noexcept;
    std::optional<Near> nearest(const SlotRules& rules) noexcept;
    std::vector<Text> nearTags(const Walk& walk, std::size_t argument) noexcept;
    std::optional<std::size_t> distance(std::size_t argument, const Text& tag) noexcept;
    const Comparable& comparableArgument(std::size_t place) noexcept;
    const Comparable& comparableTag(const Text& tag) noexcept;
    [[nodiscard]] static bool isPlain(const Walk& walk, const Argument& argument) noexcept;

    const Grammar* grammar_;
    std::span<const Argument> line_;
    std::vector<std::size_t> candidates_;  // plain arguments that may be mistyped tags
    std::vector<std::optional<Comparable>> tags_;
    std::vector<std::optional<Comparable>> arguments_;
    // Of an argument that is not known to all tags: declarations share most of them. None where it
    // has not been asked for yet.
    using Distance = std::optional<std::size_t>;
    std::vector<std::vector<std::optional<Distance>>> distances_;
};

}  // namespace Optrella::Internal

#endif
