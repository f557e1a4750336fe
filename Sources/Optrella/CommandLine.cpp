#include "Optrella/CommandLine.hpp"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>

#include "Optrella/Internal/CommandLine.hpp"
#include "Optrella/Internal/Print.hpp"
#include "Optrella/Internal/Text.hpp"
#include "Optrella/Internal/Unicode.hpp"
#include "Optrella/Platform/StartArguments.hpp"
#include "Optrella/Platform/Worker.hpp"
#include "Optrella/PromptForPassword.hpp"

namespace Optrella {

using Internal::Declaration;

// ---- Results ----

Text rawValue(parsingError error) noexcept {
    switch (error) {
        case parsingError::NoError:
            return "Parse successful";
        case parsingError::MissingParameter:
            return "Missing Parameter";
        case parsingError::NoMatchingLine:
            return "Unknown command line";
        case parsingError::NoCommandLine:
            return "No command line specified";
    }
    Internal::fatalStop();
}

template <>
std::optional<parsingError> fromRawValue<parsingError>(const Text& text) noexcept {
    using enum parsingError;
    for (const parsingError error : {NoError, MissingParameter, NoMatchingLine, NoCommandLine}) {
        if (rawValue(error) == text) return error;
    }
    return std::nullopt;
}

// ---- Marks ----

// Most declarations have nothing to do with an argument. So that they need not be searched, each
// knows which marks none of its tags has. A tag has two marks in each half; an argument that has
// one that is absent is no tag. That holds where both are ASCII. What equals another text does not
// show in its bytes: such a tag has all marks, and such an argument none.

namespace {

using Internal::Marks;

Marks marksOf(const Text& ascii) noexcept {
    const auto mark = [fingerprint = Internal::AtSight(ascii).fingerprint()](unsigned place) {
        return std::uint64_t{1} << (fingerprint >> place) % 64;
    };
    return {mark(0) | mark(6), mark(12) | mark(18)};
}

Marks marksOfArgument(const Text& argument) noexcept {
    return argument.isASCII() ? marksOf(argument) : Marks{};
}

Marks absentMarks(const Parameters& required, const Parameters& optional) noexcept {
    constexpr std::uint64_t all = ~std::uint64_t{0};
    Marks absent{all, all};
    for (const Parameters* parameters : {&required, &optional}) {
        for (const ParameterProtocol& parameter : *parameters) {
            for (const Text& tag : parameter.common().tags) {
                const Marks marks = tag.isASCII() ? marksOf(tag) : Marks{all, all};
                absent.low &= ~marks.low;
                absent.high &= ~marks.high;
            }
        }
    }
    return absent;
}

bool mayFit(const CommandLinePossibility& declaration, const Marks& firstMarks) noexcept {
    const Marks& absent = Declaration::absentMarks(declaration);
    return (firstMarks.low & absent.low) == 0 && (firstMarks.high & absent.high) == 0;
}

}  // namespace

Internal::DeclaredParameters::DeclaredParameters() noexcept = default;
Internal::DeclaredParameters::DeclaredParameters(DeclaredParameters&&) noexcept = default;
Internal::DeclaredParameters::~DeclaredParameters() = default;

CommandLinePossibility::CommandLinePossibility(bool requiresRoot,
                                               Internal::DeclaredParameters required,
                                               Internal::DeclaredParameters optional, Text help,
                                               bool hidden, Internal::Action run) noexcept
    : required_(std::move(required).take()),
      optional_(std::move(optional).take()),
      help_(std::move(help)),
      run_(std::move(run)),
      absentMarks_(absentMarks(required_, optional_)),
      requiresRoot_(requiresRoot),
      hidden_(hidden) {}

// ---- Matching ----

namespace {

using Arguments = std::span<const Text>;

// Of several owners the last one is taken, on purpose; hence backwards. Null when there is none.
// Inline, because most searches are shorter than a call.
inline const ParameterProtocol* lastOwner(const Parameters& parameters, const Text& argument,
                                          Internal::CanonicalComparer& comparer) {
    const Internal::AtSight seen(argument);
    auto owner = parameters.rbegin();
    for (; owner != parameters.rend(); ++owner) {
        for (const Text& tag : owner->common().tags) {
            if (!seen.differsFrom(tag) && comparer.areEqual(argument, tag)) return &*owner;
        }
    }
    return nullptr;
}

// A parameter that the arguments give to a declaration.
struct Given {
    const ParameterProtocol* declared;
    const Text* value;  // null for a flag

