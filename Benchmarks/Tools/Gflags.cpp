// gflags has neither commands nor short names: each option is a flag of the whole program, named
// after its command.

#include <gflags/gflags.h>
#include <unistd.h>

#include <string>

#include "Commands.hpp"
#include "Tool.hpp"

#define COMMAND(id, word, help, nameHelp, countHelp, modeHelp, fileHelp, verboseHelp) \
    DEFINE_string(id##_name, "", nameHelp);                                           \
    DEFINE_int32(id##_count, 0, countHelp);                                           \
    DEFINE_string(id##_mode, "fast", modeHelp);                                       \
    DEFINE_string(id##_file, "", fileHelp);                                           \
    DEFINE_bool(id##_verbose, false, verboseHelp);
#include COMMANDS
#undef COMMAND

namespace {

struct CommandFlags {
    const char* word;
    const std::string& name;
    const google::int32& count;
    const std::string& mode;
    const std::string& file;
    const bool& verbose;
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
    google::ParseCommandLineFlags(&argc, &argv, true);
    if (argc != 2) return 64;
    for (const CommandFlags& each : all) {
        if (std::string_view(argv[1]) != each.word) continue;
        if (!isMode(each.mode) || access(each.file.c_str(), F_OK) != 0) return 64;
        takeCommand(each.word, each.name.c_str(), each.count, each.mode.c_str(), each.file.c_str(),
                    each.verbose);
        return 0;
    }
    return 64;
}

void printHelp() { google::ShowUsageWithFlags("tool"); }
