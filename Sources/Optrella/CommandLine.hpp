// CommandLine.hpp - what a tool declares, and parse, which runs the one declaration that fits.
//
// A tool lists every command line that it accepts and hands the list with its arguments to `parse`.
// The declarations are values that parse never changes: the same list serves any number of calls,
// on any number of threads. parse prints its diagnostics to standard output and reports by its
// result; nothing is thrown.

#ifndef OPTRELLA_COMMANDLINE_HPP
#define OPTRELLA_COMMANDLINE_HPP

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

#include "Optrella/Export.hpp"
#include "Optrella/Parameters.hpp"

namespace Optrella {

namespace Internal {

struct Declaration;  // reads the fields of a CommandLinePossibility

// A set.
struct Marks {
    std::uint64_t low = 0;
    std::uint64_t high = 0;
};

class Action;

// What an action can be made of: anything that can be called with the given parameters.
template <class Callable>
concept Runnable = std::is_invocable_v<Callable&, const Parameters&>;
template <class Callable>
concept NoAction = !std::is_same_v<Callable, Action>;

// A callable that copies share, its state included. One without state costs no heap.
class OPTRELLA_API Action {
public:
    // Made of anything, so that what is no action is said by name: g++ says nothing of a constraint
    // that is not met within the braces of an array.
    template <class Callable, NoAction Stored = std::decay_t<Callable>>
    Action(Callable&& callable) noexcept {
        static_assert(Runnable<Stored>, "an action must be callable with a `const Parameters&`");
        if constexpr (std::is_empty_v<Stored> && std::is_default_constructible_v<Stored>) {
            call_ = [](Shared*, const Parameters& given) { static_cast<void>(Stored{}(given)); };
        } else {
            shared_ = SharedObject(new State<Stored>{
                {[](Shared* state) noexcept { delete static_cast<State<Stored>*>(state); }},
                std::forward<Callable>(callable)});
            call_ = [](Shared* state, const Parameters& given) {
                static_cast<void>(static_cast<State<Stored>*>(state)->callable(given));
            };
        }
    }

    void operator()(const Parameters& given) const { call_(shared_.get(), given); }

private:
    template <class Stored>
    struct State : Shared {
        Stored callable;
    };

    void (*call_)(Shared* state, const Parameters& given);
    SharedObject shared_;
};

template <class Given>
concept Listed = std::is_class_v<Given> && !std::same_as<Given, Parameters>;

// The parameters of a declaration: in braces, or a list made before. Here each is copied once; the
// braces of a std::vector would copy it twice. A tool has many declarations in one function, so
// what is not a template stands in the library, and without memory the process ends at once.
class OPTRELLA_API DeclaredParameters {
public:
    DeclaredParameters() noexcept;
    template <std::same_as<Parameters> List>
    DeclaredParameters(List parameters) noexcept : parameters_(std::move(parameters)) {}
    DeclaredParameters(DeclaredParameters&& other) noexcept;
    ~DeclaredParameters();
    template <class... Given>
    requires(Listed<std::remove_cvref_t<Given>>&&...) DeclaredParameters(Given&&... given)
    noexcept {
        static_assert((std::is_constructible_v<ParameterProtocol, Given> && ...),
                      "a parameter must be of a kind: have a member `commonDetails common`");
        parameters_.reserve(sizeof...(given));
        (parameters_.emplace_back(std::forward<Given>(given)), ...);
    }

    [[nodiscard]] Parameters take() && noexcept { return std::move(parameters_); }

private:
    Parameters parameters_;
};

// Takes the place of any argument of a declaration that lacks one.
struct AnyArgument {
    template <class... Given>
    AnyArgument(Given&&... given);
};

}  // namespace Internal

// The result of parse. Its cases carry fixed texts: see rawValue.
enum class OPTRELLA_API parsingError : std::uint8_t {
    NoError,           // the action ran
    MissingParameter,  // never returned
    NoMatchingLine,    // not exactly one declaration fits, or it may not run
    NoCommandLine,     // nothing stands behind the program name
};

// "Parse successful", "Missing Parameter", "Unknown command line", "No command line specified".
// STOPS the process when `error` is no case.
[[nodiscard]] OPTRELLA_API Text rawValue(parsingError error) noexcept;
// The case of a text, nothing when it is no case's text.
template <>
[[nodiscard]] OPTRELLA_API std::optional<parsingError> fromRawValue<parsingError>(
    const Text& text) noexcept;

// One command line that a tool accepts.
class OPTRELLA_API CommandLinePossibility {
public:
    // required: parameters whose tags must be given. optional: parameters whose tags may be given.
    // help: shown in the help listing. requiresRoot: the command needs administrator rights.
    // hidden: left out of the help listing. run: the action, anything that can be called with a
    // `const Parameters&`; copies of a declaration share it. It is called on a thread of its own
    // while parse waits; an exception that leaves it ends the process.
    // Everything is stored as it is, unchecked.
    CommandLinePossibility(bool requiresRoot, Internal::DeclaredParameters required,
                           Internal::DeclaredParameters optional, Text help, bool hidden,
                           Internal::Action run) noexcept;

