// The tools' main: TOOL | TOOL help | TOOL WORD [OPTION]... | TOOL items COUNT

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Tool.hpp"

void takeCommand(const char* word, const char* name, long count, const char* mode, const char* file,
                 bool verbose) {
    std::printf("%s %s %ld %s %s %d\n", word, name, count, mode, file, verbose ? 1 : 0);
}

void takeItems(long count, const char* last) { std::printf("%ld %s\n", count, last); }

namespace {

// The command line `add --item v000000 --item v000001 ...`, made here because it is longer than
// what a process can be given.
int runItems(char* program, int count) {
    char add[] = "add";
    char item[] = "--item";
    const auto most = static_cast<std::size_t>(count);
    auto* values = static_cast<char(*)[8]>(std::malloc(most * 8));
    auto** argv = static_cast<char**>(std::malloc((2 * most + 3) * sizeof(char*)));
    int argc = 0;
    argv[argc++] = program;
    argv[argc++] = add;
    for (int i = 0; i < count; ++i) {
        std::snprintf(values[i], sizeof values[i], "v%06d", i % 1000000);
        argv[argc++] = item;
        argv[argc++] = values[i];
    }
    argv[argc] = nullptr;
    const int status = runCommandLine(argc, argv);
    std::free(argv);
    std::free(values);
    return status;
}

}  // namespace

int main(int argc, char* argv[]) {
    declareCommands();
    if (argc == 1) return 0;
    if (std::strcmp(argv[1], "items") == 0) return runItems(argv[0], std::atoi(argv[2]));
    if (std::strcmp(argv[1], "help") != 0) return runCommandLine(argc, argv);
    printHelp();
    return 0;
}
