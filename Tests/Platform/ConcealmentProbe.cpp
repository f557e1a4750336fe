// Holds a pipe and a word in memory, and conceals itself as it is told on standard input:
//     +  begins a concealment    -  ends the last one    c  closes itself    .  ends the process
// First, and after each, it writes a line: the pipe's end to read from, the word's address and
// size.

#include <sys/prctl.h>

#include <cstdint>
#include <cstdio>
#include <list>
#include <string>

#include "Optrella/Platform/Concealment.hpp"
#include "Optrella/Platform/Descriptor.hpp"

int main() {
    using namespace Optrella::Platform;
    const std::string word = "a word that stands in this process alone";
    const std::optional<Pipe> pipe = makePipe();
    std::list<Concealment> concealments;
    for (int command = '='; command != '.' && command != EOF; command = std::getchar()) {
        if (command == '+') concealments.emplace_back();
        if (command == '-') concealments.pop_back();
        if (command == 'c') ::prctl(PR_SET_DUMPABLE, 0);
        std::printf("%d %ju %zu\n", pipe->readEnd.number(),
                    static_cast<std::uintmax_t>(reinterpret_cast<std::uintptr_t>(word.data())),
                    word.size());
        std::fflush(stdout);
    }
}
