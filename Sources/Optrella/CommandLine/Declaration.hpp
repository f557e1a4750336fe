// Declaration.hpp - reads the fields of a declaration, which tools can only make and hand on.

#ifndef OPTRELLA_COMMANDLINE_DECLARATION_HPP
#define OPTRELLA_COMMANDLINE_DECLARATION_HPP

#include "Optrella/CommandLine.hpp"

namespace Optrella::Internal {

struct Declaration {
    static KeptList required(const CommandLinePossibility& from) {
        return from.parameters_.required();
    }
    static KeptList optional(const CommandLinePossibility& from) {
        return from.parameters_.optional();
    }
    static const TagFilter& tags(const CommandLinePossibility& from) {
        return from.parameters_.tags();
    }
    static const Text& help(const CommandLinePossibility& from) { return from.help_; }
    static const Action& run(const CommandLinePossibility& from) { return from.run_; }
    static bool requiresRoot(const CommandLinePossibility& from) { return from.requiresRoot_; }
    static bool hidden(const CommandLinePossibility& from) { return from.hidden_; }
};

}  // namespace Optrella::Internal

#endif
