// CommandLine.hpp - the steps of parse, and what they read of a declaration.

#ifndef OPTRELLA_INTERNAL_COMMANDLINE_HPP
#define OPTRELLA_INTERNAL_COMMANDLINE_HPP

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "Optrella/CommandLine.hpp"

namespace Optrella::Internal {

// Reads the fields of a declaration, which tools can only make and hand on.
struct Declaration {
    static const Parameters& required(const CommandLinePossibility& from) { return from.required_; }
    static const Parameters& optional(const CommandLinePossibility& from) { return from.optional_; }
    static const Text& help(const CommandLinePossibility& from) { return from.help_; }
    static const Action& run(const CommandLinePossibility& from) { return from.run_; }
    static const Marks& absentMarks(const CommandLinePossibility& from) {
        return from.absentMarks_;
    }
    static bool requiresRoot(const CommandLinePossibility& from) { return from.requiresRoot_; }
    static bool hidden(const CommandLinePossibility& from) { return from.hidden_; }
};

// A declaration that the arguments fit, and copies of the given parameters with their values: the
// required ones first, each group in the order of the arguments.
struct Fit {
    const CommandLinePossibility* declaration;
    Parameters given;
    std::size_t requiredCount;
};

// Whether the arguments (without the program name) fit the declaration. Prints a line when the
// value of the last tag is missing.
[[nodiscard]] std::optional<Fit> couldRun(const CommandLinePossibility& commandLine,
                                          std::span<const Text> passedLine);

// Asks every given parameter whether its value is acceptable, prints a line for each that is not,
// and returns whether all are.
[[nodiscard]] bool validateParameters(const Parameters& given);

// Whether the command may run with the rights that the user has; prints a line when it may not.
// Ends the process with status 0 after the tool has been run again as root.
[[nodiscard]] bool validatePermissions(const CommandLinePossibility& commandLine);

// The arguments as they are shown in a diagnostic: ["add", "say \"x\""].
[[nodiscard]] std::string rendered(std::span<const Text> arguments);

}  // namespace Optrella::Internal

#endif
