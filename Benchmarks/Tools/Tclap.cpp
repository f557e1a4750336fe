// TCLAP has no commands: one command line for each word.

#include <tclap/CmdLine.h>
#include <unistd.h>

#include <map>

#include "Commands.hpp"
#include "Tool.hpp"

namespace {

std::vector<std::string> allModes{std::begin(modes), std::end(modes)};

struct CommandTool {
    explicit CommandTool(const Command& command)
        : line(command.help, ' ', "1.0"),
          name("n", "name", command.nameHelp, false, "", "name", line),
          count("c", "count", command.countHelp, false, 0, "count", line),
          mode("m", "mode", command.modeHelp, false, "fast", &known, line),
          file("f", "file", command.fileHelp, false, "", "file", line),
          verbose("v", "verbose", command.verboseHelp, line) {
        line.setExceptionHandling(false);
    }

    TCLAP::CmdLine line;
    TCLAP::ValuesConstraint<std::string> known{allModes};
    TCLAP::ValueArg<std::string> name;
    TCLAP::ValueArg<int> count;
    TCLAP::ValueArg<std::string> mode;
    TCLAP::ValueArg<std::string> file;
    TCLAP::SwitchArg verbose;
};

std::map<std::string, CommandTool> tools;

}  // namespace

void declareCommands() {
    for (const Command& command : commands) tools.try_emplace(command.word, command);
}

int runCommandLine(int argc, char* argv[]) {
    const auto found = tools.find(argv[1]);
    if (found == tools.end()) return 64;
    CommandTool& tool = found->second;
    try {
        tool.line.parse(argc - 1, argv + 1);
    } catch (const TCLAP::ArgException&) {
        return 64;
    }
    const std::string& file = tool.file.getValue();
    if (access(file.c_str(), F_OK) != 0) return 64;
    takeCommand(found->first.c_str(), tool.name.getValue().c_str(), tool.count.getValue(),
                tool.mode.getValue().c_str(), file.c_str(), tool.verbose.getValue());
    return 0;
}

void printHelp() {
    TCLAP::StdOutput output;
    for (auto& [word, tool] : tools) output.usage(tool.line);
}
