// Parameters.hpp - the parameter interface and the six kinds.
//
// A kind is a plain record: copy it, keep it, hand it out. A tool declares its parameters with the
// kinds' constructors and keeps them, because a value is asked for by its declaration. A parameter
// list is a std::vector<ParameterProtocol>; every element owns its own copy of a kind.
// What is declared from literals, with up to two tags, and a list of choices that a constant array
// names, is made by the compiler: such a parameter can be constexpr. No operation here prints,
// keeps state between calls, or reports by throwing.

#ifndef OPTRELLA_PARAMETERS_HPP
#define OPTRELLA_PARAMETERS_HPP

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

#include "Optrella/Export.hpp"
#include "Optrella/Parameters/CommonDetails.hpp"
#include "Optrella/Parameters/ParameterProtocol.hpp"
#include "Optrella/Parameters/Tags.hpp"
#include "Optrella/Text.hpp"
#include "Optrella/Values.hpp"

namespace Optrella {

// A flag: a tag that stands alone.
struct OPTRELLA_API ParameterNone final : Internal::BuiltInKind<ParameterNone> {
    commonDetails common;

    // Stores everything as it is, unchecked. hasParameter is false, and there is no parameterName.
    constexpr ParameterNone(Tags tags, Text tagHelp) noexcept
        : common{std::move(tagHelp), std::move(tags), Text(), false, Text()} {}

    // Compares as isEqualTo does: what the user gave takes no part.
    friend bool operator==(const ParameterNone& left, const ParameterNone& right) noexcept {
        return Internal::isSameDeclaration(left.common, right.common);
    }
};

// Returns the hash of all of `common`. On purpose it does not follow ==: two flags that are equal
// and hold different user values hash differently.
[[nodiscard]] inline std::size_t hashValue(const ParameterNone& flag,
                                           std::size_t seed = 0) noexcept {
    return hashValue(flag.common, seed);
}

// Any text.
struct OPTRELLA_API ParameterString final : Internal::BuiltInKind<ParameterString> {
    commonDetails common;

    // Stores everything as it is, unchecked.
    constexpr ParameterString(Tags tags, Text parameterName, Text tagHelp) noexcept
        : common{std::move(tagHelp), std::move(tags), Text(), true, std::move(parameterName)} {}
};

// A UUID. Any text passes validation; one that is no UUID is fetched as the all-zero UUID.
struct OPTRELLA_API ParameterUUID final : Internal::BuiltInKind<ParameterUUID> {
    commonDetails common;

    // Stores everything as it is, unchecked.
    constexpr ParameterUUID(Tags tags, Text parameterName, Text tagHelp) noexcept
        : common{std::move(tagHelp), std::move(tags), Text(), true, std::move(parameterName)} {}
};

// A whole number of 64 bits. The bounds are declared and kept, and on purpose never tested.
struct OPTRELLA_API ParameterNumber final : Internal::BuiltInKind<ParameterNumber> {
    commonDetails common;

    // Stores everything as it is, unchecked.
    constexpr ParameterNumber(Tags tags, Text parameterName, std::int64_t min, std::int64_t max,
                              Text tagHelp) noexcept
        : common{std::move(tagHelp), std::move(tags), Text(), true, std::move(parameterName)},
          rangeMin_(min),
          rangeMax_(max) {}

    // Return the bounds as they were declared: never nothing.
    [[nodiscard]] constexpr std::optional<std::int64_t> rangeMin() const noexcept {
        return rangeMin_;
    }
    [[nodiscard]] constexpr std::optional<std::int64_t> rangeMax() const noexcept {
        return rangeMax_;
    }
    // Returns what getValue returns for a text that is no number: -1.
    [[nodiscard]] static constexpr std::int64_t defaultValue() noexcept { return -1; }

    // Returns the number that was given, or defaultValue() for any text that is not an optional
    // sign and ASCII digits within 64 bits.
    [[nodiscard]] std::int64_t getValue() const noexcept;

private:
    std::int64_t rangeMin_;
    std::int64_t rangeMax_;
};

namespace Internal {

// Named where a constant parameter meets the compiler: the name is the error message.
OPTRELLA_API void constantListTakesANamedArrayOfChoices() noexcept;

// Returns whether a list in braces is made when the tool starts; refuses another one.
constexpr bool isMadeAtRunTime(std::size_t size) noexcept {
    if (!std::is_constant_evaluated()) return true;
    if (size > 0) constantListTakesANamedArrayOfChoices();
    return false;
}

}  // namespace Internal

// The choices of a list parameter, in the tool's order. Never changes; copies share it.
class OPTRELLA_API ListOptions {
public:
    using value_type = ParameterNone;  // what it lists

    // Lists none.
    constexpr ListOptions() noexcept = default;
    // Lists a named array: views it where the compiler makes the list, which takes a constexpr
    // array that lives as long as the process, and copies it everywhere else.
    template <std::size_t N>
    constexpr ListOptions(const ParameterNone (&options)[N]) noexcept : size_(N) {
        if (std::is_constant_evaluated()) {
            first_ = options;
            // Only what is constant can be read.
            for (const ParameterNone& each : options) static_cast<void>(each.common.tags.size());
        } else {
            *this = ListOptions(std::span<const ParameterNone>{options});
        }
    }
    // List copies of flags.
    ListOptions(std::span<const ParameterNone> options) noexcept;
    ListOptions(const std::vector<ParameterNone>& options) noexcept;
    // List those in braces, not where the compiler makes the list: flags, or choices without a help
    // text of their own, {"name", "date"}.
    constexpr ListOptions(std::initializer_list<ParameterNone> options) noexcept {
        if (Internal::isMadeAtRunTime(options.size())) copyList(options);
    }
    constexpr ListOptions(std::initializer_list<Text> firstTags) noexcept {
        if (Internal::isMadeAtRunTime(firstTags.size())) copyList(firstTags);
    }

