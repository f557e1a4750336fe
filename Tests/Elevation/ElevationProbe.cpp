// A tool with root commands, for ElevationTests.py.
//
//   root [-d STEP]... [-t TEXT]...   does the steps, as root
//   user [-d STEP]... [-t TEXT]...   does the steps
//   again -n COUNT [-d STEP]...      asks for the password and runs itself as root so often, and
//                                    does the steps before and after that
//
// With OVERWRITES_ARGUMENTS in its environment it overwrites its arguments before it uses them.

#include <Optrella/Optrella.hpp>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "Elevation/Steps.hpp"
#include "Optrella/Elevation/PromptForPassword.hpp"

using namespace Optrella;

namespace {

const ParameterNone asRoot{{"root"}, ""};
const ParameterNone asUser{{"user"}, ""};
const ParameterNone again{{"again"}, ""};
const ParameterString step{{"-d"}, "step", "What to do"};
const ParameterString text{{"-t"}, "text", "Any text"};
const ParameterNumber count{{"-n"}, "count", 1, 1000, "How often"};

std::vector<std::string> arguments;

void takeSteps(const Parameters& given) {
    Tests::Steps steps(arguments);
    for (const ParameterProtocol& parameter : given) {
        if (parameter.isEqualTo(step)) steps.take(parameter.common().userValue.str());
    }
}

// What validatePermissions does, without the end of the process.
void elevateAgain(const Parameters& given) {
    takeSteps(given);
    for (auto left = fetchNumber(count, given); left > 0; --left) {
        auto password = PromptForPassword::prompt();
        if (!password) std::exit(EXIT_FAILURE);
        PromptForPassword::rerun(*std::move(password), arguments);
    }
    takeSteps(given);
}

const CommandLinePossibility commandLines[] = {
    {true, {asRoot}, {step, text}, "Do something as root.", false, takeSteps},
    {false, {asUser}, {step, text}, "Do something.", false, takeSteps},
    {false, {again, count}, {step}, "Become root often.", false, elevateAgain},
};

void overwrite(std::span<char*> words) {
    for (char*& word : words) {
        std::memset(word, 'x', std::strlen(word));
        word = nullptr;
    }
}

}  // namespace

int main(int argc, char* argv[]) {
    arguments.assign(argv, argv + argc);
    if (std::getenv("OVERWRITES_ARGUMENTS") != nullptr) {
        overwrite({argv, static_cast<std::size_t>(argc)});
    }
    return parse(commandLines, arguments) == parsingError::NoError ? EXIT_SUCCESS : 64;
}
