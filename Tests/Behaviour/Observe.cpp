// Observe.cpp - cases in, observations out: one JSON object a line, in the same order.
//
//     optrella-observe [--time-limit SECONDS] < cases.jsonl
//     optrella-observe --kinds      the names of the kinds, a line each
//
// It judges nothing. README.md describes the format.

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string_view>
#include <system_error>

#include "Calls.hpp"
#include "Cases.hpp"
#include "Child.hpp"
#include "Support/Kinds.hpp"

namespace {

using namespace Behaviour;
using Seconds = std::chrono::duration<double>;

constexpr Seconds usualLimit{10};
constexpr int usageError = 64;

// The lines of standard input. Not read by a C or C++ stream: a child would inherit its buffer.
class Lines {
public:
    // Without its line feed; nothing at the end.
    std::optional<std::string> next() {
        std::size_t end;
        while ((end = bytes_.find('\n', searched_)) == std::string::npos) {
            searched_ = bytes_.size();
            if (!readMore()) return last();
        }
        std::string line = bytes_.substr(begin_, end - begin_);
        begin_ = searched_ = end + 1;
        return line;
    }

private:
    bool readMore() {
        bytes_.erase(0, begin_);
        searched_ -= begin_;
        begin_ = 0;
        char block[65536];
        ssize_t size;
        do {
            size = ::read(STDIN_FILENO, block, sizeof block);
        } while (size < 0 && errno == EINTR);
        if (size < 0) throw std::system_error(errno, std::generic_category(), "read");
        bytes_.append(block, static_cast<std::size_t>(size));
        return size > 0;
    }
    std::optional<std::string> last() {
        if (bytes_.empty()) return std::nullopt;
        searched_ = 0;
        return std::exchange(bytes_, {});
    }

    std::string bytes_;
    std::size_t begin_ = 0;     // of the next line
    std::size_t searched_ = 0;  // up to here no line feed
};

json error(std::string_view what) { return {{"error", text(what)}}; }

// In the child, so that not even an unreadable case can harm the runner.
std::string reportOn(const std::string& line) {
    try {
        return called(json::parse(line)).dump();
    } catch (const std::exception& exception) {
        return error(exception.what()).dump();
    }
}

// The library stops a process by a trap. Every other signal, an abort too, is a crash.
bool isFatalStop(int status) {
    if (!WIFSIGNALED(status)) return false;
    const int signal = WTERMSIG(status);
    return signal == SIGILL || signal == SIGTRAP;
}

json unexpectedEnd(const Outcome& outcome) {
    // A sanitizer writes the reason there.
    writeAll(STDERR_FILENO, outcome.errors);
    const int status = *outcome.status;
    return error(WIFSIGNALED(status) ? "ended by signal " + std::to_string(WTERMSIG(status))
                                     : "ended with status " + std::to_string(WEXITSTATUS(status)));
}

json observationOf(const Outcome& outcome) {
    if (!outcome.status) return error("timeout");
    const bool stopped = isFatalStop(*outcome.status);
    if (!stopped && *outcome.status != 0) return unexpectedEnd(outcome);
    json observation = json::object();
    // A call that ends the process by itself, as a root command does after its second start,
    // leaves no report.
    if (!stopped && !outcome.report.empty()) observation = json::parse(outcome.report);
    if (observation.contains("error")) return observation;
    observation["stdout"] = text(outcome.output);
    observation["stderr"] = text(outcome.errors);
    observation["stopped"] = stopped;
    return observation;
}

json observe(const std::string& line, Seconds limit) {
    using std::chrono::nanoseconds;
    return observationOf(
        runInChild([&] { return reportOn(line); }, std::chrono::duration_cast<nanoseconds>(limit)));
}

// Nothing when the arguments are not understood.
std::optional<Seconds> limitOf(int argc, char* argv[]) {
    if (argc == 1) return usualLimit;
    if (argc != 3 || std::string_view(argv[1]) != "--time-limit") return std::nullopt;
    char* end = nullptr;
    const double seconds = std::strtod(argv[2], &end);
    const bool isNumber = end != argv[2] && *end == '\0';
    constexpr double longest = 86400;
    if (!isNumber || !(seconds > 0 && seconds <= longest)) return std::nullopt;
    return Seconds(seconds);
}

// Whoever starts the runner may have closed a standard stream, whose number a pipe would get, or
// ignore the ends of children, which then leave no status. To use a stream that is missing fails as
// before.
void takeSurroundings() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) >= 0) continue;
        static_cast<void>(::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY));
    }
    std::signal(SIGCHLD, SIG_DFL);
}

}  // namespace

int main(int argc, char* argv[]) try {
    takeSurroundings();
    if (argc == 2 && std::string_view(argv[1]) == "--kinds") {
        Tests::forEachKind([]<class Kind>() {
            writeAll(STDOUT_FILENO, std::string(Tests::KindEntry<Kind>::name) + "\n");
        });
        return EXIT_SUCCESS;
    }
    const std::optional<Seconds> limit = limitOf(argc, argv);
    if (!limit) {
        writeAll(
            STDERR_FILENO,
            "usage: optrella-observe [--time-limit SECONDS] < cases.jsonl\n       optrella-observe --kinds\n");
        return usageError;
    }
    Lines lines;
    while (const std::optional<std::string> line = lines.next()) {
        writeAll(STDOUT_FILENO, observe(*line, *limit).dump() + "\n");
    }
    return EXIT_SUCCESS;
} catch (const std::exception& exception) {
    std::fprintf(stderr, "optrella-observe: %s\n", exception.what());
    return EXIT_FAILURE;
}
