// OwnProgram.hpp - the file of the program that runs.

#ifndef OPTRELLA_PLATFORM_OWNPROGRAM_HPP
#define OPTRELLA_PLATFORM_OWNPROGRAM_HPP

#include <optional>
#include <string>

namespace Optrella::Platform {

// What the system says of the file.
struct ProgramFile {
    std::string startedAs;  // the path that was started, from the working directory of the start
    std::string path;       // where the file is now, as far as the system knows
    std::string running;    // leads to the file, whatever has become of its path
};

// Returns nothing when the system cannot say, and when the file that it runs is not the program's
// own, but a loader that was given the program as an argument.
[[nodiscard]] std::optional<ProgramFile> programFile();

// Returns an absolute path that leads to the program that runs: the one that it was started by,
// while that still leads to it, so that a link keeps its name; else the file's own. Nothing when
// neither leads there: the file was deleted or replaced.
[[nodiscard]] std::optional<std::string> ownProgram();

}  // namespace Optrella::Platform

#endif
