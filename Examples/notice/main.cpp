// notice - shows the notice of a machine to everybody, and lets root change it.
#include <Optrella/Optrella.hpp>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

using namespace Optrella;

namespace {

using enum ParameterFileURL::urlType;
using enum ParameterFileURL::existState;

constexpr ParameterNone show{{"show"}, ""};
constexpr ParameterString change{{"change"}, "text", "What everybody shall read"};
constexpr ParameterFileURL where{{"--file"}, file, vague, "path", "Instead of /etc/motd"};

std::string path(const Parameters& given) {
    const auto url = fetchOptionalURL(where, given);
    return url ? url->path().str() : "/etc/motd";
}

// Leaves the status, and says why where it is not 0.
void finish(bool isDone, const Text& complaint) {
    CommandLineExitStatus::shared().exitStatus = isDone ? EXIT_SUCCESS : EXIT_FAILURE;
    if (!isDone) outputErrorMessage(complaint);
}

void showNotice(const Parameters& given) {
    std::ifstream notice(path(given));
    for (std::string line; std::getline(notice, line);) std::printf("%s\n", line.c_str());
    finish(notice.eof(), "The notice cannot be read.");
}

void changeNotice(const Parameters& given) {
    std::ofstream notice(path(given));
    notice << fetchString(change, given) << '\n';
    notice.close();
    finish(notice.good(), "The notice cannot be written.");
}

constinit const CommandLinePossibility commandLines[] = {
    {false, {show}, {where}, "Show the notice.", false, showNotice},
    {true, {change}, {where}, "Change the notice.", false, changeNotice},
};

}  // namespace

int main(int argc, char* argv[]) {
    // sudo takes the place of this process for `change`, and decides and asks as it always does.
    if (parse(commandLines, argc, argv, RootCommands::handToSudo) == parsingError::NoError) {
        return static_cast<int>(CommandLineExitStatus::shared().exitStatus);
    }
    displayHelp(commandLines);
    return 64;
}
