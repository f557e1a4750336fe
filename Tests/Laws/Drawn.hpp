// Drawn.hpp - drawn declarations with arguments that get far with them.

#ifndef OPTRELLA_TESTS_LAWS_DRAWN_HPP
#define OPTRELLA_TESTS_LAWS_DRAWN_HPP

#include <cstddef>
#include <string>
#include <vector>

#include "Optrella/Text.hpp"
#include "Support/Declarations.hpp"

namespace Tests {

struct Case {
    std::vector<CommandCase> commands;
    std::vector<std::string> arguments;

    [[nodiscard]] std::vector<std::string> line() const {
        std::vector<std::string> line = arguments;
        line.insert(line.begin(), "tool");
        return line;
    }
};

// Whether it is drawn that happens so many times of so many.
[[nodiscard]] bool isDrawn(std::size_t times, std::size_t of);

// A few commands and their arguments, shown when a law fails. Sets the platform up.
[[nodiscard]] Case drawnCase();

[[nodiscard]] std::vector<Optrella::Text> textsOf(const std::vector<std::string>& texts);

}  // namespace Tests

#endif
