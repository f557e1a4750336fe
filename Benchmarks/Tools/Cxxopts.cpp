// cxxopts has no commands: one set of options for each word.

#include <unistd.h>

#include <cxxopts.hpp>
#include <iostream>
#include <map>

#include "Commands.hpp"
#include "Tool.hpp"

namespace {

std::map<std::string, cxxopts::Options> tools;

bool isMode(const std::string& word) {
    for (const char* mode : modes) {
        if (word == mode) return true;
    }
    return false;
}

}  // namespace

void declareCommands() {
    for (const Command& command : commands) {
        cxxopts::Options options(command.word, command.help);
        options.add_options()("n,name", command.nameHelp, cxxopts::value<std::string>())(
            "c,count", command.countHelp, cxxopts::value<int>())("m,mode", command.modeHelp,
                                                                 cxxopts::value<std::string>())(
            "f,file", command.fileHelp, cxxopts::value<std::string>())(
            "v,verbose", command.verboseHelp, cxxopts::value<bool>());
        tools.emplace(command.word, std::move(options));
    }
}

int runCommandLine(int argc, char* argv[]) {
    const auto tool = tools.find(argv[1]);
    if (tool == tools.end()) return 64;
    try {
        const cxxopts::ParseResult given = tool->second.parse(argc - 1, argv + 1);
        const auto& mode = given["mode"].as<std::string>();
        const auto& file = given["file"].as<std::string>();
        if (!given.unmatched().empty() || !isMode(mode) || access(file.c_str(), F_OK) != 0)
            return 64;
        takeCommand(tool->first.c_str(), given["name"].as<std::string>().c_str(),
                    given["count"].as<int>(), mode.c_str(), file.c_str(),
                    given["verbose"].as<bool>());
    } catch (const cxxopts::exceptions::exception&) {
        return 64;
    }
    return 0;
}

void printHelp() {
    for (const auto& [word, options] : tools) std::cout << options.help();
}
