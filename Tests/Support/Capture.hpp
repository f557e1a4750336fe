// Capture.hpp - what a piece of code writes to the two output streams, to the byte.

#ifndef OPTRELLA_TESTS_SUPPORT_CAPTURE_HPP
#define OPTRELLA_TESTS_SUPPORT_CAPTURE_HPP

#include <functional>
#include <string>

namespace Tests {

struct Output {
    std::string standardOutput;
    std::string standardError;

    friend bool operator==(const Output&, const Output&) = default;
};
// For the messages of failed tests.
void PrintTo(const Output& output, std::ostream* stream);

// Runs the code with descriptors 1 and 2 on files of their own and puts them back.
Output capture(const std::function<void()>& code);

// The same for standard output alone, where nothing may reach standard error: a failed expectation
// when something did.
std::string printed(const std::function<void()>& code);

}  // namespace Tests

#endif
