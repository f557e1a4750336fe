// The help listing of any declarations: the texts that it shows, and that a parse leaves it alone.

#include <string>
#include <vector>

#include "Law.hpp"
#include "Optrella/Help.hpp"
#include "Optrella/Text/Unicode.hpp"
#include "Output.hpp"
#include "Support/Declarations.hpp"
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
    const auto declarations =
        made(commands, [](std::size_t, const Parameters&) { law(false, "help runs nothing"); });
    takePrinted();
    displayHelp(declarations);
    return takePrinted();
}

// The texts of a command as its block shows them, one after the other.
std::vector<std::string> partsOf(const CommandCase& command) {
    std::string synopses;
    std::string required;
    std::string optional;
    for (const ParameterCase& each : command.required) {
        synopses += synopsis(each, false) + " ";
        required = described(required, each);
    }
    for (const ParameterCase& each : command.optional) {
        synopses += synopsis(each, true) + " ";
        optional = described(optional, each);
    }
    return {synopses, command.help, required + optional};
}

// What stands around the texts is the same for every command: the cases say what.
void checkBlock(const std::string& block, const CommandCase& command) {
    std::size_t at = 0;
    std::size_t size = 0;
    for (const std::string& part : partsOf(command)) {
        at = block.find(part, at);
        law(at != std::string::npos, "the block of a command shows its texts in their order");
        at += part.size();
        size += part.size();
    }
    const CommandCase bare{command.requiresRoot, false, "", {}, {}};
    law(block.size() == size + listing({bare}).size() - listing({}).size(),
        "the block of a command shows nothing else");
}

void checkListing(const std::vector<CommandCase>& commands) {
    std::string blocks = listing({});
    const std::size_t begin = blocks.size();
    for (const CommandCase& command : commands) {
        const std::string block = listing({command}).substr(begin);
        if (command.hidden) law(block.empty(), "what is hidden is not shown");
        if (!command.hidden) checkBlock(block, command);
        blocks += block;
    }
    sameBytes(listing(commands), blocks, "the listing shows a block for each command");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    platform() = FakePlatform();
    const std::vector<CommandCase> cases = commands(input, true);
    checkListing(cases);

    const auto declarations = made(cases, [](std::size_t, const Parameters&) {});
    std::vector<std::string> line = arguments(input, cases);
    line.insert(line.begin(), "tool");
    static_cast<void>(parse(declarations, line));
    takePrinted();
    displayHelp(declarations);
    sameBytes(takePrinted(), listing(cases), "a parse leaves the listing as it was");
    return 0;
}
