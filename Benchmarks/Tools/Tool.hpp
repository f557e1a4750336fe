// Tool.hpp - what each tool of the benchmark is made of: the same commands, one parser each.
//
// COMMANDS names the generated list of commands. A command has a word and five options:
//   -n, --name string   -c, --count integer   -m, --mode one of five   -f, --file existing file
//   -v, --verbose flag
// The functions have C names and stand in files of their own, so that they can be measured by name.
// What is declared at namespace scope is measured as the file's initialisation.

#ifndef OPTRELLA_BENCHMARKS_TOOL_HPP
#define OPTRELLA_BENCHMARKS_TOOL_HPP

extern "C" {

// Declares the commands that are not declared before main.
void declareCommands();

// Finds the command, checks its values and hands them to takeCommand. 0, or 64 when they don't fit.
int runCommandLine(int argc, char* argv[]);

void printHelp();

// What the tools do with the values of a command, and with those of --item; in Main.cpp.
void takeCommand(const char* word, const char* name, long count, const char* mode, const char* file,
                 bool verbose);
void takeItems(long count, const char* last);
}

#endif
