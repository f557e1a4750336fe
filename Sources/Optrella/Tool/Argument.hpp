// Argument.hpp - an argument, with all that can be known of it before a declaration is looked at.

#ifndef OPTRELLA_TOOL_ARGUMENT_HPP
#define OPTRELLA_TOOL_ARGUMENT_HPP

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "Optrella/Text.hpp"
#include "Optrella/Tool/Vocabulary.hpp"

namespace Optrella::Internal {

// Returns whether a tag or an argument is written as an option is: a single dash is a word.
[[nodiscard]] inline bool looksLikeOption(std::string_view bytes) noexcept {
    return bytes.size() > 1 && bytes.front() == '-';
}

class Argument {
public:
    // Looks up what the argument may mean.
    Argument(const Text& typed, const Vocabulary& vocabulary) noexcept;

    [[nodiscard]] std::string_view bytes() const noexcept { return text; }
    // Returns whether it may be read as something else than a tag, in whatever place.
    [[nodiscard]] bool isCompound() const noexcept {
        return !letters.empty() || assignment.value > 0;
    }

    // The first part of "--name=value".
    struct Assignment {
        Symbol name = Vocabulary::unknown;
        std::size_t value = 0;  // where the value begins; 0: it is no assignment
    };
    // A short option of several that are joined, as in "-xvf".
    struct Letter {
        Symbol option;
        std::size_t end;  // where it ends in the text
    };

    Text text;
    Symbol symbol;
    bool isOptionLike;
    Assignment assignment;
    Symbol withSecondDash = Vocabulary::unknown;  // "--name" of "-name", up to "="
    std::vector<Letter> letters;                  // none when it joins nothing

private:
    void lookUpAssignment(const Vocabulary& vocabulary) noexcept;
    void lookUpLetters(const Vocabulary& vocabulary) noexcept;
};

// A line, ready to be read.
[[nodiscard]] std::vector<Argument> argumentsOf(std::span<const Text> texts,
                                                const Vocabulary& vocabulary) noexcept;

}  // namespace Optrella::Internal

#endif
