// Kinds.hpp - what the tests know of each of the library's kinds: one entry for each.
//
// Whoever must know every kind walks the library's list of them with forEachKind, or asks for
// KindEntry<Kind>; a kind without an entry does not compile there. An entry has
//     name            what a case calls the kind
//     made(fields)    the kind, of the arguments of its constructor, each named as a case names it:
//                     tags(), text(key), number(key), options(key), word(key, {the cases})
//     fetchOptional, fetch   its operations; a flag has but the first one
//     observed(value) a fetched value as an observation holds it, a text or a whole number
//     fault(...)      what validate says of a value, by a model of its own; nothing by default
//     isValue(...)    whether what is fetched of a valid value is right, by that model

#ifndef OPTRELLA_TESTS_SUPPORT_KINDS_HPP
#define OPTRELLA_TESTS_SUPPORT_KINDS_HPP

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Optrella/Fetch.hpp"
#include "Optrella/Parameters.hpp"

namespace Tests {

// What a model is told beside the value: the drawn fields, the file system, and how characters are
// cut off, which other tests check. (Of the library only what tools may use: it serves their
// tests.)
struct KindFields {
    std::map<std::string, std::int64_t> numbers;
    std::map<std::string, std::string> words;
    std::vector<std::vector<std::string>> options;  // the tags of each
    std::function<bool(const std::string& path)> exists;
    std::string currentDirectory;
    std::function<std::string(std::size_t count, std::string text)> withoutLast;
};

template <class Case>
using Cases = std::vector<std::pair<const char*, Case>>;

template <class Kind>
struct KindEntry;

struct UncheckedKind {
    static std::optional<std::string> fault(const KindFields&, const std::string&) {
        return std::nullopt;
    }
};

template <>
struct KindEntry<Optrella::ParameterNone> : UncheckedKind {
    static constexpr const char* name = "ParameterNone";
    template <class Fields>
    static Optrella::ParameterNone made(Fields& fields) {
        return {fields.tags(), fields.text("tagHelp")};
    }
    static constexpr auto fetchOptional = &Optrella::fetchOptionalNone;
};

template <>
struct KindEntry<Optrella::ParameterString> : UncheckedKind {
    static constexpr const char* name = "ParameterString";
    template <class Fields>
    static Optrella::ParameterString made(Fields& fields) {
        return {fields.tags(), fields.text("parameterName"), fields.text("tagHelp")};
    }
    static constexpr auto fetchOptional = &Optrella::fetchOptionalString;
    static constexpr auto fetch = &Optrella::fetchString;
    static std::string observed(const Optrella::Text& value) { return value.str(); }
    static bool isValue(const KindFields&, const std::string& typed, const Optrella::Text& value) {
        return value.str() == typed;
    }
};

template <>
struct KindEntry<Optrella::ParameterUUID> : UncheckedKind {
    static constexpr const char* name = "ParameterUUID";
    template <class Fields>
    static Optrella::ParameterUUID made(Fields& fields) {
        return {fields.tags(), fields.text("parameterName"), fields.text("tagHelp")};
    }
    static constexpr auto fetchOptional = &Optrella::fetchOptionalUUID;
    static constexpr auto fetch = &Optrella::fetchUUID;
    static std::string observed(const Optrella::UUID& value) { return value.text().str(); }
    static bool isValue(const KindFields&, const std::string& typed, const Optrella::UUID& value) {
        return value.text().str() == textOf(typed);
    }
    // In upper case, or zeros when it is none.
    static std::string textOf(std::string typed) {
        const std::string zero = "00000000-0000-0000-0000-000000000000";
        if (typed.size() != zero.size()) return zero;
        for (std::size_t i = 0; i < typed.size(); ++i) {
            char& c = typed[i];
            if (c >= 'a' && c <= 'f') c = static_cast<char>(c - 'a' + 'A');
            const bool isDigit = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F');
            if (zero[i] == '-' ? c != '-' : !isDigit) return zero;
        }
        return typed;
    }
};

template <>
struct KindEntry<Optrella::ParameterNumber> : UncheckedKind {
    static constexpr const char* name = "ParameterNumber";
    template <class Fields>
    static Optrella::ParameterNumber made(Fields& fields) {
        // One after the other: what is drawn is drawn in this order.
        const Optrella::Tags tags = fields.tags();
        const std::int64_t min = fields.number("min");
        const std::int64_t max = fields.number("max");
        return {tags, fields.text("parameterName"), min, max, fields.text("tagHelp")};
    }
    static constexpr auto fetchOptional = &Optrella::fetchOptionalNumber;
    static constexpr auto fetch = &Optrella::fetchNumber;
    static std::int64_t observed(std::int64_t value) { return value; }
    static bool isValue(const KindFields&, const std::string& typed, std::int64_t value) {
        return value == numberOf(typed);
    }
    static std::int64_t numberOf(const std::string& typed) {
        const bool isNegative = typed.starts_with('-');
        const std::string digits = typed.substr(isNegative || typed.starts_with('+') ? 1 : 0);
        constexpr std::uint64_t greatest = std::numeric_limits<std::int64_t>::max();
        const std::uint64_t most = isNegative ? greatest + 1 : greatest;
        std::uint64_t magnitude = 0;
        for (const char c : digits) {
            if (c < '0' || c > '9') return -1;
            const auto digit = static_cast<std::uint64_t>(c - '0');
            if (magnitude > (most - digit) / 10) return -1;
            magnitude = magnitude * 10 + digit;
        }
        if (digits.empty()) return -1;
        return static_cast<std::int64_t>(isNegative ? 0 - magnitude : magnitude);
    }
};

template <>
struct KindEntry<Optrella::ParameterList> {
    static constexpr const char* name = "ParameterList";
    template <class Fields>
    static Optrella::ParameterList made(Fields& fields) {
        return {fields.tags(), fields.options("validOptions"), fields.text("parameterName"),
                fields.text("tagHelp")};
    }
    static constexpr auto fetchOptional = &Optrella::fetchOptionalListOption;
    static constexpr auto fetch = &Optrella::fetchListOption;
    static std::optional<std::string> fault(const KindFields& fields, const std::string& typed) {
        std::string list;
        for (const std::vector<std::string>& option : fields.options) {
            if (isSame(option.front(), typed)) return std::nullopt;
            list += option.front() + ", ";
        }
        return fields.withoutLast(
            2, "Item " + typed + " is not a valid option. It must be one of: " + list);
    }
    static std::string observed(const Optrella::ParameterNone& value) {
        return value.firstTag().str();
    }
    static bool isValue(const KindFields&, const std::string& typed,
                        const Optrella::ParameterNone& value) {
        return isSame(value.firstTag().str(), typed);
    }