    // Copies share the options. A list that was moved from is empty.
    constexpr ListOptions(const ListOptions& other) noexcept
        : first_(other.first_), size_(other.size_), isShared_(other.isShared_) {
        if (isShared_) retain();
    }
    constexpr ListOptions(ListOptions&& other) noexcept { swap(other); }
    constexpr ListOptions& operator=(ListOptions other) noexcept {
        swap(other);
        return *this;
    }
    constexpr ~ListOptions() {
        if (isShared_) release();
    }

    // Return the options, in order. Pointers are good as long as this or a copy of it lives.
    [[nodiscard]] constexpr const ParameterNone* begin() const noexcept { return first_; }
    [[nodiscard]] constexpr const ParameterNone* end() const noexcept { return first_ + size_; }
    // Return the number of options, and whether there are none.
    [[nodiscard]] constexpr std::size_t size() const noexcept { return size_; }
    [[nodiscard]] constexpr bool empty() const noexcept { return size_ == 0; }
    // Returns one option. REQUIRES: index < size().
    [[nodiscard]] constexpr const ParameterNone& operator[](std::size_t index) const noexcept {
        return begin()[index];
    }

private:
    constexpr void swap(ListOptions& other) noexcept {
        std::swap(first_, other.first_);
        std::swap(size_, other.size_);
        std::swap(isShared_, other.isShared_);
    }
    template <class Source>
    void copy(std::span<const Source> sources) noexcept;
    void copyList(std::initializer_list<ParameterNone> options) noexcept;
    void copyList(std::initializer_list<Text> firstTags) noexcept;
    void retain() const noexcept;
    void release() noexcept;

    const ParameterNone* first_ = nullptr;
    std::uint32_t size_ = 0;  // what follows fills the largest kind to its last byte
    bool isShared_ = false;   // stands in a block of the heap
};

// A word out of a fixed set. An option stands for one word, its first tag; its other tags and its
// help play no part. REQUIRES: every option has a tag.
struct OPTRELLA_API ParameterList final : Internal::BuiltInKind<ParameterList> {
    commonDetails common;

    // Stores everything as it is, unchecked.
    constexpr ParameterList(Tags tags, ListOptions validOptions, Text parameterName,
                            Text tagHelp) noexcept
        : common{std::move(tagHelp), std::move(tags), Text(), true, std::move(parameterName)},
          validOptions_(std::move(validOptions)) {}

    // Returns the choices as they were declared.
    [[nodiscard]] constexpr const ListOptions& validOptions() const noexcept {
        return validOptions_;
    }

    // Returns a message with the stored word and all choices, or nothing when the word is a choice.
    // STOPS the process when it reaches an option without tags.
    [[nodiscard]] std::optional<Text> validate() const noexcept;
    // Returns the first option whose first tag is the stored word.
    // STOPS the process when there is none, or at an option without tags before it.
    [[nodiscard]] ParameterNone getValue() const noexcept;

private:
    ListOptions validOptions_;
};

// A path. What it should name is declared and kept, and on purpose never tested; whether it exists
// is tested by `validate`.
struct OPTRELLA_API ParameterFileURL final : Internal::BuiltInKind<ParameterFileURL> {
    // What the path should name. Never tested. Each case's text is its name.
    enum class OPTRELLA_API urlType : std::uint8_t {
        file,          // a file
        folder,        // a directory
        fileOrFolder,  // either
    };
    // Whether something is at the path. Each case's text is its name.
    enum class OPTRELLA_API existState : std::uint8_t {
        exist,   // must be
        absent,  // must not be
        vague,   // may be
    };

    commonDetails common;
    urlType type;      // declared and kept
    existState state;  // what validate tests

    // Stores everything as it is, unchecked.
    constexpr ParameterFileURL(Tags tags, urlType typeOfPath, existState stateOfPath,
                               Text parameterName, Text tagHelp) noexcept
        : common{std::move(tagHelp), std::move(tags), Text(), true, std::move(parameterName)},
          type(typeOfPath),
          state(stateOfPath) {}

    // Returns that the path does not exist, or must not, or nothing when it is as declared. Asks
    // the file system once for `exist` and `absent`, not at all for `vague`; the path is taken
    // exactly as it was typed. STOPS the process when `state` is no case.
    [[nodiscard]] std::optional<Text> validate() const noexcept;
    // Returns FileURL::fromPath of the stored text; tests nothing.
    [[nodiscard]] FileURL getValue() const noexcept;
};

// Returns the text of a case: rawValue(existState::absent) == "absent". STOPS the process when the
// value is no case.
[[nodiscard]] OPTRELLA_API Text rawValue(ParameterFileURL::urlType type) noexcept;
[[nodiscard]] OPTRELLA_API Text rawValue(ParameterFileURL::existState state) noexcept;

// Returns the case of a text, nothing when it is no case's text:
// fromRawValue<existState>("absent").
template <class Case>
[[nodiscard]] std::optional<Case> fromRawValue(const Text& text) noexcept = delete;
template <>
[[nodiscard]] OPTRELLA_API std::optional<ParameterFileURL::urlType>
fromRawValue<ParameterFileURL::urlType>(const Text& text) noexcept;
template <>
[[nodiscard]] OPTRELLA_API std::optional<ParameterFileURL::existState>
fromRawValue<ParameterFileURL::existState>(const Text& text) noexcept;

}  // namespace Optrella

template <>
struct OPTRELLA_API std::hash<Optrella::ParameterNone> {
    std::size_t operator()(const Optrella::ParameterNone& flag) const noexcept {
        return Optrella::hashValue(flag);
    }
};

#endif
