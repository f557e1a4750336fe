#include <Optrella/Optrella.hpp>
#include <Optrella/Tool.hpp>
#include <cstdio>

#ifndef SECTION
#define SECTION 1
#endif

using namespace Optrella;

namespace {

constexpr ParameterNone list{{"list"}, ""}, remove{{"remove"}, ""};
constexpr ParameterString item{{"--item"}, "item", "What to remove"};

constinit const CommandLinePossibility commandLines[] = {
    {false, {list}, {}, "List the items.", false, [](const Parameters&) { std::puts("no items"); }},
    {false, {remove, item}, {}, "Remove an item.", false, [](const Parameters&) {}},
};

}  // namespace

int main(int argc, char* argv[]) {
    return runTool({.name = "items",
                    .version = "1.4.2",
                    .summary = "Manage the items.",
                    .commandLines = commandLines,
                    .operands = {item},
                    .manualSection = SECTION},
                   argc, argv);
}
