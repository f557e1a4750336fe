// Declarations.hpp - command lines made from drawn bytes, as plain records that a model can
// read and as what a tool declares.

#ifndef OPTRELLA_TESTS_SUPPORT_DECLARATIONS_HPP
#define OPTRELLA_TESTS_SUPPORT_DECLARATIONS_HPP

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Optrella/CommandLine.hpp"
#include "Support/Input.hpp"
#include "Support/Kinds.hpp"

namespace Tests {

// The library's kinds by their numbers in its list, and two of a tool's own.
using KindNumber = std::size_t;
constexpr KindNumber ownKind = Optrella::Internal::BuiltInKinds::size;
constexpr KindNumber largeKind = ownKind + 1;
constexpr std::size_t kinds = largeKind + 1;

template <class Kind>
constexpr KindNumber numberOf = Optrella::Internal::BuiltInKinds::indexOf<Kind>;

struct ParameterCase {
    KindNumber kind;
    bool takesValue;
    std::vector<std::string> tags;
    std::string name;
    std::string help;
    KindFields fields;
};

struct CommandCase {
    bool requiresRoot;
    bool hidden;
    std::string help;
    std::vector<ParameterCase> required;
    std::vector<ParameterCase> optional;
};

// What the library has had tools' own kinds store, in this order.
[[nodiscard]] std::vector<std::string>& storedValues();

// A tool's own kind, inside a ParameterProtocol or, when it is large, on the heap.
template <std::size_t Size>
struct OwnKind {
    Optrella::commonDetails common;
    char room[Size] = {};

    [[nodiscard]] static std::string stored(const std::string& value) { return "<" + value + ">"; }
    [[nodiscard]] static std::optional<std::string> fault(const std::string& value) {
        return value.size() % 4 == 3 ? std::optional("odd: " + value) : std::nullopt;
    }
    [[nodiscard]] std::optional<Optrella::Text> validate() const {
        return fault(common.userValue.str());
    }
    void storeUserValue(Optrella::Text newValue) {
        storedValues().push_back(newValue.str());
        common.userValue = stored(newValue.str());
    }
};

// A word out of a small set, so that words collide, or raw bytes.
[[nodiscard]] std::string word(Input& input);

// `requiredHaveTags` for what must name every required parameter.
[[nodiscard]] std::vector<CommandCase> commands(Input& input, bool requiredHaveTags);

// Mostly tags of the commands, and values.
[[nodiscard]] std::vector<std::string> arguments(Input& input,
                                                 const std::vector<CommandCase>& commands);

[[nodiscard]] Optrella::ParameterProtocol made(const ParameterCase& parameter);

// `run` gets the number of the command too.
using Run = std::function<void(std::size_t command, const Optrella::Parameters& given)>;
[[nodiscard]] std::vector<Optrella::CommandLinePossibility> made(
    const std::vector<CommandCase>& commands, const Run& run);

// Whether both hold the same bytes.
[[nodiscard]] bool areIdentical(const Optrella::CommandLinePossibility& left,
                                const Optrella::CommandLinePossibility& right);

}  // namespace Tests

#endif
