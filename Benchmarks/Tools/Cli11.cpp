#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "Commands.hpp"
#include "Tool.hpp"

namespace {

struct Values {
    std::string name;
    int count = 0;
    std::string mode;
    std::string file;
    bool verbose = false;
};

Values values;
std::unique_ptr<CLI::App> app;

}  // namespace

void declareCommands() {
    app = std::make_unique<CLI::App>("A tool");
    app->require_subcommand(1);
    for (const Command& command : commands) {
        CLI::App* sub = app->add_subcommand(command.word, command.help);
        sub->add_option("-n,--name", values.name, command.nameHelp);
        sub->add_option("-c,--count", values.count, command.countHelp);
        sub->add_option("-m,--mode", values.mode, command.modeHelp)
            ->check(CLI::IsMember({"fast", "safe", "full", "quick", "none"}));
        sub->add_option("-f,--file", values.file, command.fileHelp)->check(CLI::ExistingFile);
        sub->add_flag("-v,--verbose", values.verbose, command.verboseHelp);
    }
}

int runCommandLine(int argc, char* argv[]) {
    try {
        app->parse(argc, argv);
    } catch (const CLI::ParseError&) {
        return 64;
    }
    takeCommand(app->get_subcommands().front()->get_name().c_str(), values.name.c_str(),
                values.count, values.mode.c_str(), values.file.c_str(), values.verbose);
    return 0;
}

void printHelp() { std::cout << app->help("", CLI::AppFormatMode::All); }
