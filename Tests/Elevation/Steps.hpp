// Steps.hpp - what a process does for the tests of this directory, word by word.

#ifndef OPTRELLA_TESTS_ELEVATION_STEPS_HPP
#define OPTRELLA_TESTS_ELEVATION_STEPS_HPP

#include <span>
#include <string>
#include <string_view>

namespace Tests {

// Gathers what is told and writes it at once.
//
//   say TEXT      tells a line
//   bytes HEX     tells these bytes
//   fill COUNT    tells so many bytes
//   arguments     tells the arguments, a line "argument HEX" for each
//   environment   tells the environment, a line "variable HEX" for each entry
//   input         tells standard input, to its end: "input HEX"
//   user          tells the effective and the real user: "user 0 0"
//   program       tells the file that runs: "program PATH"
//   place         tells working directory and umask: "place PATH 22"
//   descriptors   tells the open descriptors: "descriptors 0 1 2"
//   threads       tells how many threads there are: "threads 1"
//   signals       tells which signals are blocked and which ignored: "blocked 2 15 ignored 17"
//   write         writes what was told to standard output, and waits until it has been read
//   error         the same to standard error
//   finish        writes what was told to standard output, and ends at once
//   record PATH   puts what was told into a file, which appears as a whole
//   pid PATH      puts the number of the process into a file, in the same way
//   await PATH    waits until the file exists, ten seconds at most
//   sleep COUNT   sleeps so many milliseconds
//   leave COUNT   leaves a process running that holds the pipes for so many milliseconds
//   kill SIGNAL   dies of the signal
//   execute PATH  puts another program in its place; where that fails, tells why: "refused 13"
//   exit CODE     ends at once
class Steps {
public:
    explicit Steps(std::span<const std::string> arguments) : arguments_(arguments) {}

    void take(std::string_view step);

private:
    void tell(std::string_view text);
    void write(int descriptor);
    [[noreturn]] void finish();
    void record(const std::string& path, std::string_view bytes) const;

    std::span<const std::string> arguments_;
    std::string told_;
};

}  // namespace Tests

#endif