    // Whether the kind's own storeUserValue is to be called: a tool may see that.
    [[nodiscard]] bool isStoredByTheKind() const noexcept {
        return value != nullptr && !declared->storesByDefault();
    }
};

// The given parameters out of one list of a declaration, in the order of the arguments.
class GivenGroup {
public:
    [[nodiscard]] std::size_t size() const noexcept { return size_; }

    void clear() noexcept {
        more_.clear();
        size_ = 0;
        stored_.clear();
    }

    void take(const Given& given) {
        if (size_ < fewest) {
            few_[size_] = given;
        } else {
            more_.push_back(given);
        }
        ++size_;
        if (given.isStoredByTheKind()) {
            stored_.push_back(*given.declared);
            stored_.back().storeUserValue(*given.value);
        }
    }

    // Copies of the parameters with their values; once.
    void moveTo(Parameters& filled) {
        auto stored = stored_.begin();
        const std::span<const Given> few(few_, std::min(size_, fewest));
        for (const std::span<const Given> part : {few, std::span<const Given>(more_)}) {
            for (const Given& given : part) {
                if (given.isStoredByTheKind()) {
                    filled.emplace_back(std::move(*stored++));
                    continue;
                }
                // Stored as every kind does that does not say otherwise.
                ParameterProtocol& copy = filled.emplace_back(*given.declared);
                if (given.value != nullptr) copy.common().userValue = *given.value;
            }
        }
    }

private:
    static constexpr std::size_t fewest = 16;  // without the heap

    Given few_[fewest];
    std::vector<Given> more_;
    std::size_t size_ = 0;
    // Those that the kind stores, made while the arguments are matched, once, whatever comes of it.
    // All other copies wait until it is known that they are needed.
    Parameters stored_;
};

// What the arguments give to a declaration.
struct Match {
    const CommandLinePossibility* declaration = nullptr;
    GivenGroup required;
    GivenGroup optional;
};

// False when an argument belongs to no parameter, and, with a line of output, when the last value
// is missing.
bool takesAll(Match& match, Arguments arguments, Internal::CanonicalComparer& comparer) {
    const Parameters& required = Declaration::required(*match.declaration);
    const Parameters& optional = Declaration::optional(*match.declaration);
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        GivenGroup* group = &match.required;
        const ParameterProtocol* owner = lastOwner(required, *argument, comparer);
        if (owner == nullptr) {
            group = &match.optional;
            owner = lastOwner(optional, *argument, comparer);
        }
        if (owner == nullptr) return false;
        if (!owner->common().hasParameter) {
            group->take({owner, nullptr});
            continue;
        }
        if (++argument == arguments.end()) {
            Internal::printLine({"Missing argument for ", owner->firstTag()});
            return false;
        }
        group->take({owner, &*argument});
    }
    return true;
}

// Whether the arguments fit the declaration; `match` then says how.
bool fits(const CommandLinePossibility& declaration, Arguments arguments,
          Internal::CanonicalComparer& comparer, Match& match) {
    match.declaration = &declaration;
    match.required.clear();
    match.optional.clear();
    // Of the required parameters only the count is compared, on purpose: a tag that is given twice
    // makes up for another one that is missing.
    return takesAll(match, arguments, comparer) &&
           match.required.size() == Declaration::required(declaration).size();
}

// Tries them all, whether one fits or not: each may have something to say.
bool anyFits(std::span<const CommandLinePossibility> declarations, const Marks& firstMarks,
             Arguments arguments, Internal::CanonicalComparer& comparer) {
    Match match;
    bool isAnyFit = false;
    for (const CommandLinePossibility& declaration : declarations) {
        if (!mayFit(declaration, firstMarks)) continue;
        if (fits(declaration, arguments, comparer, match)) isAnyFit = true;
    }
    return isAnyFit;
}

Internal::Fit filledIn(Match& match) {
    Internal::Fit fit{match.declaration, {}, match.required.size()};
    fit.given.reserve(match.required.size() + match.optional.size());
    for (GivenGroup* group : {&match.required, &match.optional}) group->moveTo(fit.given);
    return fit;
}

}  // namespace

