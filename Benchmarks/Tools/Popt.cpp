// popt has no commands: each one's options are a table with a heading of its own in the one
// context, which names them all in the help; the word is what is left over.

#include <popt.h>
#include <unistd.h>

#include <cstring>

#include "Commands.hpp"
#include "Tool.hpp"

namespace {

char* name = nullptr;
int count = 0;
char* mode = nullptr;
char* file = nullptr;
int verbose = 0;

#define COMMAND(id, word, help, nameHelp, countHelp, modeHelp, fileHelp, verboseHelp) \
    poptOption id##Options[] = {                                                      \
        {"name", 'n', POPT_ARG_STRING, &name, 0, nameHelp, "name"},                   \
        {"count", 'c', POPT_ARG_INT, &count, 0, countHelp, "count"},                  \
        {"mode", 'm', POPT_ARG_STRING, &mode, 0, modeHelp, "mode"},                   \
        {"file", 'f', POPT_ARG_STRING, &file, 0, fileHelp, "file"},                   \
        {"verbose", 'v', POPT_ARG_NONE, &verbose, 0, verboseHelp, nullptr},           \
        POPT_TABLEEND};
#include COMMANDS
#undef COMMAND

const poptOption options[] = {
#define COMMAND(id, word, help, ...) \
    {nullptr, '\0', POPT_ARG_INCLUDE_TABLE, id##Options, 0, word ": " help, nullptr},
#include COMMANDS
#undef COMMAND
    POPT_TABLEEND};

const Command* commandOf(const char* word) {
    for (const Command& command : commands) {
        if (std::strcmp(command.word, word) == 0) return &command;
    }
    return nullptr;
}

bool isMode(const char* word) {
    for (const char* known : modes) {
        if (std::strcmp(known, word) == 0) return true;
    }
    return false;
}

int run(poptContext context) {
    if (poptGetNextOpt(context) != -1) return 64;
    const char* word = poptGetArg(context);
    const Command* command = word != nullptr ? commandOf(word) : nullptr;
    if (command == nullptr || poptPeekArg(context) != nullptr) return 64;
    if (mode != nullptr && !isMode(mode)) return 64;
    if (file != nullptr && access(file, F_OK) != 0) return 64;
    takeCommand(command->word, name, count, mode, file, verbose != 0);
    return 0;
}

}  // namespace

void declareCommands() {}

int runCommandLine(int argc, char* argv[]) {
    poptContext context = poptGetContext(nullptr, argc, const_cast<const char**>(argv), options, 0);
    const int status = run(context);
    poptFreeContext(context);
    return status;
}

void printHelp() {
    const char* argv[] = {"tool", nullptr};
    poptContext context = poptGetContext(nullptr, 1, argv, options, 0);
    poptPrintHelp(context, stdout, 0);
    poptFreeContext(context);
}
