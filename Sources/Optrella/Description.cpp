#include "Optrella/Description.hpp"

#include <cstdint>
#include <string>
#include <string_view>

#include "Optrella/CommandLine/Declaration.hpp"
#include "Optrella/Parameters.hpp"
#include "Optrella/Text/StringBuilder.hpp"
#include "Optrella/Text/Unicode.hpp"
#include "Optrella/Tool/Conditions.hpp"

namespace Optrella {

namespace {

using Internal::CodePoint;
using Internal::Declaration;
using Internal::ParameterView;
using Internal::StringBuilder;

// ---- JSON ----

// Each piece is a call: small rather than fast.
[[gnu::noinline]] void appendPiece(StringBuilder& json, std::string_view piece) noexcept {
    json.append(piece);
}

template <class... Pieces>
void append(StringBuilder& json, const Pieces&... pieces) noexcept {
    (appendPiece(json, pieces), ...);
}

void appendHex(StringBuilder& json, unsigned byte) noexcept {
    constexpr std::string_view digits = "0123456789abcdef";
    append(json, digits.substr(byte / 16, 1), digits.substr(byte % 16, 1));
}

// JSON itself asks for fewer of them to be escaped: here none divides a line or controls a
// terminal.
bool isControl(CodePoint::Value value) noexcept {
    return value < 0x20 || (value >= 0x7F && value <= 0x9F) || value == 0x2028 || value == 0x2029;
}

void appendCodePoint(StringBuilder& json, std::string_view bytes, CodePoint::Value value) noexcept {
    if (value == '"' || value == '\\') {
        append(json, "\\", bytes);
    } else if (value == '\n') {
        append(json, "\\n");
    } else if (isControl(value)) {
        append(json, "\\u");
        appendHex(json, static_cast<unsigned>(value) / 0x100);
        appendHex(json, static_cast<unsigned>(value) % 0x100);
    } else {
        append(json, bytes);
    }
}

void appendBytes(StringBuilder& json, std::string_view bytes) noexcept {
    append(json, R"({"hex": ")");
    for (const char byte : bytes) appendHex(json, static_cast<unsigned char>(byte));
    append(json, R"("})");
}

void appendText(StringBuilder& json, std::string_view text) noexcept {
    if (!Internal::isUTF8(text)) return appendBytes(json, text);
    append(json, "\"");
    while (!text.empty()) {
        const CodePoint next = Internal::firstCodePoint(text);
        appendCodePoint(json, text.substr(0, next.size), next.value);
        text.remove_prefix(next.size);
    }
    append(json, "\"");
}

template <class Elements, class Append>
void appendList(StringBuilder& json, const Elements& elements, Append appendEach) noexcept {
    std::string_view divider = "[";
    for (const auto& each : elements) {
        append(json, divider);
        appendEach(json, each);
        divider = ", ";
    }
    append(json, elements.size() == 0 ? "[]" : "]");
}

void appendTexts(StringBuilder& json, const Tags& texts) noexcept {
    appendList(json, texts, [](StringBuilder& to, const Text& each) { appendText(to, each); });
}

std::string_view wordOf(bool value) noexcept { return value ? "true" : "false"; }

// ---- Parameters ----

bool isOfOwnKind(const ParameterView& parameter) noexcept {
    const auto& library = Internal::builtInOperations;
    return Internal::noneOf(
        library, [&](const auto& operations) { return &operations == &parameter.operations(); });
}

// A library's kind tells by itself whether a value follows, unless somebody has changed that.
void appendWhetherValueFollows(StringBuilder& json, const ParameterView& parameter) noexcept {
    const bool follows = parameter.common().hasParameter;
    const bool isFlag = parameter.as<ParameterNone>() != nullptr;
    if (isOfOwnKind(parameter) || follows == isFlag) {
        append(json, R"(, "hasParameter": )", wordOf(follows));
    }
}

void appendOption(StringBuilder& json, const ParameterNone& option) noexcept {
    append(json, R"({"tags": )");
    appendTexts(json, option.common.tags);
    append(json, R"(, "tagHelp": )");
    appendText(json, option.common.tagHelp);
    append(json, "}");
}

void appendFieldsOfKind(StringBuilder& json, const ParameterView& parameter) noexcept {
    if (const auto* number = parameter.as<ParameterNumber>()) {
        append(json, R"(, "min": )", std::to_string(*number->rangeMin()));
        append(json, R"(, "max": )", std::to_string(*number->rangeMax()));
    } else if (const auto* list = parameter.as<ParameterList>()) {
        append(json, R"(, "validOptions": )");
        appendList(json, list->validOptions(), appendOption);
    } else if (const auto* path = parameter.as<ParameterFileURL>()) {
        append(json, R"(, "type": ")", rawValue(path->type), "\"");
        append(json, R"(, "state": ")", rawValue(path->state), "\"");
    }
}

