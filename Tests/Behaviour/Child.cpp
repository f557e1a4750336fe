#include "Child.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#ifdef OPTRELLA_TESTS_COUNT_COVERAGE
extern "C" void __gcov_dump();
#endif

namespace Behaviour {

namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void fail(const char* call) {
    throw std::system_error(errno, std::generic_category(), call);
}

// Repeats a call that a signal has interrupted.
template <class Call>
auto uninterrupted(Call call) {
    for (;;) {
        const auto result = call();
        if (result != -1 || errno != EINTR) return result;
    }
}

class Pipe {
public:
    Pipe() {
        if (::pipe(ends_) != 0) fail("pipe");
        // Whatever the child itself starts must not keep the pipes open.
        for (const int end : ends_) ::fcntl(end, F_SETFD, FD_CLOEXEC);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe() {
        closeEnd(0);
        closeEnd(1);
    }

    [[nodiscard]] int readEnd() const { return ends_[0]; }
    [[nodiscard]] int writeEnd() const { return ends_[1]; }
    void closeReadEnd() { closeEnd(0); }
    void closeWriteEnd() { closeEnd(1); }

private:
    void closeEnd(int end) {
        if (ends_[end] >= 0) ::close(ends_[end]);
        ends_[end] = -1;
    }

    int ends_[2] = {-1, -1};
};

// What comes out of the child. The report has a pipe of its own, so that nothing that is printed
// can be taken for it.
struct Streams {
    Pipe report, output, errors;

    [[nodiscard]] std::array<Pipe*, 3> all() { return {&report, &output, &errors}; }
};

// ---- In the child ----

void leaveNoCore() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_CORE, &limit) != 0) return;
    // Less than any core, and Linux starts no program that collects cores at 1 (but at 0).
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 1);
    ::setrlimit(RLIMIT_CORE, &limit);
}

bool takeStreams(const Streams& streams) {
    const int nothing = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    return nothing >= 0 && ::dup2(nothing, STDIN_FILENO) >= 0 &&
           ::dup2(streams.output.writeEnd(), STDOUT_FILENO) >= 0 &&
           ::dup2(streams.errors.writeEnd(), STDERR_FILENO) >= 0;
}

// Leaves alone what the parent has not written yet and what it wants done at its end.
[[noreturn]] void end() {
#ifdef OPTRELLA_TESTS_COUNT_COVERAGE
    __gcov_dump();
#endif
    ::_exit(EXIT_SUCCESS);
}

[[noreturn]] void workInChild(const std::function<std::string()>& work, Streams& streams) {
    constexpr int cannotBegin = 126;
    ::setsid();  // a group that can be killed, and no terminal to ask for a password
    leaveNoCore();
    if (!takeStreams(streams)) ::_exit(cannotBegin);
    for (Pipe* pipe : streams.all()) pipe->closeReadEnd();
    // What was printed before a fatal stop must be seen.
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    const std::string report = work();
    writeAll(streams.report.writeEnd(), report);
    end();
}

// ---- In the parent ----

// Reads once; false at the end.
bool readSome(int descriptor, std::string& into) {
    char block[65536];
    const ssize_t size = uninterrupted([&] { return ::read(descriptor, block, sizeof block); });
    if (size > 0) into.append(block, static_cast<std::size_t>(size));
    return size > 0;
}

class Collector {
public:
    Collector(const Streams& streams, Outcome& outcome)
        : texts_{&outcome.report, &outcome.output, &outcome.errors},
          polled_{{{streams.report.readEnd(), POLLIN, 0},
                   {streams.output.readEnd(), POLLIN, 0},
                   {streams.errors.readEnd(), POLLIN, 0}}} {}

    // Until the child has closed its report, as it does when it ends. False when time is up.
    bool collectUntil(Clock::time_point deadline) {
        while (isReportOpen()) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
            if (left.count() <= 0) return false;
            collectOnce(static_cast<int>(left.count()));
        }
        return true;
    }
    // What the pipes still hold: their ends are not waited for, because something that the child
    // has started may have them open.
    void collectRest() {
        while (collectOnce(0)) continue;
    }

private:
    [[nodiscard]] bool isReportOpen() const { return polled_[0].fd >= 0; }

    // False when nothing has come.
    bool collectOnce(int timeout) {
        const int ready = ::poll(polled_.data(), static_cast<nfds_t>(polled_.size()), timeout);
        if (ready < 0 && errno != EINTR) fail("poll");
        for (std::size_t i = 0; ready > 0 && i < polled_.size(); ++i) {
            if (polled_[i].revents != 0 && !readSome(polled_[i].fd, *texts_[i])) polled_[i].fd = -1;
        }
        return ready > 0;
    }

    std::array<std::string*, 3> texts_;
    std::array<pollfd, 3> polled_;  // one that has ended has no descriptor
};

void waitForEnd(pid_t child) {
    siginfo_t info{};
    const auto id = static_cast<id_t>(child);
    if (uninterrupted([&] { return ::waitid(P_PID, id, &info, WEXITED | WNOWAIT); }) != 0) {
        fail("waitid");
    }
}

// The group first: while its leader has not been reaped, the number belongs to nobody else.
int endGroup(pid_t child) {
    ::kill(-child, SIGKILL);
    int status = 0;
    if (uninterrupted([&] { return ::waitpid(child, &status, 0); }) != child) fail("waitpid");
    return status;
}

}  // namespace

Outcome runInChild(const std::function<std::string()>& work, std::chrono::nanoseconds limit) {
    const Clock::time_point deadline = Clock::now() + limit;
    Streams streams;
    const pid_t child = ::fork();
    if (child < 0) fail("fork");
    if (child == 0) workInChild(work, streams);
    for (Pipe* pipe : streams.all()) pipe->closeWriteEnd();
    Outcome outcome;
    Collector collector(streams, outcome);
    const bool inTime = collector.collectUntil(deadline);
    if (inTime) {
        waitForEnd(child);
    } else {
        ::kill(child, SIGKILL);  // it may not lead its group yet
    }
    const int status = endGroup(child);
    if (inTime) outcome.status = status;
    collector.collectRest();
    return outcome;
}

void writeAll(int descriptor, const std::string& bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t size = uninterrupted(
            [&] { return ::write(descriptor, bytes.data() + done, bytes.size() - done); });
        if (size < 0) fail("write");
        done += static_cast<std::size_t>(size);
    }
}

}  // namespace Behaviour