    // For its message alone: of five arguments g++ says no more than that they do not fit.
    template <class Any = Internal::AnyArgument>
    CommandLinePossibility(Any, Internal::AnyArgument, Internal::AnyArgument, Internal::AnyArgument,
                           Internal::AnyArgument)
        : CommandLinePossibility(false, {}, {}, "", false, [](const Parameters&) {}) {
        static_assert(!std::is_same_v<Any, Any>,
                      "a declaration needs requiresRoot, required, optional, help, hidden, run");
    }

private:
    friend struct Internal::Declaration;

    Parameters required_;
    Parameters optional_;
    Text help_;
    Internal::Action run_;
    Internal::Marks absentMarks_;  // rule most arguments out at a glance
    bool requiresRoot_;
    bool hidden_;
};

namespace Internal {

template <class Range>
concept Declarations = std::convertible_to<const Range&, std::span<const CommandLinePossibility>>;

// Texts of another type, such as a vector of std::string.
template <class Range>
concept TextRange = !std::convertible_to<const Range&, std::span<const Text>> &&
                    std::constructible_from<Text, decltype(*std::declval<const Range&>().begin())>;

}  // namespace Internal

// A view of a tool's declarations, for the time of a call: of an array, a vector, a span or a list
// in braces. Not to be kept: it does not keep the declarations alive.
class OPTRELLA_API CommandList {
public:
    // Of no declarations, of those from `first` on, in braces, or of a range.
    constexpr CommandList() noexcept = default;
    constexpr CommandList(const CommandLinePossibility* first, std::size_t count) noexcept
        : declarations_(first, count) {}
    constexpr CommandList(std::initializer_list<CommandLinePossibility> declarations) noexcept
        : declarations_(declarations.begin(), declarations.size()) {}
    template <Internal::Declarations Range>
    constexpr CommandList(const Range& declarations) noexcept : declarations_(declarations) {}

    // The declarations, in order, and whether there are none.
    [[nodiscard]] constexpr auto begin() const noexcept { return declarations_.begin(); }
    [[nodiscard]] constexpr auto end() const noexcept { return declarations_.end(); }
    [[nodiscard]] constexpr bool empty() const noexcept { return declarations_.empty(); }

private:
    std::span<const CommandLinePossibility> declarations_;
};

// Runs the one declaration that the arguments fit, and returns when its action has returned.
//
// passedIn is the whole argument vector, the program name first. Every further argument must be a
// tag of a declared parameter, or the value of the tag before it.
//
//   NoError         the action ran
//   NoCommandLine   nothing stands behind the program name; nothing is printed
//   NoMatchingLine  no declaration fits, or a value is not acceptable, or the command needs root
//                   rights that the user does not get: each is said on standard output;
//                   or several declarations fit: nothing is said
// MissingParameter is never returned.
//
// A root command of a user outside group 0 asks a member of the administrators' group for the
// password and runs the whole tool again under sudo; parse then does not return: the process ends
// with status 0 when that has ended.
//
// Of arguments given as argc and argv one copy is made, in one block of memory, which lives as long
// as a tool keeps one of the values.
//
// The action runs on a thread of lower priority than the caller's; the caller waits. Safe on any
// thread, within an action, and on several threads at once. STOPS the process when a thread or sudo
// cannot be started, when an operation of a tool's own kind throws, and where a declaration without
// a tag must name its first tag.
[[nodiscard]] OPTRELLA_API parsingError parse(CommandList commandList,
                                              std::span<const Text> passedIn) noexcept;
[[nodiscard]] OPTRELLA_API parsingError parse(CommandList commandList, int argc,
                                              const char* const* argv) noexcept;

// The same for texts in braces, and for a range of another type of text, which is copied.
[[nodiscard]] inline parsingError parse(CommandList commandList,
                                        std::initializer_list<Text> passedIn) noexcept {
    return parse(commandList, std::span<const Text>(passedIn.begin(), passedIn.size()));
}
template <Internal::TextRange Range>
[[nodiscard]] parsingError parse(CommandList commandList, const Range& passedIn) noexcept {
    return parse(commandList, std::vector<Text>(passedIn.begin(), passedIn.end()));
}

}  // namespace Optrella

// A result hashes as its text does.
template <>
struct OPTRELLA_API std::hash<Optrella::parsingError> {
    std::size_t operator()(Optrella::parsingError error) const noexcept {
        return std::hash<Optrella::Text>()(Optrella::rawValue(error));
    }
};

#endif
