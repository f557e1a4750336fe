// StartArguments.hpp - what the process was started with.

#ifndef OPTRELLA_PLATFORM_STARTARGUMENTS_HPP
#define OPTRELLA_PLATFORM_STARTARGUMENTS_HPP

#include <string>
#include <vector>

namespace Optrella::Platform {

// Returns the arguments as they were before `main`, byte by byte and the program's name first,
// whatever the program has done to them since. Empty when the system does not tell them.
[[nodiscard]] const std::vector<std::string>& startArguments();

// Returns what the system tells of them to those whom it has passed nothing: all in one text, a NUL
// after each.
[[nodiscard]] std::string argumentsOfTheSystem();

}  // namespace Optrella::Platform

#endif
