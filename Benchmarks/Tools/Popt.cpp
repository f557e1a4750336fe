// popt has no commands: each one's options are a table of their own, with a context of its own.

#include <popt.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "Tool.hpp"

namespace {

const char* const modes[] = {"fast", "safe", "full", "quick", "none"};

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

struct Tool {
    const char* word;
    const char* help;
    poptOption* options;
};

const Tool tools[] = {
#define COMMAND(id, word, help, ...) {word, help, id##Options},
#include COMMANDS
#undef COMMAND
};

const Tool* toolOf(const char* word) {
    for (const Tool& tool : tools) {
        if (std::strcmp(tool.word, word) == 0) return &tool;
    }
    return nullptr;
}

bool isMode(const char* word) {
    for (const char* known : modes) {
        if (std::strcmp(known, word) == 0) return true;
    }
    return false;
}

int run(poptContext context, const char* word) {
    if (poptGetNextOpt(context) != -1 || poptPeekArg(context) != nullptr) return 64;
    if (mode != nullptr && !isMode(mode)) return 64;
    if (file != nullptr && access(file, F_OK) != 0) return 64;
    takeCommand(word, name, count, mode, file, verbose != 0);
    return 0;
}

}  // namespace

void declareCommands() {}

int runCommandLine(int argc, char* argv[]) {
    const Tool* tool = toolOf(argv[1]);
    if (tool == nullptr) return 64;
    auto** arguments = const_cast<const char**>(argv + 1);
    poptContext context = poptGetContext(nullptr, argc - 1, arguments, tool->options, 0);
    const int status = run(context, tool->word);
    poptFreeContext(context);
    return status;
}

void printHelp() {
    for (const Tool& tool : tools) {
        const char* argv[] = {tool.word, nullptr};
        poptContext context = poptGetContext(nullptr, 1, argv, tool.options, 0);
        std::printf("%s\n", tool.help);
        poptPrintHelp(context, stdout, 0);
        poptFreeContext(context);
    }
}
