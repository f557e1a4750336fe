#include "Optrella/Description.hpp"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "Optrella/CommandLine/Declaration.hpp"
#include "Optrella/Parameters.hpp"
#include "Optrella/Text/StringBuilder.hpp"
#include "Optrella/Text/Unicode.hpp"

namespace Optrella {

namespace {

using Internal::CodePoint;
using Internal::Declaration;
using Internal::ParameterView;
using Internal::StringBuilder;

// ---- JSON ----

void appendHex(StringBuilder& json, unsigned byte) noexcept {
    constexpr std::string_view digits = "0123456789abcdef";
    json.append(digits.substr(byte / 16, 1), digits.substr(byte % 16, 1));
}

// JSON itself asks for fewer of them to be escaped: here none divides a line or controls a
// terminal.
bool isControl(CodePoint::Value value) noexcept {
    return value < 0x20 || (value >= 0x7F && value <= 0x9F) || value == 0x2028 || value == 0x2029;
}

void appendCodePoint(StringBuilder& json, std::string_view bytes, CodePoint::Value value) noexcept {
    if (value == '"' || value == '\\') {
        json.append("\\", bytes);
    } else if (value == '\n') {
        json.append("\\n");
    } else if (isControl(value)) {
        json.append("\\u");
        appendHex(json, static_cast<unsigned>(value) / 0x100);
        appendHex(json, static_cast<unsigned>(value) % 0x100);
    } else {
        json.append(bytes);
    }
}

void appendBytes(StringBuilder& json, std::string_view bytes) noexcept {
    json.append(R"({"hex": ")");
    for (const char byte : bytes) appendHex(json, static_cast<unsigned char>(byte));
    json.append(R"("})");
}

void appendText(StringBuilder& json, std::string_view text) noexcept {
    if (!Internal::isUTF8(text)) return appendBytes(json, text);
    json.append("\"");
    while (!text.empty()) {
        const CodePoint next = Internal::firstCodePoint(text);
        appendCodePoint(json, text.substr(0, next.size), next.value);
        text.remove_prefix(next.size);
    }
    json.append("\"");
}

template <class Elements, class Append>
void appendList(StringBuilder& json, const Elements& elements, Append append) noexcept {
    std::string_view divider = "[";
    for (const auto& each : elements) {
        json.append(divider);
        append(json, each);
        divider = ", ";
    }
    json.append(elements.size() == 0 ? "[]" : "]");
}

void appendTexts(StringBuilder& json, const Tags& texts) noexcept {
    appendList(json, texts, [](StringBuilder& to, const Text& each) { appendText(to, each); });
}

std::string_view wordOf(bool value) noexcept { return value ? "true" : "false"; }

// ---- Parameters ----

bool isOfOwnKind(const ParameterView& parameter) noexcept {
    const auto& library = Internal::builtInOperations;
    return std::none_of(library.begin(), library.end(), [&](const auto& operations) {
        return &operations == &parameter.operations();
    });
}

// A library's kind tells by itself whether a value follows, unless somebody has changed that.
void appendWhetherValueFollows(StringBuilder& json, const ParameterView& parameter) noexcept {
    const bool follows = parameter.common().hasParameter;
    const bool isFlag = parameter.as<ParameterNone>() != nullptr;
    if (isOfOwnKind(parameter) || follows == isFlag) {
        json.append(R"(, "hasParameter": )", wordOf(follows));
    }
}

void appendOption(StringBuilder& json, const ParameterNone& option) noexcept {
    json.append(R"({"tags": )");
    appendTexts(json, option.common.tags);
    json.append(R"(, "tagHelp": )");
    appendText(json, option.common.tagHelp);
    json.append("}");
}

void appendFieldsOfKind(StringBuilder& json, const ParameterView& parameter) noexcept {
    if (const auto* number = parameter.as<ParameterNumber>()) {
        json.append(R"(, "min": )", std::to_string(*number->rangeMin()));
        json.append(R"(, "max": )", std::to_string(*number->rangeMax()));
    } else if (const auto* list = parameter.as<ParameterList>()) {
        json.append(R"(, "validOptions": )");
        appendList(json, list->validOptions(), appendOption);
    } else if (const auto* path = parameter.as<ParameterFileURL>()) {
        json.append(R"(, "type": ")", rawValue(path->type), "\"");
        json.append(R"(, "state": ")", rawValue(path->state), "\"");
    }
}

void appendParameter(StringBuilder& json, const ParameterView& parameter) noexcept {
    const commonDetails& common = parameter.common();
    json.append(R"({"kind": )");
    appendText(json, parameter.operations().name);
    json.append(R"(, "tags": )");
    appendTexts(json, common.tags);
    appendWhetherValueFollows(json, parameter);
    if (common.hasParameter) {
        json.append(R"(, "parameterName": )");
        appendText(json, common.parameterName);
    }
    appendFieldsOfKind(json, parameter);
    json.append(R"(, "tagHelp": )");
    appendText(json, common.tagHelp);
    json.append("}");
}

// ---- The tool ----

std::string_view wordOf(Takes takes) noexcept {
    switch (takes) {
        case Takes::many:
            return "many";
        case Takes::rest:
            return "rest";
        case Takes::one:
            break;
    }
    return "one";
}

// Those that are named after a parameter without tags mean none.
template <class Named>
std::vector<Named> thatName(const std::vector<Named>& all) noexcept {
    std::vector<Named> named;
    for (const Named& each : all) {
        if (each.firstTag()) named.push_back(each);
    }
    return named;
}

void appendOperand(StringBuilder& json, const Operand& operand) noexcept {
    json.append(R"({"tag": )");
    appendText(json, *operand.firstTag());
    json.append(R"(, "takes": ")", wordOf(operand.takes()), R"("})");
}

void appendDeclaration(StringBuilder& json, const CommandLinePossibility& declaration) noexcept {
    json.append(R"({"requiresRoot": )", wordOf(Declaration::requiresRoot(declaration)));
    json.append(R"(, "help": )");
    appendText(json, Declaration::help(declaration));
    json.append(R"(, "hidden": )", wordOf(Declaration::hidden(declaration)), R"(, "required": )");
    appendList(json, Declaration::required(declaration), appendParameter);
    json.append(R"(, "optional": )");
    appendList(json, Declaration::optional(declaration), appendParameter);
    json.append("}");
}

void appendSurroundings(StringBuilder& json, const Tool& tool) noexcept {
    json.append("{\"optrella\": 1,\n \"name\": ");
    appendText(json, tool.name);
    json.append(",\n \"version\": ");
    appendText(json, tool.version);
    json.append(",\n \"summary\": ");
    appendText(json, tool.summary);
    json.append(",\n \"operands\": ");
    appendList(json, thatName(tool.operands), appendOperand);
    json.append(",\n \"repeated\": ");
    appendList(json, thatName(tool.repeated),
               [](StringBuilder& to, const Repeated& each) { appendText(to, *each.firstTag()); });
}

}  // namespace

Text description(const Tool& tool) noexcept {
    StringBuilder json;
    appendSurroundings(json, tool);
    json.append(",\n \"declarations\": [");
    std::string_view divider = "\n  ";
    for (const CommandLinePossibility& each : tool.commandLines) {
        json.append(divider);
        appendDeclaration(json, each);
        divider = ",\n  ";
    }
    json.append(tool.commandLines.empty() ? "" : "\n ", "]}\n");
    return json.from(0);
}

}  // namespace Optrella
