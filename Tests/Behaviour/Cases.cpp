#include "Cases.hpp"

#include <cstdint>
#include <limits>
#include <optional>

#include "Support/Kinds.hpp"

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

Text textAt(const json& description, const char* key) { return bytes(at(description, key)); }

// With the user's value, if the description has one.
template <class Kind>
Kind filledIn(Kind kind, const json& description) {
    if (description.contains("userValue")) kind.storeUserValue(textAt(description, "userValue"));
    return kind;
}

// The fields of a kind, as a case gives them.
class DescribedFields {
public:
    explicit DescribedFields(const json& description) : description_(description) {}

    Tags tags() { return texts(at(description_, "tags")); }
    Text text(const char* key) { return textAt(description_, key); }
    std::int64_t number(const char* key) { return integer(at(description_, key)); }
    ListOptions options(const char* key) {
        std::vector<ParameterNone> options;
        for (const json& option : list(at(description_, key))) {
            DescribedFields fields(option);
            options.push_back(filledIn(Tests::KindEntry<ParameterNone>::made(fields), option));
        }
        return options;
    }
    template <class Case>
    Case word(const char* key, const Tests::Cases<Case>& cases) {
        const json& name = at(description_, key);
        for (const auto& [text, value] : cases) {
            if (name == text) return value;
        }
        throw NoCase("no such case: " + name.dump());
    }

private:
    const json& description_;
};

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

json orNull(const std::optional<Text>& value) { return value ? text(*value) : json(); }

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
    const json& name = at(description, "kind");
    std::optional<ParameterProtocol> made;
    Tests::forEachKind([&]<class Kind>() {
        if (name != Tests::KindEntry<Kind>::name) return;
        DescribedFields fields(description);
        made = filledIn(Tests::KindEntry<Kind>::made(fields), description);
    });
    if (!made) throw NoCase("no such kind: " + name.dump());
    return *made;
}

Parameters parameters(const json& descriptions) {
    Parameters parameters;
    for (const json& description : list(descriptions)) {
        parameters.push_back(parameter(description));
    }
    return parameters;
}

}  // namespace Behaviour
