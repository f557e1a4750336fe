// A tool that answers questions about itself: QUESTION, and what it is about. Prints how much there
// is of the answer, so that a wrong one is seen. What a shell asks at TAB it answers as any tool.

#include <Optrella/Complete.hpp>
#include <Optrella/Explain.hpp>
#include <Optrella/Lint.hpp>
#include <Optrella/Tool.hpp>
#include <cstdio>
#include <cstdlib>
#include <string_view>

using namespace Optrella;

namespace {

#define CONSTEXPR constexpr
#define MODES modes
#include "OptrellaParameters.inc"

constexpr ParameterString item{{"--item"}, "ITEM", "an item"};

#define COMMAND(id, word, help, ...)                                                               \
    {false, {id##Word, item},        {id##Name, id##Count, id##Mode, id##File, id##Verbose}, help, \
     false, [](const Parameters&) {}},
constinit const CommandLinePossibility commandLines[] = {
#include COMMANDS
#undef COMMAND
};

std::size_t answer(const Tool& tool, std::string_view question, const std::vector<Text>& line) {
    if (question == "explain") {
        const Explanation explanation = explain(tool, line);
        return explanation.attempts.size() + words(tool, line, explanation).size();
    }
    if (question == "complete") return complete(tool, line, "").size();
    return lint(tool, Notes::included).size();
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc < 2) return 64;
    const Tool tool{
        .name = "questions", .commandLines = commandLines, .operands = {{item, Takes::many}}};
    if (std::string_view(argv[1]) == "answer") {
        ::setenv("OPTRELLA_COMPLETE", "1", 1);
        return runTool(tool, argc - 1, argv + 1);
    }
    const std::vector<Text> line(argv + 2, argv + argc);
    std::printf("%zu\n", answer(tool, argv[1], line));
}
