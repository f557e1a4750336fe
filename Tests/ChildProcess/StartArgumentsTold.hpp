// StartArgumentsTold.hpp - what the probe tells of the arguments that it was started with.

#ifndef OPTRELLA_TESTS_CHILDPROCESS_STARTARGUMENTSTOLD_HPP
#define OPTRELLA_TESTS_CHILDPROCESS_STARTARGUMENTSTOLD_HPP

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "ChildProcess/Traces.hpp"
#include "Platform/Child.hpp"

namespace Tests {

using Arguments = std::vector<std::string>;

inline const std::string probe = programBeside("start-arguments-probe");

// The texts, each of which ends at a NUL.
inline Arguments split(const std::string& text) {
    Arguments parts;
    for (std::size_t begin = 0; begin < text.size(); begin += parts.back().size() + 1) {
        parts.emplace_back(text.c_str() + begin);
    }
    return parts;
}

struct ToldArguments {
    int exitCode;
    Arguments arguments;
};

// What the probe writes when it is started with these arguments, the first of which is its name.
inline ToldArguments told(const Arguments& arguments, const char* wish = "") {
    const Told answer = toldBy(probe, arguments, [&] { ::setenv("OPTRELLA_TEST", wish, 1); });
    return {answer.exitCode, split(answer.output)};
}

inline void expectTold(const Arguments& arguments, const char* wish = "") {
    const ToldArguments answer = told(arguments, wish);
    EXPECT_EQ(answer.exitCode, 0);
    EXPECT_EQ(answer.arguments, arguments);
}

inline const Arguments usual{"tool", "run", "--x", "1"};
inline const Arguments unusual{"./a tool", "",   " ",    "a\nb\r\n", "\"'", "\xff\xfe",
                               "\xc3\xa9", "--", "*\\$", "\x01\x7f", "",    ""};

}  // namespace Tests

#endif
