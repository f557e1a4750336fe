// CommandLineExitStatus.hpp - the exit status slot and error messages.
//
// Both are for the tool alone: nothing in the library but runTool reads or sets the status, and
// nothing reports an error this way.

#ifndef OPTRELLA_COMMANDLINEEXITSTATUS_HPP
#define OPTRELLA_COMMANDLINEEXITSTATUS_HPP

#include <cstdint>

#include "Optrella/Export.hpp"
#include "Optrella/Text.hpp"

namespace Optrella {

// Where an action leaves the status with which the tool is to end. There is one for each copy of
// the library in the process: one, unless both a tool and what it loads at run time were linked
// with the archive, and the tool does not show its symbols (-rdynamic). The slot has no lock: what
// an action writes may be read when parse has returned.
class OPTRELLA_API CommandLineExitStatus {
public:
    // Returns the one slot. Safe on any thread, and as long as the process runs.
    [[nodiscard]] static CommandLineExitStatus& shared() noexcept;

    // -100 until somebody sets it, so that a status that nobody set can be told from success.
    std::int32_t exitStatus = -100;

    CommandLineExitStatus(const CommandLineExitStatus&) = delete;
    CommandLineExitStatus& operator=(const CommandLineExitStatus&) = delete;

private:
    CommandLineExitStatus() = default;
};

// Writes the message to standard error and, in a second write, a line end; nothing is buffered, and
// a failure is not reported. It is recorded in the system log too, at the info level, where the
// message itself counts as private. Safe on any thread; messages of two threads may interleave.
OPTRELLA_API void outputErrorMessage(const Text& message) noexcept;

}  // namespace Optrella

#endif
