// By hand: a table of the words, getopt_long for the options, every value checked where it is met.

#include <getopt.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

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
    const char* name = "";
    const char* mode = "";
    const char* file = "";
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
                if (!isMode(mode = optarg)) return 64;
                break;
            case 'f':
                if (access(file = optarg, F_OK) != 0) return 64;
                break;
            case 'v':
                verbose = true;
                break;
            default:
                return 64;
        }
    }
    if (optind != argc - 1) return 64;
    takeCommand(command->word, name, count, mode, file, verbose);
    return 0;
}

// The same bytes as Optrella's listing.
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