void appendParameter(StringBuilder& json, const ParameterView& parameter) noexcept {
    const commonDetails& common = parameter.common();
    append(json, R"({"kind": )");
    appendText(json, parameter.operations().name);
    append(json, R"(, "tags": )");
    appendTexts(json, common.tags);
    appendWhetherValueFollows(json, parameter);
    if (common.hasParameter) {
        append(json, R"(, "parameterName": )");
        appendText(json, common.parameterName);
    }
    appendFieldsOfKind(json, parameter);
    append(json, R"(, "tagHelp": )");
    appendText(json, common.tagHelp);
    append(json, "}");
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
template <class Named, class Append>
void appendNamed(StringBuilder& json, const std::vector<Named>& all, Append appendEach) noexcept {
    append(json, "[");
    std::string_view divider;
    for (const Named& each : all) {
        if (!each.firstTag()) continue;
        append(json, divider);
        appendEach(json, each);
        divider = ", ";
    }
    append(json, "]");
}

void appendOperand(StringBuilder& json, const Operand& operand) noexcept {
    append(json, R"({"tag": )");
    appendText(json, *operand.firstTag());
    append(json, R"(, "takes": ")", wordOf(operand.takes()), R"("})");
}

void appendDeclaration(StringBuilder& json, const CommandLinePossibility& declaration) noexcept {
    append(json, R"({"requiresRoot": )", wordOf(Declaration::requiresRoot(declaration)));
    append(json, R"(, "help": )");
    appendText(json, Declaration::help(declaration));
    append(json, R"(, "hidden": )", wordOf(Declaration::hidden(declaration)), R"(, "required": )");
    appendList(json, Declaration::required(declaration), appendParameter);
    append(json, R"(, "optional": )");
    appendList(json, Declaration::optional(declaration), appendParameter);
    append(json, "}");
}

void appendSurroundings(StringBuilder& json, const Tool& tool) noexcept {
    append(json, "{\"optrella\": 1,\n \"name\": ");
    appendText(json, tool.name);
    append(json, ",\n \"version\": ");
    appendText(json, tool.version);
    append(json, ",\n \"summary\": ");
    appendText(json, tool.summary);
    append(json, ",\n \"operands\": ");
    appendNamed(json, tool.operands, appendOperand);
    append(json, ",\n \"repeated\": ");
    appendNamed(json, tool.repeated,
                [](StringBuilder& to, const Repeated& each) { appendText(to, *each.firstTag()); });
}

}  // namespace

Text description(const Tool& tool) noexcept {
    StringBuilder json;
    appendSurroundings(json, tool);
    append(json, ",\n \"declarations\": [");
    std::string_view divider = "\n  ";
    for (const CommandLinePossibility& each : tool.commandLines) {
        append(json, divider);
        appendDeclaration(json, each);
        divider = ",\n  ";
    }
    append(json, tool.commandLines.empty() ? "" : "\n ", "]}\n");
    return json.from(0);
}

}  // namespace Optrella
