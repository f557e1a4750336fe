#include "Optrella/Platform/StartArguments.hpp"

#include <crt_externs.h>

#include <cstring>

namespace Optrella::Platform {

std::string argumentsOfTheSystem() {
    std::string text;
    const char* const* const arguments = *_NSGetArgv();
    for (int i = 0; i < *_NSGetArgc() && arguments[i] != nullptr; ++i) {
        text.append(arguments[i], std::strlen(arguments[i]) + 1);
    }
    return text;
}

}  // namespace Optrella::Platform
