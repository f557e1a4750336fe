#include "Capture.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>

namespace Tests {

namespace {

// One descriptor that writes to an unnamed file while this lives.
class Redirection {
public:
    Redirection(std::FILE* stream, int descriptor)
        : stream_(stream),
          descriptor_(descriptor),
          original_(::dup(descriptor)),
          file_(std::tmpfile()) {
        std::fflush(stream_);
        ::dup2(::fileno(file_), descriptor_);
    }
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;
    ~Redirection() {
        putBack();
        std::fclose(file_);
    }

    std::string putBackAndRead() {
        putBack();
        std::string text;
        std::rewind(file_);
        for (int c = std::fgetc(file_); c != EOF; c = std::fgetc(file_)) {
            text += static_cast<char>(c);
        }
        return text;
    }

private:
    void putBack() {
        if (original_ < 0) return;
        std::fflush(stream_);
        ::dup2(original_, descriptor_);
        ::close(original_);
        original_ = -1;
    }

    std::FILE* stream_;
    int descriptor_;
    int original_;
    std::FILE* file_;
};

}  // namespace

void PrintTo(const Output& output, std::ostream* stream) {
    *stream << "standard output: " << testing::PrintToString(output.standardOutput)
            << ", standard error: " << testing::PrintToString(output.standardError);
}

Output capture(const std::function<void()>& code) {
    Redirection output(stdout, STDOUT_FILENO);
    Redirection error(stderr, STDERR_FILENO);
    code();
    return {output.putBackAndRead(), error.putBackAndRead()};
}

std::string printed(const std::function<void()>& code) {
    const Output output = capture(code);
    EXPECT_EQ(output.standardError, "");
    return output.standardOutput;
}

}  // namespace Tests
