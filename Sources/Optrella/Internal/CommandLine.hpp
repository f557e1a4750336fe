// CommandLine.hpp - the steps of parse, and what they read of a declaration.

#ifndef OPTRELLA_INTERNAL_COMMANDLINE_HPP
#define OPTRELLA_INTERNAL_COMMANDLINE_HPP

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
    static bool requiresRoot(const CommandLinePossibility& from) { return from.requiresRoot_; }
    static bool hidden(const CommandLinePossibility& from) { return from.hidden_; }
};

// The two steps of parse, for one declaration: whether it fits, and the filled-in copy.
//
// Whether the arguments (without the program name) fit the declaration: a copy of it that lists the
// given parameters with their values, in the order of the arguments; or nothing. Prints a line when
// the value of the last tag is missing.
[[nodiscard]] std::optional<CommandLinePossibility> couldRun(
    const CommandLinePossibility& commandLine, std::span<const Text> passedLine);

// Asks every given parameter whether its value is acceptable, prints a line for each that is not,
// and returns whether all are.
[[nodiscard]] bool validateParameters(const CommandLinePossibility& commandLine);

// Whether the command may run with the rights that the user has; prints a line when it may not.
// Ends the process with status 0 after the tool has been run again as root.
[[nodiscard]] bool validatePermissions(const CommandLinePossibility& commandLine);

// The arguments as they are shown in a diagnostic: ["add", "say \"x\""].
[[nodiscard]] std::string rendered(std::span<const Text> arguments);

}  // namespace Optrella::Internal

#endif
