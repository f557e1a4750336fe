#include <Optrella/Optrella.hpp>

using namespace Optrella;

int main(int argc, char* argv[]) {
    const CommandLinePossibility commandLines[] = {
        {false, {ParameterNone{{"list"}, ""}}, {}, "List the items.", false, [](const Parameters&) {
         }}};
    if (parse(commandLines, argc, argv) != parsingError::NoError) displayHelp(commandLines);
}
