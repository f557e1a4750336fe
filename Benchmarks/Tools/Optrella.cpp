#include <Optrella/Optrella.hpp>

#include "Tool.hpp"

using namespace Optrella;

namespace {

void act(const char* word, const ParameterString& name, const ParameterNumber& count,
         const ParameterList& mode, const ParameterFileURL& file, const ParameterNone& verbose,
         const Parameters& given) {
    const auto chosen = fetchOptionalListOption(mode, given);
    const auto url = fetchOptionalURL(file, given);
    takeCommand(word, fetchOptionalString(name, given).value_or("").c_str(),
                fetchOptionalNumber(count, given).value_or(0),
                chosen ? chosen->firstTag().c_str() : "", url ? url->path().c_str() : "",
                fetchOptionalNone(verbose, given));
}

#define COMMAND(id, word, help, nameHelp, countHelp, modeHelp, fileHelp, verboseHelp)    \
    constexpr ParameterNone id##Word{{word}, ""};                                        \
    constexpr ParameterString id##Name{{"-n", "--name"}, "name", nameHelp};              \
    constexpr ParameterNumber id##Count{{"-c", "--count"}, "count", 0, 1000, countHelp}; \
    const ParameterList id##Mode{                                                        \
        {"-m", "--mode"}, {"fast", "safe", "full", "quick", "none"}, "mode", modeHelp};  \
    constexpr ParameterFileURL id##File{{"-f", "--file"},                                \
                                        ParameterFileURL::urlType::file,                 \
                                        ParameterFileURL::existState::exist,             \
                                        "file",                                          \
                                        fileHelp};                                       \
    constexpr ParameterNone id##Verbose{{"-v", "--verbose"}, verboseHelp};
#include COMMANDS
#undef COMMAND

#define COMMAND(id, word, help, ...)                                             \
    {false,                                                                      \
     {id##Word},                                                                 \
     {id##Name, id##Count, id##Mode, id##File, id##Verbose},                     \
     help,                                                                       \
     false,                                                                      \
     [](const Parameters& given) {                                               \
         act(word, id##Name, id##Count, id##Mode, id##File, id##Verbose, given); \
     }},
const CommandLinePossibility commandLines[] = {
#include COMMANDS
#undef COMMAND
};

}  // namespace

void declareCommands() {}

int runCommandLine(int argc, char* argv[]) {
    return parse(commandLines, argc, argv) == parsingError::NoError ? 0 : 64;
}

void printHelp() { displayHelp(commandLines); }
