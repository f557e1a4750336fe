// CommandLine.hpp - what a tool declares, and parse, which runs the one declaration that fits.
//
// A tool lists every command line that it accepts and hands the list with its arguments to `parse`.
// The declarations are values that parse never changes: the same list serves any number of calls,
// on any number of threads. parse prints its diagnostics to standard output and reports by its
// result; nothing is thrown.

#ifndef OPTRELLA_COMMANDLINE_HPP
#define OPTRELLA_COMMANDLINE_HPP

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <type_traits>
#include <utility>

#include "Optrella/CommandLine/Action.hpp"
#include "Optrella/CommandLine/DeclaredParameters.hpp"
#include "Optrella/CommandLine/KeptParameters.hpp"
#include "Optrella/CommandLine/Ranges.hpp"
#include "Optrella/Export.hpp"
#include "Optrella/Parameters.hpp"
#include "Optrella/Text.hpp"
#include "Optrella/Text/TextBlock.hpp"

namespace Optrella {

namespace Internal {
struct Declaration;  // reads the fields of a CommandLinePossibility
}

// The result of parse. Its cases carry fixed texts: see rawValue.
enum class OPTRELLA_API parsingError : std::uint8_t {
    NoError,           // the action ran
    MissingParameter,  // never returned
    NoMatchingLine,    // not exactly one declaration fits, or it may not run
    NoCommandLine,     // nothing stands after the program name
};

// Returns "Parse successful", "Missing Parameter", "Unknown command line" or "No command line
// specified". STOPS the process when `error` is no case.
[[nodiscard]] OPTRELLA_API Text rawValue(parsingError error) noexcept;
// Returns the case of a text, nothing when it is no case's text.
template <>
[[nodiscard]] OPTRELLA_API std::optional<parsingError> fromRawValue<parsingError>(
    const Text& text) noexcept;

// One command line that a tool accepts.
class OPTRELLA_API CommandLinePossibility {
public:
    // Stores everything as it is, unchecked.
    //   requiresRoot  the command needs administrator rights
    //   required      parameters whose tags must be given
    //   optional      parameters whose tags may be given
    //   help          shown in the help listing
    //   hidden        left out of the help listing
    //   run           the action, anything that can be called with a `const Parameters&`; copies of
    //                 a declaration share it. It is called on a thread of its own while parse
    //                 waits; an exception that leaves it ends the process.
    constexpr CommandLinePossibility(bool requiresRoot,
                                     const Internal::DeclaredParameters& required,
                                     const Internal::DeclaredParameters& optional, Text help,
                                     bool hidden, const Internal::Action& run) noexcept
        : parameters_(required, optional),
          help_(std::move(help)),
          run_(run),
          requiresRoot_(requiresRoot),
          hidden_(hidden) {}

    // Exists for its message alone: of arguments in another order or number the compilers say no
    // more than that they do not fit.
    template <class Any = Internal::AnyArgument>
    CommandLinePossibility(Internal::AnyArgument, Internal::AnyArgument, Internal::AnyArgument,
                           Internal::AnyArgument, Internal::AnyArgument = 0,
                           Internal::AnyArgument = 0, Internal::AnyArgument = 0)
        : CommandLinePossibility(false, {}, {}, "", false, [](const Parameters&) {}) {
        static_assert(!std::is_same_v<Any, Any>,
                      "a declaration needs requiresRoot, required, optional, help, hidden, run");
    }

private:
    friend struct Internal::Declaration;

    Internal::KeptParameters parameters_;
    Text help_;
    Internal::Action run_;
    bool requiresRoot_;
    bool hidden_;
};

// A view of a tool's declarations, for the time of a call: of an array, a vector, a span or a list
// in braces. Not to be kept: it does not keep the declarations alive.
class OPTRELLA_API CommandList {
public:
    // Views no declarations, those from `first` on, those in braces, or a range.
    constexpr CommandList() noexcept = default;
    constexpr CommandList(const CommandLinePossibility* first, std::size_t count) noexcept
        : declarations_(first, count) {}
    constexpr CommandList(std::initializer_list<CommandLinePossibility> declarations) noexcept
        : declarations_(declarations.begin(), declarations.size()) {}
    template <Internal::Declarations Range>
    constexpr CommandList(const Range& declarations) noexcept : declarations_(declarations) {}

