#include <Optrella/Tool.hpp>

using namespace Optrella;

int main(int argc, char* argv[]) {
    const CommandLinePossibility commandLines[] = {
        {false, {ParameterNone{{"list"}, ""}}, {}, "List the items.", false, [](const Parameters&) {
         }}};
    return runTool({.name = "items", .commandLines = commandLines}, argc, argv);
}
