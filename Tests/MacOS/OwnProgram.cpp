// Lets the stand-ins name the program that runs as Linux knows it.

#include <sys/auxv.h>

#include <filesystem>

#include "Support/MacOS/Services.hpp"

namespace {

[[gnu::constructor]] void nameProgram() {
    Tests::services().programStarted = reinterpret_cast<const char*>(::getauxval(AT_EXECFN));
    Tests::services().programFile = std::filesystem::read_symlink("/proc/self/exe");
}

}  // namespace
