#include <Optrella/Optrella.hpp>
#ifdef RUN_TOOL
#include <Optrella/Tool.hpp>
#endif

#include "Tool.hpp"

using namespace Optrella;

// As constants, the way to declare; or, with AT_RUN_TIME, in lists that are made when the tool
// starts.
#ifdef AT_RUN_TIME
#define CONSTANT
#define CONSTEXPR const
#define MODES \
    { "fast", "safe", "full", "quick", "none" }
#else
#define CONSTANT constinit
#define CONSTEXPR constexpr
#define MODES modes
#endif

// The action, up to the five values.
extern "C" void fetchValues(const char* word, const ParameterString& name,
                            const ParameterNumber& count, const ParameterList& mode,
                            const ParameterFileURL& file, const ParameterNone& verbose,
                            const Parameters& given) {
    const auto text = fetchOptionalString(name, given);
    const auto chosen = fetchOptionalListOption(mode, given);
    const auto url = fetchOptionalURL(file, given);
    takeCommand(word, text ? text->c_str() : "", fetchOptionalNumber(count, given).value_or(0),
                chosen ? chosen->firstTag().c_str() : "", url ? url->path().c_str() : "",
                fetchOptionalNone(verbose, given));
}

namespace {

#include "OptrellaParameters.inc"

#define COMMAND(id, word, help, ...)                                                     \
    {false,                                                                              \
     {id##Word},                                                                         \
     {id##Name, id##Count, id##Mode, id##File, id##Verbose},                             \
     help,                                                                               \
     false,                                                                              \
     [](const Parameters& given) {                                                       \
         fetchValues(word, id##Name, id##Count, id##Mode, id##File, id##Verbose, given); \
     }},
CONSTANT const CommandLinePossibility commandLines[] = {
#include COMMANDS
#undef COMMAND
};
// Also of an array without elements, which g++ knows.
const CommandList tool{commandLines, sizeof commandLines / sizeof(CommandLinePossibility)};

}  // namespace

void declareCommands() {}

// With RUN_TOOL the whole of main is the library's.
int runCommandLine(int argc, char* argv[]) {
#ifdef RUN_TOOL
    return runTool({.name = "tool", .commandLines = tool}, argc, argv);
#else
    return parse(tool, argc, argv) == parsingError::NoError ? 0 : 64;
#endif
}

void printHelp() { displayHelp(tool); }
