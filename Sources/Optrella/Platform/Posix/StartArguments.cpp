#include "Optrella/Platform/StartArguments.hpp"

#include <cstring>

#include "Optrella/Platform/Process.hpp"

namespace Optrella::Platform {

namespace {

// Every argument with a NUL after it: one text rather than many, because every start pays for it.
// A pointer, because it is set before variables are made.
const std::string* kept = nullptr;

std::string joined(int count, const char* const* arguments) {
    std::string text;
    for (int i = 0; i < count; ++i) text.append(arguments[i], std::strlen(arguments[i]) + 1);
    return text;
}

// Runs before the constructors of the tool, where the system knows such an order: they may change
// the array as its main may. Not every C library passes anything here. What it has passed is the
// real thing when it lies as the system laid it out: the environment after the arguments and their
// null.
[[gnu::constructor(101)]] void keepArguments(int count, char** arguments, char** variables) {
    const bool arePassed = variables == environment() && variables == arguments + count + 1;
    kept = new std::string(arePassed ? joined(count, arguments) : argumentsOfTheSystem());
}

std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> arguments;
    for (std::size_t begin = 0; begin < text.size(); begin += arguments.back().size() + 1) {
        arguments.emplace_back(text.c_str() + begin);
    }
    return arguments;
}

}  // namespace

const std::vector<std::string>& startArguments() {
    // Never destroyed, as what it is made of: they are asked for until the process ends.
    static const std::vector<std::string>& arguments = *new std::vector(split(*kept));
    return arguments;
}

}  // namespace Optrella::Platform