    static bool isSame(const std::string& left, const std::string& right) {
        return Optrella::Text(left) == Optrella::Text(right);
    }
};

template <>
struct KindEntry<Optrella::ParameterFileURL> {
    static constexpr const char* name = "ParameterFileURL";
    template <class Fields>
    static Optrella::ParameterFileURL made(Fields& fields) {
        using enum Optrella::ParameterFileURL::urlType;
        using enum Optrella::ParameterFileURL::existState;
        const Optrella::Tags tags = fields.tags();
        const auto type = fields.word(
            "type", Cases<Optrella::ParameterFileURL::urlType>{
                        {"file", file}, {"folder", folder}, {"fileOrFolder", fileOrFolder}});
        const auto state =
            fields.word("state", Cases<Optrella::ParameterFileURL::existState>{
                                     {"exist", exist}, {"absent", absent}, {"vague", vague}});
        return {tags, type, state, fields.text("parameterName"), fields.text("tagHelp")};
    }
    static constexpr auto fetchOptional = &Optrella::fetchOptionalURL;
    static constexpr auto fetch = &Optrella::fetchURL;
    static std::optional<std::string> fault(const KindFields& fields, const std::string& typed) {
        const std::string& state = fields.words.at("state");
        const bool exists = fields.exists(typed);
        if (state == "exist" && !exists) return typed + " does not exist";
        if (state == "absent" && exists) return typed + " must not exist";
        return std::nullopt;
    }
    static std::string observed(const Optrella::FileURL& value) { return value.text().str(); }
    static bool isValue(const KindFields& fields, const std::string& typed,
                        const Optrella::FileURL& value) {
        std::string path = typed;
        if (typed.empty()) path = fields.currentDirectory;
        if (!path.starts_with('/')) path = fields.currentDirectory + "/" + typed;
        return value.path().str() == path;
    }
};

// Calls visit.operator()<Kind>() for each of the library's kinds.
template <class Visit>
void forEachKind(Visit&& visit) {
    Optrella::Internal::BuiltInKinds::forEach(std::forward<Visit>(visit));
}

// The arguments of a constructor where it does not matter what they are.
struct SampleFields {
    Optrella::Tags tags() { return {"-s", "--sample"}; }
    Optrella::Text text(const char* key) { return key; }
    std::int64_t number(const char*) { return 1; }
    Optrella::ListOptions options(const char*) { return {"a", "b"}; }
    template <class Case>
    Case word(const char*, const Cases<Case>& cases) {
        return cases.back().second;
    }
};

// A parameter of each of the library's kinds.
inline Optrella::Parameters oneOfEachKind() {
    Optrella::Parameters samples;
    forEachKind([&]<class Kind>() {
        SampleFields fields;
        samples.push_back(KindEntry<Kind>::made(fields));
    });
    return samples;
}

// The kind of a parameter as a case names it; "" for a tool's own kind.
inline std::string nameOfKind(const Optrella::ParameterProtocol& parameter) {
    std::string name;
    forEachKind([&]<class Kind>() {
        if (parameter.as<Kind>() != nullptr) name = KindEntry<Kind>::name;
    });
    return name;
}

}  // namespace Tests

#endif
