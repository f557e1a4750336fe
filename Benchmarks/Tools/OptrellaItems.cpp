#include <Optrella/Optrella.hpp>

#include "Tool.hpp"

using namespace Optrella;

namespace {

const ParameterNone add{{"add"}, ""};
const ParameterString item{{"--item"}, "item", "An item to add, as often as needed"};

const CommandLinePossibility commandLines[] = {
    {false,
     {add},
     {item},
     "Add the items",
     false,
     [](const Parameters& given) {
         long count = 0;
         const char* last = "";
         for (const ParameterProtocol& each : given) {
             if (!each.isEqualTo(item)) continue;
             ++count;
             last = each.common().userValue.c_str();
         }
         takeItems(count, last);
     }},
};

}  // namespace

void declareCommands() {}

int runCommandLine(int argc, char* argv[]) {
    return parse(commandLines, argc, argv) == parsingError::NoError ? 0 : 64;
}

void printHelp() { displayHelp(commandLines); }
