#include <unistd.h>

#include <args.hxx>
#include <deque>
#include <iostream>
#include <memory>
#include <unordered_map>

#include "Commands.hpp"
#include "Tool.hpp"

namespace {

struct CommandArguments {
    CommandArguments(args::Group& group, const Command& declared)
        : command(group, declared.word, declared.help),
          name(command, "name", declared.nameHelp, {'n', "name"}),
          count(command, "count", declared.countHelp, {'c', "count"}),
          mode(command, "mode", declared.modeHelp, {'m', "mode"},
               {{"fast", "fast"},
                {"safe", "safe"},
                {"full", "full"},
                {"quick", "quick"},
                {"none", "none"}}),
          file(command, "file", declared.fileHelp, {'f', "file"}),
          verbose(command, "verbose", declared.verboseHelp, {'v', "verbose"}) {}

    args::Command command;
    args::ValueFlag<std::string> name;
    args::ValueFlag<int> count;
    args::MapFlag<std::string, std::string> mode;
    args::ValueFlag<std::string> file;
    args::Flag verbose;
};

struct Tool {
    Tool() {
        parser.helpParams.showCommandChildren = true;
        for (const Command& command : commands) all.emplace_back(group, command);
    }

    args::ArgumentParser parser{"A tool"};
    args::Group group{parser, "commands"};
    std::deque<CommandArguments> all;
};

std::unique_ptr<Tool> tool;

}  // namespace

void declareCommands() { tool = std::make_unique<Tool>(); }

int runCommandLine(int argc, char* argv[]) {
    try {
        tool->parser.ParseCLI(argc, argv);
    } catch (const args::Error&) {
        return 64;
    }
    for (CommandArguments& each : tool->all) {
        if (!each.command) continue;
        const std::string& file = args::get(each.file);
        if (access(file.c_str(), F_OK) != 0) return 64;
        takeCommand(each.command.Name().c_str(), args::get(each.name).c_str(),
                    args::get(each.count), args::get(each.mode).c_str(), file.c_str(),
                    args::get(each.verbose));
        return 0;
    }
    return 64;
}

void printHelp() { std::cout << tool->parser; }
