// Child.hpp - runs a piece of work in a child process of its own, and says what came of it.
//
// REQUIRES: the process has no second thread, and has not touched C's standard streams.

#ifndef OPTRELLA_TESTS_BEHAVIOUR_CHILD_HPP
#define OPTRELLA_TESTS_BEHAVIOUR_CHILD_HPP

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace Behaviour {

struct Outcome {
    std::string report;         // what the work returned; empty when it did not get that far
    std::string output;         // what the child wrote to standard output
    std::string errors;         // and to standard error
    std::optional<int> status;  // how it ended, as waitpid tells it; nothing when its time was up
};

// The child has no input and no terminal, and leaves neither a core file nor a process.
// Throws std::system_error when there can be no child.
Outcome runInChild(const std::function<std::string()>& work, std::chrono::nanoseconds limit);

// Throws std::system_error when not everything can be written.
void writeAll(int descriptor, const std::string& bytes);

}  // namespace Behaviour

#endif
