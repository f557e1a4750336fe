// greet - a whole tool in twenty lines.
#include <Optrella/Optrella.hpp>
#include <cstdio>

using namespace Optrella;

constexpr ParameterString greet{{"greet", "-g"}, "name", "Whom to greet"};

void sayHello(const Parameters& given) {
    std::printf("Hello, %s!\n", fetchString(greet, given).c_str());
}

constinit const CommandLinePossibility commandLines[] = {
    {/* requiresRoot */ false, {greet}, {}, "Greet somebody.", /* hidden */ false, sayHello}};

int main(int argc, char* argv[]) {
    if (parse(commandLines, argc, argv) == parsingError::NoError) return 0;
    displayHelp(commandLines);
    return 64;
}
