#include <Optrella/Optrella.hpp>
#include <cstdio>

using namespace Optrella;

namespace {

const ParameterNone greet{{"greet"}, ""};
const ParameterString name{{"-n", "--name"}, "name", "Whom to greet"};

const CommandLinePossibility commandLines[] = {
    {false,
     {greet, name},
     {},
     "Greet somebody.",
     false,
     [](const Parameters& given) {
         std::printf("Hello, %s!\n", fetchString(name, given).c_str());
     }},
};

}  // namespace

int main(int argc, char* argv[]) {
    return parse(commandLines, argc, argv) == parsingError::NoError ? 0 : 64;
}