namespace Internal {

std::optional<Fit> couldRun(const CommandLinePossibility& commandLine,
                            std::span<const Text> passedLine) {
    Match match;
    CanonicalComparer comparer;
    if (!fits(commandLine, passedLine, comparer, match)) return std::nullopt;
    return filledIn(match);
}

// ---- Validation ----

bool validateParameters(const Parameters& given) {
    bool isValid = true;
    for (const ParameterProtocol& parameter : given) {
        const std::optional<Text> message = parameter.validate();
        if (!message) continue;
        printLine({"Validation of parameter ", parameter.firstTag(), " failed : ", *message});
        isValid = false;
    }
    return isValid;
}

bool validatePermissions(const CommandLinePossibility& commandLine) {
    if (!Declaration::requiresRoot(commandLine)) return true;
    // The group alone decides, not the process's user id.
    constexpr std::int64_t groupOfRoot = 0;
    if (PromptForPassword::validateGroupMembership(groupOfRoot)) return true;
    if (std::optional<Platform::Password> password = PromptForPassword::prompt()) {
        PromptForPassword::rerun(*std::move(password), Platform::startArguments());
        // The tool has run, as root: this process has nothing left to do, whatever came of it.
        std::exit(0);  // NOLINT(concurrency-mt-unsafe)
    }
    printLine({"Requested command line must be run as root. Try using sudo."});
    return false;
}

// ---- Diagnostics ----

std::string rendered(std::span<const Text> arguments) {
    std::string list = "[";
    const char* separator = "";
    for (const Text& argument : arguments) {
        list += separator;
        list += '"';
        appendEscaped(list, argument);
        list += '"';
        separator = ", ";
    }
    list += ']';
    return list;
}

}  // namespace Internal

// ---- Parse ----

namespace {

// Holds the action too: a tool may drop its declarations while the action runs.
struct Job {
    Internal::Action action;
    Parameters given;
};

void runJob(void* context) {
    const Job& job = *static_cast<const Job*>(context);
    job.action(job.given);
}

parsingError run(Internal::Fit fit) {
    if (!Internal::validateParameters(fit.given)) return parsingError::NoMatchingLine;
    if (!Internal::validatePermissions(*fit.declaration)) return parsingError::NoMatchingLine;
    Job job{Declaration::run(*fit.declaration), std::move(fit.given)};
    if (!Platform::runOnWorker(runJob, &job)) Internal::fatalStop();
    return parsingError::NoError;
}

parsingError runTheOnlyFit(CommandList commandList, Arguments arguments) {
    const Marks firstMarks = marksOfArgument(arguments.front());
    const auto isCandidate = [firstMarks](const CommandLinePossibility& declaration) {
        return mayFit(declaration, firstMarks);
    };
    Internal::CanonicalComparer comparer;
    Match match;
    const auto end = commandList.end();
    const auto fit = std::find_if(commandList.begin(), end, [&](const auto& declaration) {
        return isCandidate(declaration) && fits(declaration, arguments, comparer, match);
    });
    if (fit == end) {
        Internal::printLine({Internal::rendered(arguments),
                             " is not a valid command line.\n Please refer to the help below."});
        return parsingError::NoMatchingLine;
    }
    const auto other = std::find_if(fit + 1, end, isCandidate);
    if (other != end && anyFits({other, end}, firstMarks, arguments, comparer)) {
        return parsingError::NoMatchingLine;
    }
    return run(filledIn(match));
}

}  // namespace

parsingError parse(CommandList commandList, std::span<const Text> passedIn) noexcept {
    if (passedIn.size() < 2) return parsingError::NoCommandLine;
    return runTheOnlyFit(commandList, passedIn.subspan(1));
}

parsingError parse(CommandList commandList, int argc, const char* const* argv) noexcept {
    if (argc < 2) return parsingError::NoCommandLine;
    const Internal::TextBlock arguments(std::span(argv, static_cast<std::size_t>(argc)).subspan(1));
    return runTheOnlyFit(commandList, arguments.texts());
}

}  // namespace Optrella
