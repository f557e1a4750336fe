// The test of what sessions declares: that nothing of it can be read in two ways.

#include <Optrella/Lint.hpp>
#include <cstdio>

#include "Commands.hpp"

int main() {
    const Optrella::Findings findings = lint(sessionsTool());
    for (const auto& each : findings) std::printf("%s\n", each.sentence.c_str());
    return findings.empty() ? 0 : 1;
}
