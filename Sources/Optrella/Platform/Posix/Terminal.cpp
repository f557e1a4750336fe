#include "Optrella/Platform/Terminal.hpp"

#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <sys/select.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <iterator>
#include <span>
#include <string_view>
#include <utility>

#include "Optrella/Platform/Descriptor.hpp"

// What must hold, whatever happens:
//   1. Nothing is read while the terminal echoes.
//   2. The terminal is put back before the tool's handlers are, and those before a signal is
//   raised.
//   3. A signal that has been caught is raised again, once.
//   4. What was typed stays nowhere but in the result.
//   5. No descriptor stays open, and a program that another thread starts inherits none.

namespace Optrella::Platform {

namespace {

// ---- Signals ----

// Those that would leave the terminal without echo; the ones that stop the process stand last.
constexpr int watched[] = {SIGALRM, SIGHUP,  SIGINT,  SIGPIPE, SIGQUIT,
                           SIGTERM, SIGTSTP, SIGTTIN, SIGTTOU};

using Signals = unsigned;

constexpr Signals only(int signal) { return 1U << static_cast<unsigned>(signal); }

constexpr Signals fromBackground = only(SIGTTIN) | only(SIGTTOU);
constexpr Signals stops = only(SIGTSTP) | fromBackground;

// What the handler reaches, on whatever thread it runs. There is one reader at a time.
constexpr int nobodyReads = -1;
std::atomic<int> wakeUp{nobodyReads};  // a pipe's end to write to
std::atomic<Signals> caught{0};
std::atomic<int> handlersRunning{0};

// A handler may not wait for a lock.
static_assert(std::atomic<int>::is_always_lock_free);
static_assert(std::atomic<Signals>::is_always_lock_free);

extern "C" void catchSignal(int signal) {
    const int error = errno;
    handlersRunning.fetch_add(1);
    if (const int pipe = wakeUp.load(); pipe != nobodyReads) {
        caught.fetch_or(only(signal));
        // It does not matter when the pipe is full: the reader is woken all the same.
        while (::write(pipe, "", 1) < 0 && errno == EINTR) continue;
    } else {
        // Sent here on another thread just before the tool's handler came back.
        static_cast<void>(::raise(signal));
    }
    handlersRunning.fetch_sub(1);
    errno = error;
}

// Lets the signal do what it would have done, before this returns: it is unblocked because a thread
// that blocks it can have been told of it by another one. (No "::" before what macOS has as
// macros.)
void raiseUnblocked(int signal) noexcept {
    sigset_t one;
    sigset_t before;
    sigemptyset(&one);
    sigaddset(&one, signal);
    ::pthread_sigmask(SIG_UNBLOCK, &one, &before);
    static_cast<void>(::raise(signal));
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

extern "C" void* callRaise(void* signal) {
    raiseUnblocked(*static_cast<int*>(signal));
    return nullptr;
}

// On a thread of its own: on a worker of a queue, macOS would send the signal to the process
// instead, and that may act on it later.
void raiseOnThread(int signal) noexcept {
    pthread_t thread{};
    if (::pthread_create(&thread, nullptr, callRaise, &signal) != 0) return raiseUnblocked(signal);
    ::pthread_join(thread, nullptr);
}

void raiseAll(Signals signals) noexcept {
    for (const int signal : watched) {
        if ((signals & only(signal)) == 0) continue;
        raiseOnThread(signal);
        // One stop is enough: to be continued is the answer to all of them.
        if ((stops & only(signal)) != 0) return;
    }
}

// ---- What is held while reading ----

// select() would write past the end of its set for a higher one.
bool canBeSelected(const Descriptor& descriptor) noexcept {
    return descriptor.isOpen() && descriptor.number() < static_cast<int>(FD_SETSIZE);
}

bool makeNonBlocking(const Descriptor& descriptor) noexcept {
    return ::fcntl(descriptor.number(), F_SETFL, O_NONBLOCK) == 0;
}

// Catches the signals as long as it lives, except those that are ignored.
class SignalWatch {
public:
    SignalWatch() noexcept : pipe_(makePipe()), isOn_(start()) {}
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

    ~SignalWatch() {
        for (std::size_t i = 0; i < std::size(watched); ++i) {
            if ((replaced_ & only(watched[i])) != 0) ::sigaction(watched[i], &before_[i], nullptr);
        }
        // A handler that still runs on another thread writes to the pipe.
        wakeUp.store(nobodyReads);
        while (handlersRunning.load() != 0) ::sched_yield();
    }

    [[nodiscard]] bool isOn() const noexcept { return isOn_; }
    // Becomes readable with the first signal. REQUIRES: isOn().
    [[nodiscard]] const Descriptor& pipe() const noexcept { return pipe_->readEnd; }

private:
    bool start() noexcept {
        if (!pipe_ || !canBeSelected(pipe_->readEnd)) return false;
        if (!makeNonBlocking(pipe_->readEnd) || !makeNonBlocking(pipe_->writeEnd)) return false;
        wakeUp.store(pipe_->writeEnd.number());
        return replaceHandlers();
    }

    bool replaceHandlers() noexcept {
        struct sigaction ours {};
        ours.sa_handler = catchSignal;  // without SA_RESTART: calls shall be interrupted
        sigfillset(&ours.sa_mask);
        for (std::size_t i = 0; i < std::size(watched); ++i) {
            if (::sigaction(watched[i], nullptr, &before_[i]) != 0) return false;
            if (before_[i].sa_handler == SIG_IGN) continue;  // whatever the flags
            if (::sigaction(watched[i], &ours, nullptr) != 0) return false;
            replaced_ |= only(watched[i]);
        }
        return true;
    }

    std::optional<Pipe> pipe_;
    struct sigaction before_[std::size(watched)]{};
    Signals replaced_ = 0;
    bool isOn_;
};

// Repeats a call that a signal ended before it did anything. From the background every repetition
// would end so, and the terminal belongs to somebody else.
template <class Call>
auto repeated(Call call) noexcept {
    for (;;) {
        const auto result = call();
        if (result >= 0 || errno != EINTR || (caught.load() & fromBackground) != 0) return result;
    }
}

// Keeps the terminal from echoing until it ends.
class EchoOff {
public:
    explicit EchoOff(const Descriptor& terminal) noexcept
        : terminal_(terminal.number()), isOn_(begin()) {}
    EchoOff(const EchoOff&) = delete;
    EchoOff& operator=(const EchoOff&) = delete;
    ~EchoOff() { static_cast<void>(end()); }

    [[nodiscard]] bool isOn() const noexcept { return isOn_; }

    // False when the terminal does not take its settings back: it is gone, or somebody else's. Who
    // asked from the background would only stop the job once more.
    [[nodiscard]] bool end() noexcept {
        if (isChanged_ && isForeground() && set(before_)) isChanged_ = false;
        return !isChanged_;
    }

private:
    static constexpr tcflag_t echo = ECHO | ECHONL;

    bool begin() noexcept {
        if (::tcgetattr(terminal_, &before_) != 0) return false;
        termios settings = before_;
        settings.c_lflag &= ~echo;
        isChanged_ = set(settings);
        // Settings are taken as set when any one of them could be.
        return isChanged_ && ::tcgetattr(terminal_, &settings) == 0 &&
               (settings.c_lflag & echo) == 0;
    }

    [[nodiscard]] bool isForeground() const noexcept {
        return ::tcgetpgrp(terminal_) == ::getpgrp();
    }

    // Drops what has been typed and not read: neither is a password what was typed before the
    // prompt, nor a command what is left of a password.
    [[nodiscard]] bool set(const termios& settings) const noexcept {
        return repeated([&] { return ::tcsetattr(terminal_, TCSAFLUSH, &settings); }) == 0;
    }

    int terminal_;
    termios before_{};
    bool isChanged_ = false;
    bool isOn_;
};

// ---- Reading ----

// A line as a C string: what is typed after a NUL does not belong to it.
class Line {
public:
    [[nodiscard]] bool isComplete() const noexcept { return isComplete_; }
    // To be read into; none without memory.
    [[nodiscard]] std::span<char> room() noexcept { return text_.room(); }

    // What has been typed stands at the beginning of the room.
    void take(std::size_t size) noexcept {
        const std::string_view typed(room().data(), size);
        const std::size_t end = typed.find_first_of("\r\n");
        isComplete_ = end != std::string_view::npos;
        hasBegun_ = true;
        if (!isCut_) keep(typed.substr(0, end));
    }

    // Nothing when nothing has been typed, not even the line's end.
    [[nodiscard]] std::optional<Password> text() && noexcept {
        if (!hasBegun_) return std::nullopt;
        return std::move(text_);
    }

private:
    // Longer than any that a terminal hands out at once.
    static constexpr std::size_t longest = 4096;

    void keep(std::string_view typed) noexcept {
        const std::size_t size = std::min(typed.find('\0'), longest - text_.bytes().size());
        isCut_ = size < typed.size();
        text_.extend(std::min(size, typed.size()));
    }

    Password text_;
    bool hasBegun_ = false;
    bool isCut_ = false;
    bool isComplete_ = false;
};

// False when a signal was caught. By select(), because poll() does not know /dev/tty on macOS.
bool waitForInput(const Descriptor& terminal, const Descriptor& pipe) noexcept {
    const int count = std::max(terminal.number(), pipe.number()) + 1;
    while (caught.load() == 0) {
        fd_set readable;
        FD_ZERO(&readable);
        FD_SET(terminal.number(), &readable);
        FD_SET(pipe.number(), &readable);
        const int ready = ::select(count, &readable, nullptr, nullptr, nullptr);
        if (ready > 0) return !FD_ISSET(pipe.number(), &readable);
        if (errno != EINTR) return false;
    }
    return false;
}

std::optional<Password> readLine(const Descriptor& terminal, const SignalWatch& signals) noexcept {
    Line line;
    while (!line.isComplete()) {
        const std::span<char> room = line.room();
        if (room.empty() || !waitForInput(terminal, signals.pipe())) return std::nullopt;
        const ssize_t size = ::read(terminal.number(), room.data(), room.size());
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) return std::nullopt;
        if (size == 0) break;  // the end of input completes what has been typed
        line.take(static_cast<std::size_t>(size));
    }
    return std::move(line).text();
}

bool writeAll(const Descriptor& terminal, std::string_view text) noexcept {
    while (!text.empty()) {
        const ssize_t written =
            repeated([&] { return ::write(terminal.number(), text.data(), text.size()); });
        if (written <= 0) return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

int openTerminal() noexcept {
    return repeated([] { return ::open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY); });
}

// Nothing also when a signal was caught.
std::optional<Password> ask(const char* prompt) noexcept {
    const Descriptor terminal(openTerminal());
    if (!canBeSelected(terminal)) return std::nullopt;
    const SignalWatch signals;
    if (!signals.isOn()) return std::nullopt;
    EchoOff echoOff(terminal);
    if (!echoOff.isOn()) return std::nullopt;

    std::optional<Password> line;
    if (writeAll(terminal, prompt)) line = readLine(terminal, signals);
    // The line's own end was not echoed.
    const bool isLineEnded = writeAll(terminal, "\n");
    if (!echoOff.end() || !isLineEnded) return std::nullopt;
    return line;
}

}  // namespace

std::optional<Password> readPassword(const char* prompt) {
    // Before anything is opened, which could get the number of a standard output that is closed.
    static_cast<void>(std::fflush(stdout));
    for (;;) {
        std::optional<Password> line = ask(prompt);
        const Signals signals = caught.exchange(0);
        if (signals == 0) return line;
        line.reset();
        raiseAll(signals);
        if ((signals & ~stops) != 0) return std::nullopt;
    }
}

}  // namespace Optrella::Platform
