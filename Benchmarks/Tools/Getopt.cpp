// By hand: a table of the words, getopt_long for the options, every value checked where it is met.

#include <getopt.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "Commands.hpp"
#include "Tool.hpp"

namespace {

const option options[] = {
    {"name", required_argument, nullptr, 'n'}, {"count", required_argument, nullptr, 'c'},
    {"mode", required_argument, nullptr, 'm'}, {"file", required_argument, nullptr, 'f'},
    {"verbose", no_argument, nullptr, 'v'},    {nullptr, 0, nullptr, 0}};

const Command* commandOf(const char* word) {
    for (const Command& command : commands) {
        if (std::strcmp(command.word, word) == 0) return &command;
    }
    return nullptr;
}

bool isNumber(const char* text, long& number) {
    char* end = nullptr;
    errno = 0;
    number = std::strtol(text, &end, 10);
    return errno == 0 && end != text && *end == '\0';
}

bool isMode(const char* word) {
    for (const char* mode : modes) {
        if (std::strcmp(mode, word) == 0) return true;
    }
    return false;
}

}  // namespace

void declareCommands() {}

int runCommandLine(int argc, char* argv[]) {
    const Command* command = commandOf(argv[1]);
    if (command == nullptr) return 64;
    std::string name;
    std::string mode;
    std::string file;
    long count = 0;
    bool verbose = false;
    for (int given;
         (given = getopt_long(argc - 1, argv + 1, "n:c:m:f:v", options, nullptr)) != -1;) {
        switch (given) {
            case 'n':
                name = optarg;
                break;
            case 'c':
                if (!isNumber(optarg, count)) return 64;
                break;
            case 'm':
                if (!isMode(optarg)) return 64;
                mode = optarg;
                break;
            case 'f':
                if (access(optarg, F_OK) != 0) return 64;
                file = optarg;
                break;
            case 'v':
                verbose = true;
                break;
            default:
                return 64;
        }
    }
    if (optind != argc - 1) return 64;
    takeCommand(command->word, name.c_str(), count, mode.c_str(), file.c_str(), verbose);
    return 0;
}

// The same bytes as Optrella's listing; with PASTED, as somebody who has it before the eyes would
// print it.
#ifdef PASTED
void printHelp() {
    std::fputs("\n", stdout);
#define COMMAND(id, word, help, nameHelp, countHelp, modeHelp, fileHelp, verboseHelp)            \
    std::fputs(word                                                                              \
               " [ -n|--name <name>  ] [ -c|--count <count>  ] [ -m|--mode <mode>  ] "           \
               "[ -f|--file <file>  ] [ -v|--verbose ] \n  " help " \n    name  -  " nameHelp    \
               "\n    count  -  " countHelp "\n    mode  -  " modeHelp                           \
               "\n        Must be one of: fast, safe, full, quick, none\n    file  -  " fileHelp \
               "\n    " verboseHelp "\n\n",                                                      \
               stdout);
#include COMMANDS
#undef COMMAND
}
#else
void printHelp() {
    std::fprintf(stdout, "\n");
    for (const Command& command : commands) {
        std::fprintf(stdout,
                     "%s [ -n|--name <name>  ] [ -c|--count <count>  ] [ -m|--mode <mode>  ] "
                     "[ -f|--file <file>  ] [ -v|--verbose ] \n  %s \n"
                     "    name  -  %s\n    count  -  %s\n"
                     "    mode  -  %s\n        Must be one of: fast, safe, full, quick, none\n"
                     "    file  -  %s\n    %s\n\n",
                     command.word, command.help, command.nameHelp, command.countHelp,
                     command.modeHelp, command.fileHelp, command.verboseHelp);
    }
}
#endif
