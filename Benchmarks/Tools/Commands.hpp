// Commands.hpp - the generated commands as a table, for the parsers whose idiom is a loop over one.

#ifndef OPTRELLA_BENCHMARKS_COMMANDS_HPP
#define OPTRELLA_BENCHMARKS_COMMANDS_HPP

struct Command {
    const char* word;
    const char* help;
    const char* nameHelp;
    const char* countHelp;
    const char* modeHelp;
    const char* fileHelp;
    const char* verboseHelp;
};

static const Command commands[] = {
#define COMMAND(id, ...) {__VA_ARGS__},
#include COMMANDS
#undef COMMAND
};

static const char* const modes[] = {"fast", "safe", "full", "quick", "none"};

#endif
