#include <Optrella/Optrella.hpp>

#include "Tool.hpp"

using namespace Optrella;

namespace {

constexpr ParameterNone add{{"add"}, ""};
constexpr ParameterString item{{"--item"}, "item", "An item to add, as often as needed"};

}  // namespace

// The action, up to the values.
extern "C" void fetchValues(const Parameters& given) {
    long count = 0;
    const char* last = "";
    for (const ParameterProtocol& each : given) {
        if (!each.isEqualTo(item)) continue;
        ++count;
        last = each.common().userValue.c_str();
    }
    takeItems(count, last);
}

namespace {

constinit const CommandLinePossibility commandLines[] = {
    {false, {add}, {item}, "Add the items", false, fetchValues}};

}  // namespace

void declareCommands() {}

int runCommandLine(int argc, char* argv[]) {
    return parse(commandLines, argc, argv) == parsingError::NoError ? 0 : 64;
}

void printHelp() { displayHelp(commandLines); }
