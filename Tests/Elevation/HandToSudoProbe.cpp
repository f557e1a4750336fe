// A tool that leaves its root commands to sudo, for HandToSudoTests.py.
//
//   root [-d STEP]... [-t TEXT]... [-f FILE]   does the steps, as root
//   user [-d STEP]...                          does the steps
//
// Each line of BEFORE in its environment is done before parse is called: a step, or
//
//   chdir PATH    goes to another directory
//   block         blocks every signal
//   print TEXT    leaves a text in the buffer of standard output
//   overwrite     overwrites the arguments, of which it has a copy
//   nul           adds a text with a NUL
//   again PATH    starts itself again by this path, without BEFORE
//
// Ends with 77 when no line matches, and with 78 for whatever else parse may answer. Started by the
// name "whole" it calls runTool instead.

#include <unistd.h>

#include <Optrella/Optrella.hpp>
#include <Optrella/Tool.hpp>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "Elevation/Steps.hpp"
#include "Support/Probe.hpp"

using namespace Optrella;
using namespace std::string_literals;

namespace {

const ParameterNone asRoot{{"root"}, ""};
const ParameterNone asUser{{"user"}, ""};
const ParameterString step{{"-d"}, "step", "What to do"};
const ParameterFileURL file{{"-f"},
                            ParameterFileURL::urlType::file,
                            ParameterFileURL::existState::exist,
                            "file",
                            "A file that must be there"};
const ParameterString text{{"-t"}, "text", "Any text"};

std::vector<std::string> arguments;

void takeSteps(const Parameters& given) {
    Tests::Steps steps(arguments);
    for (const ParameterProtocol& parameter : given) {
        if (parameter.isEqualTo(step)) steps.take(parameter.common().userValue.str());
    }
}

const CommandLinePossibility commandLines[] = {
    {true, {asRoot}, {step, text, file}, "Do something as root.", false, takeSteps},
    {false, {asUser}, {step}, "Do something.", false, takeSteps},
};

void blockAll() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, nullptr);
}

void prepare(const std::string& wish, char** words) {
    const std::size_t end = wish.find(' ');
    const std::string name = wish.substr(0, end);
    const std::string word = end == std::string::npos ? ""s : wish.substr(end + 1);
    if (name == "chdir") {
        if (::chdir(word.c_str()) != 0) Tests::giveUp();
    } else if (name == "block") {
        blockAll();
    } else if (name == "print") {
        std::fputs(word.c_str(), stdout);
    } else if (name == "overwrite") {
        for (; *words != nullptr; ++words) std::memset(*words, 'x', std::strlen(*words));
    } else if (name == "again") {
        ::unsetenv("BEFORE");
        ::execv(word.c_str(), words);
        Tests::giveUp();
    } else if (name == "nul") {
        arguments.insert(arguments.end(), {"-t", "a\0b"s});
    } else {
        Tests::Steps(arguments).take(wish);
    }
}

}  // namespace

int main(int argc, char* argv[]) {
    arguments.assign(argv, argv + argc);
    const char* const before = std::getenv("BEFORE");
    std::istringstream wishes(before != nullptr ? before : "");
    for (std::string wish; std::getline(wishes, wish);) prepare(wish, argv);
    if (std::string_view(argv[0]).ends_with("whole")) {
        return runTool({.name = "whole", .commandLines = commandLines, .repeated = {step, text}},
                       argc, argv);
    }
    const parsingError answer = before != nullptr
                                    ? parse(commandLines, arguments, RootCommands::handToSudo)
                                    : parse(commandLines, argc, argv, RootCommands::handToSudo);
    if (answer == parsingError::NoMatchingLine) return 77;
    return answer == parsingError::NoError ? EXIT_SUCCESS : 78;
}
