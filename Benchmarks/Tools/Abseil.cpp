// Abseil's flags know neither commands nor short names: each option is a flag of the whole program,
// named after its command.

#include <absl/flags/flag.h>
#include <absl/flags/parse.h>
#include <absl/flags/usage.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "Commands.hpp"
#include "Tool.hpp"

#define COMMAND(id, word, help, nameHelp, countHelp, modeHelp, fileHelp, verboseHelp) \
    ABSL_FLAG(std::string, id##_name, "", nameHelp);                                  \
    ABSL_FLAG(int, id##_count, 0, countHelp);                                         \
    ABSL_FLAG(std::string, id##_mode, "fast", modeHelp);                              \
    ABSL_FLAG(std::string, id##_file, "", fileHelp);                                  \
    ABSL_FLAG(bool, id##_verbose, false, verboseHelp);
#include COMMANDS
#undef COMMAND

namespace {

struct CommandFlags {
    const char* word;
    const absl::Flag<std::string>& name;
    const absl::Flag<int>& count;
    const absl::Flag<std::string>& mode;
    const absl::Flag<std::string>& file;
    const absl::Flag<bool>& verbose;
};

const CommandFlags all[] = {
#define COMMAND(id, word, ...) \
    {word,                     \
     FLAGS_##id##_name,        \
     FLAGS_##id##_count,       \
     FLAGS_##id##_mode,        \
     FLAGS_##id##_file,        \
     FLAGS_##id##_verbose},
#include COMMANDS
#undef COMMAND
};

bool isMode(const std::string& word) {
    for (const char* mode : modes) {
        if (word == mode) return true;
    }
    return false;
}

}  // namespace

void declareCommands() {}

int runCommandLine(int argc, char* argv[]) {
    const std::vector<char*> given = absl::ParseCommandLine(argc, argv);
    if (given.size() != 2) return 64;
    for (const CommandFlags& each : all) {
        if (std::string_view(given[1]) != each.word) continue;
        const std::string mode = absl::GetFlag(each.mode);
        const std::string file = absl::GetFlag(each.file);
        if (!isMode(mode) || access(file.c_str(), F_OK) != 0) return 64;
        takeCommand(each.word, absl::GetFlag(each.name).c_str(), absl::GetFlag(each.count),
                    mode.c_str(), file.c_str(), absl::GetFlag(each.verbose));
        return 0;
    }
    return 64;
}

// Its listing is an option of its own and ends the program, with status 1; here it did what it
// should.
void printHelp() {
    char program[] = "tool";
    char option[] = "--helpfull";
    char* argv[] = {program, option, nullptr};
    absl::SetProgramUsageMessage("A tool");
    std::atexit([] {
        std::fflush(stdout);
        std::_Exit(0);
    });
    absl::ParseCommandLine(2, argv);
}
