// Boost.Program_options has no commands: one description of options for each word.

#include <unistd.h>

#include <boost/program_options.hpp>
#include <iostream>
#include <map>

#include "Commands.hpp"
#include "Tool.hpp"

namespace po = boost::program_options;

namespace {

std::map<std::string, po::options_description> tools;

bool isMode(const std::string& word) {
    for (const char* mode : modes) {
        if (word == mode) return true;
    }
    return false;
}

}  // namespace

void declareCommands() {
    for (const Command& command : commands) {
        const auto [tool, isNew] =
            tools.try_emplace(command.word, std::string(command.word) + ": " + command.help);
        tool->second.add_options()("name,n", po::value<std::string>(), command.nameHelp)(
            "count,c", po::value<int>(), command.countHelp)("mode,m", po::value<std::string>(),
                                                            command.modeHelp)(
            "file,f", po::value<std::string>(), command.fileHelp)("verbose,v", po::bool_switch(),
                                                                  command.verboseHelp);
    }
}

int runCommandLine(int argc, char* argv[]) {
    const auto tool = tools.find(argv[1]);
    if (tool == tools.end()) return 64;
    try {
        po::variables_map given;
        po::store(po::command_line_parser(argc - 1, argv + 1).options(tool->second).run(), given);
        po::notify(given);
        const auto& mode = given["mode"].as<std::string>();
        const auto& file = given["file"].as<std::string>();
        if (!isMode(mode) || access(file.c_str(), F_OK) != 0) return 64;
        takeCommand(tool->first.c_str(), given["name"].as<std::string>().c_str(),
                    given["count"].as<int>(), mode.c_str(), file.c_str(),
                    given["verbose"].as<bool>());
    } catch (const po::error&) {
        return 64;
    }
    return 0;
}

void printHelp() {
    for (const auto& [word, options] : tools) std::cout << options << '\n';
}
