// sessions - keeps the sessions of a machine: a tool as people expect one, in one call.

#include "Commands.hpp"

int main(int argc, char* argv[]) { return runTool(sessionsTool(), argc, argv); }
