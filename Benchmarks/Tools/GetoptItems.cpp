#include <getopt.h>

#include <cstdio>
#include <cstring>
#include <vector>

#include "Tool.hpp"

namespace {

const option options[] = {{"item", required_argument, nullptr, 'i'}, {nullptr, 0, nullptr, 0}};

}  // namespace

void declareCommands() {}

int runCommandLine(int argc, char* argv[]) {
    if (std::strcmp(argv[1], "add") != 0) return 64;
    std::vector<const char*> items;
    for (int given; (given = getopt_long(argc - 1, argv + 1, "", options, nullptr)) != -1;) {
        if (given != 'i') return 64;
        items.push_back(optarg);
    }
    if (optind != argc - 1) return 64;
    takeItems(static_cast<long>(items.size()), items.empty() ? "" : items.back());
    return 0;
}

void printHelp() {
    std::fprintf(stdout, "\nadd [ --item <item>  ] \n  Add the items \n");
    std::fprintf(stdout, "    item  -  An item to add, as often as needed\n\n");
}
