// volumes - keeps the volumes of a machine in the file volumes.txt, and says on standard error why
// a command line does not fit.

#include <sysexits.h>

#include <Optrella/Explain.hpp>
#include <Optrella/Optrella.hpp>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <string>

using namespace Optrella;

namespace {

constexpr ParameterString create{{"create"}, "name", "Name of the volume"};
constexpr ParameterString grow{{"grow"}, "name", "Name of the volume"};
constexpr ParameterString remove{{"remove"}, "name", "Name of the volume"};
constexpr ParameterNumber size{{"-s", "--size"}, "GB", 1, 4096, "Its size, in gigabytes"};
constexpr ParameterNumber by{{"--by"}, "GB", 1, 4096, "How many gigabytes it gains"};
constexpr ParameterNone list{{"list"}, ""};
constexpr ParameterNone orders[] = {{{"name"}, ""}, {{"size"}, ""}};
constexpr ParameterList order{{"-o", "--order"}, orders, "order", "Order of the list"};
constexpr ParameterNone help{{"help", "--help"}, ""};

// ---- The volumes ----

constexpr const char* path = "volumes.txt";

std::map<std::string, long long> readVolumes() {
    std::map<std::string, long long> volumes;
    std::ifstream file(path);
    std::string name;
    for (long long gigabytes = 0; file >> name >> gigabytes;) volumes[name] = gigabytes;
    return volumes;
}

void writeVolumes(const std::map<std::string, long long>& volumes) {
    std::ofstream file(path);
    for (const auto& [name, gigabytes] : volumes) file << name << ' ' << gigabytes << '\n';
}

// ---- Actions: the status is 0 unless they set it ----

void fail(const std::string& name, const char* why) {
    std::cerr << "volumes: " << name << ' ' << why << '\n';
    CommandLineExitStatus::shared().exitStatus = EX_DATAERR;
}

void createVolume(const Parameters& given) {
    auto volumes = readVolumes();
    const std::string name = fetchString(create, given).str();
    if (!volumes.emplace(name, fetchNumber(size, given)).second) return fail(name, "exists");
    writeVolumes(volumes);
}

void growVolume(const Parameters& given) {
    auto volumes = readVolumes();
    const std::string name = fetchString(grow, given).str();
    const auto found = volumes.find(name);
    if (found == volumes.end()) return fail(name, "does not exist");
    found->second += fetchNumber(by, given);
    writeVolumes(volumes);
}

void removeVolume(const Parameters& given) {
    auto volumes = readVolumes();
    const std::string name = fetchString(remove, given).str();
    if (volumes.erase(name) == 0) return fail(name, "does not exist");
    writeVolumes(volumes);
}

void listVolumes(const Parameters& given) {
    const auto chosen = fetchOptionalListOption(order, given);
    std::multimap<long long, std::string> lines;
    for (const auto& [name, gigabytes] : readVolumes()) {
        const bool isBySize = chosen && chosen->firstTag() == "size";
        lines.emplace(isBySize ? gigabytes : 0, name + " " + std::to_string(gigabytes) + " GB");
    }
    for (const auto& [key, line] : lines) std::printf("%s\n", line.c_str());
}

void showHelp(const Parameters& given);

// ---- The declarations ----

constinit const CommandLinePossibility commandLines[] = {
    {false, {create, size}, {}, "Create a volume.", false, createVolume},
    {false, {grow, by}, {}, "Make a volume larger.", false, growVolume},
    {false, {remove}, {}, "Remove a volume.", false, removeVolume},
    {false, {list}, {order}, "List the volumes.", false, listVolumes},
    {false, {help}, {}, "Show this.", false, showHelp},
};

void showHelp(const Parameters&) { displayHelp(commandLines); }

}  // namespace

int main(int argc, char* argv[]) {
    // parse reads exactly, so what it does not take is explained in that spelling.
    const Tool tool{.name = "volumes", .commandLines = commandLines, .spelling = Spelling::exact};
    const Explanation explanation = explain(tool, argc, argv);
    for (const Text& line : words(tool, argc, argv, explanation)) {
        std::cerr << line << '\n';
    }
    if (explanation.outcome != Outcome::runs) return EX_USAGE;

    CommandLineExitStatus::shared().exitStatus = EX_OK;
    if (parse(commandLines, argc, argv) != parsingError::NoError) return EX_USAGE;
    return static_cast<int>(CommandLineExitStatus::shared().exitStatus);
}
