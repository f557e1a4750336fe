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

#define COMMAND(id, word, help, nameHelp, countHelp, modeHelp, fileHelp, verboseHelp)   \
    const ParameterNone id##Word{{word}, ""};                                           \
    const ParameterString id##Name{{"-n", "--name"}, "name", nameHelp};                 \
    const ParameterNumber id##Count{{"-c", "--count"}, "count", 0, 1000, countHelp};    \
    const ParameterList id##Mode{                                                       \
        {"-m", "--mode"}, {"fast", "safe", "full", "quick", "none"}, "mode", modeHelp}; \
    const ParameterFileURL id##File{{"-f", "--file"},                                   \
                                    ParameterFileURL::urlType::file,                    \
                                    ParameterFileURL::existState::exist,                \
                                    "file",                                             \
                                    fileHelp};                                          \
    const ParameterNone id##Verbose{{"-v", "--verbose"}, verboseHelp};
#include COMMANDS
#undef COMMAND

#define DECLARED(id, word, help)                                                                \
    {                                                                                           \
        false, {id##Word}, {id##Name, id##Count, id##Mode, id##File, id##Verbose}, help, false, \
            [](const Parameters& given) {                                                       \
                act(word, id##Name, id##Count, id##Mode, id##File, id##Verbose, given);         \
            }                                                                                   \
    }

#ifdef ONE_FUNCTION_EACH
// What a tool of many hundred commands does: g++ takes the longer for each command, the more of
// them stand in one function, and an array is initialised by one function.
#define COMMAND(id, word, help, ...) \
    CommandLinePossibility id() { return DECLARED(id, word, help); }
#include COMMANDS
#undef COMMAND

const CommandLinePossibility commandLines[] = {
#define COMMAND(id, ...) id(),
#include COMMANDS
#undef COMMAND
};
#else
const CommandLinePossibility commandLines[] = {
#define COMMAND(id, word, help, ...) DECLARED(id, word, help),
#include COMMANDS
#undef COMMAND
};
#endif

}  // namespace

void declareCommands() {}

int runCommandLine(int argc, char* argv[]) {
    return parse(commandLines, argc, argv) == parsingError::NoError ? 0 : 64;
}

void printHelp() { displayHelp(commandLines); }
