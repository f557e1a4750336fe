// my-stock - what shells_test.py completes: the words that shells find difficult.
//
// With RECORD in its environment it writes the arguments that it gets into that file, each with a
// NUL after it.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "Optrella/Tool.hpp"

namespace {

using namespace Optrella;
using enum ParameterFileURL::urlType;
using enum ParameterFileURL::existState;

const ParameterNone list{{"list"}, ""}, open{{"open"}, ""}, remove{{"remove"}, ""},
    load{{"import"}, ""}, place{{"place"}, ""}, find{{"find"}, ""}, run{{"run"}, ""},
    note{{"note"}, ""}, add{{"add"}, ""}, set{{"set"}, ""}, migrate{{"db:migrate"}, ""},
    seed{{"db:seed"}, ""}, bill{{"caf\u00e9"}, ""}, secret{{"secret"}, ""};

const ParameterNone orders[] = {{{"name"}, "By name, it's [quick]: 100% 'sure'"},
                                {{"date"}, R"(By date, $(date) `date` \n "newest")"},
                                {{"size:up"}, "Smallest\nfirst\x1b[31m"},
                                {{"size:down"}, "Largest\tfirst\u0085"},
                                {{"key=value"}, ""}};
const ParameterNone settings[] = {{{"colour=always"}, "Always:\\:"},
                                  {{"colour=never"}, "Never"},
                                  {{"host:port"}, "Both"},
                                  {{"@home"}, "At home"}};

const ParameterList sort{{"-s", "--sort"}, orders, "order", "Order of the 'list'"};
const ParameterNumber limit{{"-n", "--limit"}, "count", 1, 100, "At most so many"};
const ParameterNone all{{"-a", "--all"}, "Show [all]: hidden ones, too"};
const ParameterNone yes{{"-y", "--yes"}, "Do not ask"};
const ParameterList setting{{"--setting"}, settings, "setting", "What to set"};
const ParameterString item{{"--item"}, "item", "An item"};
const ParameterString items{{"--items"}, "item", "Items"};
const ParameterFileURL source{{"--source"}, file, exist, "file", "What to read"};
const ParameterFileURL target{{"--to"}, folder, exist, "directory", "Where it goes"};
const ParameterFileURL where{{"--in"}, fileOrFolder, vague, "path", "Where to look"};
const ParameterFileURL log{{"--log"}, file, vague, "file", "Where to write"};
const ParameterString command{{"--command"}, "command", "What to run"};
const ParameterString label{{"-l", "--label"}, "label", "A label: 100% free"};
const ParameterString text{{"--text"}, "text", "Any text"};

// What a shell must quote, one way or another; the last four are not offered.
const std::vector<std::string> stock{"plain",
                                     "plain-er",
                                     "two words",
                                     "two  spaces",
                                     " leading",
                                     "trailing ",
                                     "colon:a b",
                                     "colon:ab",
                                     "equals=a",
                                     "=equals",
                                     "it's",
                                     "double\"quote",
                                     "back\\slash",
                                     "dollar$HOME",
                                     "tick`date`",
                                     "sub$(date)",
                                     "br[ack]et",
                                     "cur{l,y}",
                                     "star*",
                                     "what?",
                                     "semi;colon",
                                     "am&p",
                                     "pi|pe",
                                     "les<s>",
                                     "par(en)",
                                     "#hash",
                                     "x#hash",
                                     "~tilde",
                                     "ex!clam",
                                     "per%cent",
                                     "per%%",
                                     "at@sign",
                                     "@at",
                                     "ca^ret",
                                     "com,ma",
                                     "caf\u00e9 cr\u00e8me",
                                     "\u65e5\u672c\u8a9e",
                                     "raw\xff\xfe",
                                     "x",
                                     "[x]",
                                     "-dash",
                                     "tab\tbed",
                                     "line\nend",
                                     ""};

void nothing(const Parameters&) {}

const CommandLinePossibility commandLines[] = {
    {false, {list}, {sort, limit, all}, "List the items.", false, nothing},
    {false, {open, item}, {all}, "Open an item.", false, nothing},
    {true, {remove, items}, {yes}, "Remove items.", false, nothing},
    {false, {load, source}, {yes, log}, "Read items from a file.", false, nothing},
    {false, {place, target}, {}, "Say where items go.", false, nothing},
    {false, {find, where}, {}, "Find items.", false, nothing},
    {false, {run, command}, {label}, "Run a command.", false, nothing},
    {false, {note, add, text}, {label}, "Add a note.", false, nothing},
    {false, {set, setting}, {}, "Change a setting.", false, nothing},
    {false, {migrate}, {}, "Bring the store up to date.", false, nothing},
    {false, {seed}, {}, "Fill the store.", false, nothing},
    {false, {bill}, {}, "Ask for the bill.", false, nothing},
    {false, {secret}, {}, "Nobody knows.", true, nothing},
};

std::vector<Text> listStock() { return {stock.begin(), stock.end()}; }

const Tool tool{
    .name = "my-stock",
    .summary = "Manage a store.",
    .commandLines = commandLines,
    .operands =
        {item, source, target, where, text, setting, {items, Takes::many}, {command, Takes::rest}},
    .repeated = {label},
    .completers = {{item, listStock}, {items, listStock}}};

int record(const char* path, int argc, char* argv[]) {
    std::FILE* file = std::fopen(path, "wb");
    if (file == nullptr) return 1;
    for (int i = 1; i < argc; ++i) {
        if (std::fputs(argv[i], file) < 0 || std::fputc('\0', file) < 0) return 1;
    }
    return std::fclose(file);
}

}  // namespace

int main(int argc, char* argv[]) {
    const bool isAskedForScript = argc == 3 && std::strcmp(argv[1], "--completion") == 0;
    const char* path = std::getenv("RECORD");
    if (std::getenv("OPTRELLA_COMPLETE") != nullptr) {
        std::fprintf(stderr, "noise");
    } else if (path != nullptr && !isAskedForScript) {
        return record(path, argc, argv);
    }
    return runTool(tool, argc, argv);
}
