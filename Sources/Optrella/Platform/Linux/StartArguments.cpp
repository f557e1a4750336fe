#include "Optrella/Platform/StartArguments.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace Optrella::Platform {

namespace {

// Every argument with a NUL behind it, as the system's own file has them: one text rather than
// many, because every start pays for it. A pointer, because it is set before variables are made.
const std::string* kept = nullptr;

std::string joined(int count, const char* const* arguments) {
    std::string text;
    for (int i = 0; i < count; ++i) text.append(arguments[i], std::strlen(arguments[i]) + 1);
    return text;
}

std::string commandLineFile() {
    std::string text;
    const int file = ::open("/proc/self/cmdline", O_RDONLY | O_CLOEXEC);
    if (file < 0) return text;
    char buffer[4096];
    for (;;) {
        const ssize_t size = ::read(file, buffer, sizeof buffer);
        if (size > 0) {
            text.append(buffer, static_cast<std::size_t>(size));
        } else if (size == 0 || errno != EINTR) {
            break;
        }
    }
    ::close(file);
    return text;
}

// Runs before the constructors of the tool, which may change the array as its main may. Not every C
// library passes anything here. What it has passed is the real thing when it lies as the system
// laid it out: the environment behind the arguments and their null.
[[gnu::constructor(101)]] void keepArguments(int count, char** arguments, char** environment) {
    const bool arePassed = environment == environ && environment == arguments + count + 1;
    kept = new std::string(arePassed ? joined(count, arguments) : commandLineFile());
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
