// Traces.hpp - what a piece of code leaves in the process.

#ifndef OPTRELLA_TESTS_CHILDPROCESS_TRACES_HPP
#define OPTRELLA_TESTS_CHILDPROCESS_TRACES_HPP

#include <cstddef>
#include <string>
#include <vector>

namespace Tests {

// A program that is built beside the one that runs.
std::string programBeside(const char* name);

// The open descriptors in ascending order, and those of them that an executed program inherits.
std::vector<int> descriptors();
std::vector<int> inheritableDescriptors();

// Whether the process has as many threads as it had at the first call, if not at once then after a
// moment: a thread that has been joined may be listed a little longer.
bool hasUsualThreads();

// Whether there is a child that nobody has waited for. Waits for those that there are.
bool hasChildren();

// What each system tells in its own way: the path of the program that runs, and how many threads it
// has.
std::string ownPath();
std::size_t countThreads();

}  // namespace Tests

#endif