    // Return the declarations, in order, and whether there are none.
    [[nodiscard]] constexpr auto begin() const noexcept { return declarations_.begin(); }
    [[nodiscard]] constexpr auto end() const noexcept { return declarations_.end(); }
    [[nodiscard]] constexpr bool empty() const noexcept { return declarations_.empty(); }

private:
    std::span<const CommandLinePossibility> declarations_;
};

// The arguments of a call, for the time of that call. It views texts: an array, a vector, a span or
// a list in braces; it copies strings of another type once, into one block of memory, which lives
// as long as somebody keeps one of the values. Not to be kept: it does not keep alive what it
// views.
class OPTRELLA_API ArgumentList {
public:
    // Lists none.
    ArgumentList() noexcept = default;
    // Views texts.
    ArgumentList(std::initializer_list<Text> texts) noexcept
        : texts_(texts.begin(), texts.size()) {}
    template <Internal::TextsInARow Range>
    ArgumentList(const Range& texts) noexcept : texts_(texts) {}
    // Copies strings. STOPS the process when one is a null pointer.
    template <Internal::StringRange Range>
    ArgumentList(const Range& strings) noexcept
        : copies_(Internal::viewsOf(strings)), texts_(copies_.texts()) {}

    // Returns the arguments, in order.
    [[nodiscard]] std::span<const Text> texts() const noexcept { return texts_; }

private:
    Internal::TextBlock copies_;
    std::span<const Text> texts_;
};

// Runs the one declaration that the arguments fit, and returns when its action has returned.
//
// passedIn is the whole argument vector, the program name first. Every further argument must be a
// tag of a declared parameter, or the value of the tag before it.
//
//   NoError         the action ran
//   NoCommandLine   nothing stands after the program name; nothing is printed
//   NoMatchingLine  no declaration fits, or a value is not acceptable, or the command needs root
//                   rights that the user does not get: each is said on standard output;
//                   or several declarations fit: nothing is said
// MissingParameter is never returned.
//
// A root command of a user outside group 0 asks a member of the administrators' group for the
// password and runs the whole tool again under sudo; parse then does not return: the process ends
// with status 0 when that has ended.
//
// The action runs on a thread of lower priority than the caller's; the caller waits. Safe on any
// thread, within an action, and on several threads at once. STOPS the process when a thread or sudo
// cannot be started, when an argument is a null pointer, when an operation of a tool's own kind
// throws, when a thread that waits here is cancelled, and where a declaration without a tag must
// name its first tag. REQUIRES: the declarations and the arguments stay as they are until the
// values have been stored; a kind's storeUserValue changes neither.
[[nodiscard]] OPTRELLA_API parsingError parse(CommandList commandList,
                                              ArgumentList passedIn) noexcept;
[[nodiscard]] OPTRELLA_API parsingError parse(CommandList commandList, int argc,
                                              const char* const* argv) noexcept;

// Who gives a root command its rights.
enum class RootCommands {
    handToSudo,  // sudo, by its own rules and words, as if it had been typed before the command
};

// Do what parse does, but for root commands. One that fits runs here when the effective user is
// root. Otherwise sudo takes the place of this process and starts the running program again, as
// root, with these arguments; its values are judged there. No group is looked at and no password is
// asked for but by sudo. Streams, terminal, signals and the exit status are those of `sudo tool`;
// these functions do not return then, and neither destructors nor what `atexit` was given run.
//
//   NoMatchingLine  also when sudo cannot take over: it is missing, the file of the program is
//                   gone, or sudo has started the program already, as somebody else. Standard error
//                   says so in a line.
[[nodiscard]] OPTRELLA_API parsingError parse(CommandList commandList, ArgumentList passedIn,
                                              RootCommands rootCommands) noexcept;
[[nodiscard]] OPTRELLA_API parsingError parse(CommandList commandList, int argc,
                                              const char* const* argv,
                                              RootCommands rootCommands) noexcept;

}  // namespace Optrella

// A result hashes as its text does.
template <>
struct OPTRELLA_API std::hash<Optrella::parsingError> {
    std::size_t operator()(Optrella::parsingError error) const noexcept {
        return std::hash<Optrella::Text>()(Optrella::rawValue(error));
    }
};

#endif
