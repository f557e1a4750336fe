// Tool.hpp - a tool as its author describes it: the declarations, and how they are spelled.
//
// The declarations are those that parse takes. What stands beside them says what people expect of a
// command line: which parameters may go without their tags, which may be given again, what lists
// their values. runTool, at the end, is a tool's whole main. The other functions over a Tool are in
// headers of their own: Explain.hpp, Complete.hpp, Lint.hpp, HelpPage.hpp, CompletionScript.hpp,
// ManualPage.hpp, Description.hpp. They print nothing, run no action, stop at nothing that a
// declaration says, and are safe on any thread. Nothing of this is linked into a tool that does not
// use it.

#ifndef OPTRELLA_TOOL_HPP
#define OPTRELLA_TOOL_HPP

#include <cstdint>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

#include "Optrella/CommandLine.hpp"
#include "Optrella/Export.hpp"
#include "Optrella/Parameters.hpp"
#include "Optrella/Text.hpp"
#include "Optrella/Tool/CommandLines.hpp"
#include "Optrella/Tool/Lister.hpp"
#include "Optrella/Tool/ValueParameter.hpp"

namespace Optrella {

// How the arguments are read.
enum class Spelling : std::uint8_t {
    // As people write them: `--name=value`, joined short options, `--` before what is no option,
    // operands without their tags; each parameter once.
    conventional,
    // As parse reads them: each argument is a tag, or the value of the tag before it.
    exact,
};

// How many arguments an operand takes.
enum class Takes : std::uint8_t {
    one,
    many,  // one after the other; only the last operand of a declaration
    rest,  // all that follow, whatever they are: another command's line
};

// A parameter whose tag may be left out. It is one in every declaration that declares it.
class OPTRELLA_API Operand : public Internal::ValueParameter {
public:
    // Name the parameter, of any kind that takes a value, by its first tag.
    template <Internal::NamesCommon Kind>
    Operand(const Kind& parameter, Takes takes = Takes::one) noexcept
        : ValueParameter(parameter.common), takes_(takes) {
        static_assert(!std::is_same_v<Kind, ParameterNone>,
                      "an operand takes a value: a flag, which takes none, cannot be one");
    }
    Operand(const ParameterProtocol& parameter, Takes takes = Takes::one) noexcept
        : ValueParameter(parameter.common()), takes_(takes) {}

    // Returns how many arguments it takes.
    [[nodiscard]] Takes takes() const noexcept { return takes_; }

private:
    Takes takes_;
};

// A parameter that may be given more than once: fetchAllStrings and its like return all values.
class OPTRELLA_API Repeated : public Internal::ValueParameter {
public:
    // Name the parameter, of any kind that takes a value, by its first tag.
    template <Internal::NamesCommon Kind>
    Repeated(const Kind& parameter) noexcept : ValueParameter(parameter.common) {
        static_assert(!std::is_same_v<Kind, ParameterNone>,
                      "a flag may always be given again: name parameters that take a value");
    }
    Repeated(const ParameterProtocol& parameter) noexcept : ValueParameter(parameter.common()) {}
};

// A parameter, and what lists its values while a command line is being typed. The list is asked
// for only then, and may be long or empty.
class OPTRELLA_API Completer : public Internal::ValueParameter {
public:
    // The lister is anything that can be called without arguments and returns a range of texts or
    // strings; copies of the completer share it.
    template <Internal::NamesCommon Kind, class Callable>
    Completer(const Kind& parameter, Callable&& lister) noexcept
        : ValueParameter(parameter.common), lister_(std::forward<Callable>(lister)) {
        static_assert(!std::is_same_v<Kind, ParameterNone>,
                      "a completer lists values: a flag, which takes none, cannot have one");
    }
    template <class Callable>
    Completer(const ParameterProtocol& parameter, Callable&& lister) noexcept
        : ValueParameter(parameter.common()), lister_(std::forward<Callable>(lister)) {}

    // Asks the lister. An exception that leaves it ends the process.
    [[nodiscard]] std::vector<Text> values() const noexcept { return lister_(); }

private:
    Internal::Lister lister_;
};

// What a tool is: made with designated initialisers, copied and kept as a value.
//
//     const Tool tool{.name = "items", .summary = "Manage items.", .commandLines = commandLines};
struct OPTRELLA_API Tool {
    Text name = "";                              // as it is typed
    Text version = "";                           // empty: the tool says none
    Text summary = "";                           // a sentence
    CommandLines commandLines{};                 // views what has a name, keeps what has none
    std::vector<Operand> operands{};             // in the order of the line
    std::vector<Repeated> repeated{};            // may be given more than once
    std::vector<Completer> completers{};         // list values
    Spelling spelling = Spelling::conventional;  // parse itself always reads exactly
    int manualSection = 1;                       // 1, or 8 for administrators' commands
};

// Does all that a tool's main does, and returns the status for it to return.
//
//     int main(int argc, char* argv[]) { return runTool(tool, argc, argv); }
//
// The arguments are read conventionally, whatever `spelling` says. The one command that fits runs
// on a thread of its own, as with parse, once all that its declaration says holds. A root command
// is handed over to sudo, as with RootCommands::handToSudo: then this does not return. Where
// nothing fits, what is wrong is said on standard error, unless the line asks what every tool can
// answer, on standard output: --help, -h, help, --version, --completion SHELL, --manual,
// --describe.
//
//   0 to 255  what the action has left in CommandLineExitStatus; 0 when it left nothing there, and
//             255 when that is no status
//   64        the line is wrong: nothing has run
//   77        root is needed, and sudo cannot take over
//
// A shell that completes a line asks by OPTRELLA_COMPLETE in the environment, and is answered
// before anything else. REQUIRES: no other thread that reads the environment is running yet. STOPS
// the process when a thread cannot be started, when an argument is a null pointer, and when an
// operation of a tool's own kind throws.
[[nodiscard]] OPTRELLA_API int runTool(const Tool& tool, int argc,
                                       const char* const* argv) noexcept;
[[nodiscard]] OPTRELLA_API int runTool(const Tool& tool, ArgumentList passedIn) noexcept;

}  // namespace Optrella

#endif
