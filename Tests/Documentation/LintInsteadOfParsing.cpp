// Linked in place of the library's own parse, explain and runTool: what a program hands them is
// linted, and nothing of it is run. An object's definition wins over an archive's member.

#include <Optrella/Explain.hpp>
#include <Optrella/Lint.hpp>
#include <Optrella/Optrella.hpp>
#include <cstdio>
#include <cstdlib>

namespace Optrella {

namespace {

[[noreturn]] void lintAndLeave(const Tool& tool) noexcept {
    std::printf("linted %zu declarations\n", tool.commandLines.size());
    for (const Finding& each : lint(tool)) {
        std::printf("%s", rawValue(each.rule).c_str());
        for (const std::size_t index : each.declarations) std::printf(" %zu", index);
        for (const Text& word : each.witness.value_or(each.parameters)) {
            std::printf(" '%s'", word.c_str());
        }
        std::printf("\n");
        std::fprintf(stderr, "%s\n", each.sentence.c_str());
    }
    std::fflush(stdout);
    std::_Exit(0);
}

[[noreturn]] void lintAsParsed(CommandList commandList) noexcept {
    lintAndLeave({.name = "tool", .commandLines = commandList, .spelling = Spelling::exact});
}

}  // namespace

parsingError parse(CommandList commandList, ArgumentList) noexcept { lintAsParsed(commandList); }
parsingError parse(CommandList commandList, int, const char* const*) noexcept {
    lintAsParsed(commandList);
}
parsingError parse(CommandList commandList, ArgumentList, RootCommands) noexcept {
    lintAsParsed(commandList);
}
parsingError parse(CommandList commandList, int, const char* const*, RootCommands) noexcept {
    lintAsParsed(commandList);
}

Explanation explain(const Tool& tool, ArgumentList) noexcept { lintAndLeave(tool); }
Explanation explain(const Tool& tool, int, const char* const*) noexcept { lintAndLeave(tool); }

int runTool(const Tool& tool, ArgumentList) noexcept {
    Tool conventional = tool;
    conventional.spelling = Spelling::conventional;
    lintAndLeave(conventional);
}
int runTool(const Tool& tool, int, const char* const*) noexcept {
    return runTool(tool, ArgumentList());
}

}  // namespace Optrella
