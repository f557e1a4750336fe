// Wall time of the parts of the tool of 100 commands, in one process.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

#include "Tools/Tool.hpp"

void takeCommand(const char*, const char*, long, const char*, const char*, bool) {}

namespace {

int argumentCount;
char** arguments;

// With the worker's thread and an action that fetches all five values.
void run(benchmark::State& state) {
    for (auto each : state) {
        if (runCommandLine(argumentCount, arguments) != 0) std::abort();
    }
}
BENCHMARK(run)->UseRealTime();

void help(benchmark::State& state) {
    for (auto each : state) printHelp();
}
BENCHMARK(help);

}  // namespace

int main(int argc, char* argv[]) {
    argumentCount = argc;
    arguments = argv;
    char program[] = "wall-time";
    char format[] = "--benchmark_format=json";
    char output[] = "--benchmark_out=wall-time.json";
    char* own[] = {program, format, output, nullptr};
    int count = 3;
    benchmark::Initialize(&count, own);
    if (std::freopen("/dev/null", "w", stdout) == nullptr) return 1;
    benchmark::RunSpecifiedBenchmarks();
}
