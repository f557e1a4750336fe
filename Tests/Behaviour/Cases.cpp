#include "Cases.hpp"

#include <cstdint>
#include <limits>
#include <optional>

namespace Behaviour {

namespace {

using namespace Optrella;

int digit(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    throw NoCase("hex: not a hexadecimal digit");
}

std::string bytesOfHex(const json& hex) {
    if (!hex.is_string()) throw NoCase("hex: not a string");
    const auto& digits = hex.get_ref<const std::string&>();
    if (digits.size() % 2 != 0) throw NoCase("hex: half a byte");
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        bytes += static_cast<char>(digit(digits[i]) * 16 + digit(digits[i + 1]));
    }
    return bytes;
}

std::string hexOf(std::string_view bytes) {
    constexpr const char* digits = "0123456789abcdef";
    std::string hex;
    for (const char each : bytes) {
        const auto byte = static_cast<unsigned char>(each);
        hex += digits[byte / 16];
        hex += digits[byte % 16];
    }
    return hex;
}

bool isWritable(const json& text) {
    try {
        static_cast<void>(text.dump());
        return true;
    } catch (const json::type_error&) {  // not UTF-8
        return false;
    }
}

const json& list(const json& value) {
    if (!value.is_array()) throw NoCase("not a list: " + value.dump());
    return value;
}

std::int64_t integer(const json& value) {
    constexpr auto largest = std::numeric_limits<std::int64_t>::max();
    if (!value.is_number_integer() ||
        (value.is_number_unsigned() && value.get<std::uint64_t>() > std::uint64_t{largest})) {
        throw NoCase("not a whole number of 64 bits: " + value.dump());
    }
    return value.get<std::int64_t>();
}

Tags tags(const json& description) { return texts(at(description, "tags")); }
Text textAt(const json& description, const char* key) { return bytes(at(description, key)); }
Text tagHelp(const json& description) { return textAt(description, "tagHelp"); }
Text parameterName(const json& description) { return textAt(description, "parameterName"); }

// With the user's value, if the description has one.
template <class Kind>
Kind filledIn(Kind kind, const json& description) {
    if (description.contains("userValue")) kind.storeUserValue(textAt(description, "userValue"));
    return kind;
}

ParameterNone flag(const json& description) {
    return filledIn(ParameterNone(tags(description), tagHelp(description)), description);
}

ParameterNumber number(const json& description) {
    return {tags(description), parameterName(description), integer(at(description, "min")),
            integer(at(description, "max")), tagHelp(description)};
}

ParameterList choice(const json& description) {
    std::vector<ParameterNone> options;
    for (const json& option : list(at(description, "validOptions"))) {
        options.push_back(flag(option));
    }
    return {tags(description), std::move(options), parameterName(description),
            tagHelp(description)};
}

template <class Case>
Case named(const json& name, std::initializer_list<std::pair<const char*, Case>> cases) {
    for (const auto& [text, value] : cases) {
        if (name == text) return value;
    }
    throw NoCase("no such case: " + name.dump());
}

ParameterFileURL fileURL(const json& description) {
    using enum ParameterFileURL::urlType;
    using enum ParameterFileURL::existState;
    return {tags(description),
            named(at(description, "type"),
                  {std::pair{"file", file}, {"folder", folder}, {"fileOrFolder", fileOrFolder}}),
            named(at(description, "state"),
                  {std::pair{"exist", exist}, {"absent", absent}, {"vague", vague}}),
            parameterName(description), tagHelp(description)};
}

}  // namespace

const json& at(const json& object, const char* key) {
    if (!object.is_object()) throw NoCase("not an object: " + object.dump());
    const auto found = object.find(key);
    if (found == object.end()) throw NoCase(std::string("no key ") + key);
    return *found;
}

std::string bytes(const json& text) {
    if (text.is_string()) return text.get<std::string>();
    if (!text.is_object()) throw NoCase("not a text: " + text.dump());
    return bytesOfHex(at(text, "hex"));
}

json text(std::string_view bytes) {
    json text = bytes;
    if (!isWritable(text)) text = json{{"hex", hexOf(bytes)}};
    return text;
}

std::vector<Text> texts(const json& values) {
    std::vector<Text> texts;
    for (const json& value : list(values)) texts.emplace_back(bytes(value));
    return texts;
}

bool boolean(const json& value) {
    if (!value.is_boolean()) throw NoCase("neither true nor false: " + value.dump());
    return value.get<bool>();
}

ParameterProtocol parameter(const json& description) {
    const json& kind = at(description, "kind");
    const auto made = [&](auto parameter) -> ParameterProtocol {
        return filledIn(std::move(parameter), description);
    };
    if (kind == "ParameterNone") return flag(description);
    if (kind == "ParameterString") {
        return made(
            ParameterString(tags(description), parameterName(description), tagHelp(description)));
    }
    if (kind == "ParameterUUID") {
        return made(
            ParameterUUID(tags(description), parameterName(description), tagHelp(description)));
    }
    if (kind == "ParameterNumber") return made(number(description));
    if (kind == "ParameterList") return made(choice(description));
    if (kind == "ParameterFileURL") return made(fileURL(description));
    throw NoCase("no such kind: " + kind.dump());
}

Parameters parameters(const json& descriptions) {
    Parameters parameters;
    for (const json& description : list(descriptions)) {
        parameters.push_back(parameter(description));
    }
    return parameters;
}

}  // namespace Behaviour
