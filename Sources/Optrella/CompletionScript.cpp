#include "Optrella/CompletionScript.hpp"

#include <string>
#include <string_view>

#include "Optrella/CompletionScript/Scripts.hpp"
#include "Optrella/Text/Unicode.hpp"
#include "Optrella/Tool/Conditions.hpp"

namespace Optrella {

namespace {

bool isLetterOrDigit(char byte) noexcept {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= '0' && byte <= '9');
}

// Then no shell needs quotation marks around it, and no file is meant in another directory.
bool mayBeTyped(std::string_view name) noexcept {
    const auto isHarmless = [](char byte) {
        return isLetterOrDigit(byte) || static_cast<unsigned char>(byte) >= 0x80 ||
               std::string_view("+-._:@").find(byte) != std::string_view::npos;
    };
    return !name.empty() && name.front() != '-' && Internal::isUTF8(name) &&
           Internal::allOf(name, isHarmless);
}

// What every shell takes for the name of a function.
std::string functionName(std::string_view name) noexcept {
    std::string function = "_optrella_";
    for (const char byte : name) function += isLetterOrDigit(byte) ? byte : '_';
    return function;
}

void replaceAll(std::string& in, std::string_view what, std::string_view by) noexcept {
    for (std::size_t at = 0; (at = in.find(what, at)) != std::string::npos; at += by.size()) {
        in.replace(at, what.size(), by);
    }
}

}  // namespace

Text completionScript(const Tool& tool, Shell shell) noexcept {
    if (!mayBeTyped(tool.name)) return {};
    std::string script(Internal::scriptOf(shell));
    replaceAll(script, "@FUNCTION@", functionName(tool.name));
    replaceAll(script, "@NAME@", tool.name);
    return script;
}

}  // namespace Optrella
