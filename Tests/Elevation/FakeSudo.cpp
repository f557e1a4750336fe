// Runs in the place of sudo, for ElevationTests.py: does the steps that a file holds.

#include <fstream>
#include <string>
#include <vector>

#include "Elevation/Steps.hpp"

int main(int argc, char* argv[]) {
    const std::vector<std::string> arguments(argv, argv + argc);
    std::vector<std::string> script;
    {
        std::ifstream lines("/run/elevation/script");
        for (std::string line; std::getline(lines, line);) script.push_back(line);
    }
    Tests::Steps steps(arguments);
    for (const std::string& step : script) steps.take(step);
}
