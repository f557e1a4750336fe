// The help listing of any declarations, against a plain model of it, before and after a parse.

#include <string>
#include <vector>

#include "Declarations.hpp"
#include "Input.hpp"
#include "Optrella/Help.hpp"
#include "Optrella/Text/Unicode.hpp"
#include "Output.hpp"
#include "Support/FakePlatform.hpp"

namespace {

using namespace Optrella;
using namespace Tests;

// TextTarget.cpp has the cutting off itself checked.
std::string withoutLast(std::size_t count, std::string text) {
    text.resize(text.size() - Internal::sizeOfLastCharacters(text, count));
    return text;
}

std::string synopsis(const ParameterCase& parameter, bool isOptional) {
    std::string tags = isOptional ? "[ " : "";
    for (const std::string& tag : parameter.tags) tags += tag + "|";
    std::string text = withoutLast(1, tags);
    if (parameter.takesValue) text += " <" + parameter.name + "> ";
    return text + (isOptional ? " ]" : "");
}

std::string described(std::string lines, const ParameterCase& parameter) {
    if (!parameter.takesValue) {
        return parameter.help.empty() ? lines : lines + "    " + parameter.help + "\n";
    }
    lines += "    " + parameter.name + "  -  " + parameter.help + "\n";
    if (parameter.kind != numberOf<ParameterList>) return lines;
    lines += "        Must be one of: ";
    for (const auto& option : parameter.fields.options) lines += option.front() + ", ";
    return withoutLast(2, lines) + "\n";
}

std::string listing(const std::vector<CommandCase>& commands) {
    std::string text = "\n";
    for (const CommandCase& command : commands) {
        if (command.hidden) continue;
        std::string required;
        std::string optional;
        for (const ParameterCase& each : command.required) {
            text += synopsis(each, false) + " ";
            required = described(required, each);
        }
        for (const ParameterCase& each : command.optional) {
            text += synopsis(each, true) + " ";
            optional = described(optional, each);
        }
        text += "\n  " + command.help + " ";
        if (command.requiresRoot) text += " (must be run as root)";
        text += "\n" + required + optional + "\n";
    }
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    platform() = FakePlatform();
    const std::vector<CommandCase> cases = commands(input, true);
    bool hasRun = false;
    const auto declarations =
        made(cases, [&hasRun](std::size_t, const Parameters&) { hasRun = true; });
    takePrinted();

    displayHelp(declarations);
    const std::string expected = listing(cases);
    sameBytes(takePrinted(), expected, "the listing shows the declarations");
    law(!hasRun, "help runs nothing");

    std::vector<std::string> line = arguments(input, cases);
    line.insert(line.begin(), "tool");
    static_cast<void>(parse(declarations, line));
    takePrinted();
    displayHelp(declarations);
    sameBytes(takePrinted(), expected, "a parse leaves the listing as it was");
    return 0;
}
