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
#include <string_view>
#include <utility>

// What must hold, whatever happens:
//   1. Nothing is read while the terminal echoes.
//   2. The terminal is put back before the tool's handlers are, and those before a signal strikes.
//   3. A signal that has been caught strikes, once.
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
std::atomic<pthread_t> reader{};
std::atomic<Signals> caught{0};
std::atomic<int> handlersRunning{0};

// A handler may not wait for a lock.
static_assert(std::atomic<int>::is_always_lock_free);
static_assert(std::atomic<pthread_t>::is_always_lock_free);
static_assert(std::atomic<Signals>::is_always_lock_free);

void note(int signal, int pipe) noexcept {
    caught.fetch_or(only(signal));
    // It does not matter when the pipe is full: the reader is woken all the same.
    while (::write(pipe, "", 1) < 0 && errno == EINTR) continue;
    // The system repeats a call from the background until the thread that made it is interrupted.
    const pthread_t thread = reader.load();
    if ((only(signal) & fromBackground) != 0 && ::pthread_equal(thread, ::pthread_self()) == 0) {
        ::pthread_kill(thread, signal);
    }
}

extern "C" void catchSignal(int signal) {
    const int error = errno;
    handlersRunning.fetch_add(1);
    if (const int pipe = wakeUp.load(); pipe != nobodyReads) {
        note(signal, pipe);
    } else {
        // Sent here on another thread just before the tool's handler came back.
        static_cast<void>(::raise(signal));
    }
    handlersRunning.fetch_sub(1);
    errno = error;
}

bool isIgnored(const struct sigaction& action) noexcept {
    return (action.sa_flags & SA_SIGINFO) == 0 && action.sa_handler == SIG_IGN;
}

// Lets the signal do what it would have done, before this returns: it is unblocked because a thread
// that blocks it can have been told of it by another one.
void strike(int signal) noexcept {
    sigset_t one;
    sigset_t before;
    ::sigemptyset(&one);
    ::sigaddset(&one, signal);
    ::pthread_sigmask(SIG_UNBLOCK, &one, &before);
    static_cast<void>(::raise(signal));
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void strikeAll(Signals signals) noexcept {
    for (const int signal : watched) {
        if ((signals & only(signal)) == 0) continue;
        strike(signal);
        // One stop is enough: to be continued is the answer to all of them.
        if ((stops & only(signal)) != 0) return;
    }
}

// ---- What is held while reading ----

class Descriptor {
public:
    explicit Descriptor(int number) noexcept : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }

    [[nodiscard]] int number() const noexcept { return number_; }
    // select() would write behind the end of its set for a higher one.
    [[nodiscard]] bool canBeSelected() const noexcept {
        return number_ >= 0 && number_ < static_cast<int>(FD_SETSIZE);
    }

private:
    int number_;
};

struct PipeEnds {
    int read = -1;
    int write = -1;
};

PipeEnds newPipe() noexcept {
    int ends[2];
    if (::pipe(ends) != 0) return {};
    return {ends[0], ends[1]};
}

// Not by pipe2(), which is not everywhere.
bool makePrivateAndNonBlocking(const Descriptor& descriptor) noexcept {
    return ::fcntl(descriptor.number(), F_SETFD, FD_CLOEXEC) == 0 &&
           ::fcntl(descriptor.number(), F_SETFL, O_NONBLOCK) == 0;
}

// Catches the signals as long as it lives, except those that are ignored.
class SignalWatch {
public:
    SignalWatch() noexcept : SignalWatch(newPipe()) {}
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
    // Becomes readable with the first signal.
    [[nodiscard]] const Descriptor& pipe() const noexcept { return readEnd_; }

private:
    explicit SignalWatch(PipeEnds ends) noexcept
        : readEnd_(ends.read), writeEnd_(ends.write), isOn_(start()) {}

    bool start() noexcept {
        if (!readEnd_.canBeSelected()) return false;
        if (!makePrivateAndNonBlocking(readEnd_)) return false;
        if (!makePrivateAndNonBlocking(writeEnd_)) return false;
        reader.store(::pthread_self());
        wakeUp.store(writeEnd_.number());
        return replaceHandlers();
    }

    bool replaceHandlers() noexcept {
        struct sigaction ours {};
        ours.sa_handler = catchSignal;  // without SA_RESTART: calls shall be interrupted
        ::sigfillset(&ours.sa_mask);
        for (std::size_t i = 0; i < std::size(watched); ++i) {
            if (::sigaction(watched[i], nullptr, &before_[i]) != 0) return false;
            if (isIgnored(before_[i])) continue;
            if (::sigaction(watched[i], &ours, nullptr) != 0) return false;
            replaced_ |= only(watched[i]);
        }
        return true;
    }

    Descriptor readEnd_;
    Descriptor writeEnd_;
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
class Silence {
public:
    explicit Silence(const Descriptor& terminal) noexcept
        : terminal_(terminal.number()), isOn_(begin()) {}
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
    ~Silence() { static_cast<void>(end()); }

    [[nodiscard]] bool isOn() const noexcept { return isOn_; }

    // False when the terminal does not take its settings back; then it is gone.
    [[nodiscard]] bool end() noexcept {
        if (isChanged_ && set(before_)) isChanged_ = false;
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

// What read() fills on its way to the password: a terminal hands out a line as a whole.
struct Chunk {
    static constexpr std::size_t size = 4096;
    char bytes[size];

    Chunk() noexcept = default;
    Chunk(const Chunk&) = delete;
    Chunk& operator=(const Chunk&) = delete;
    ~Chunk() { overwrite(bytes, size); }
};

// A line as a C string: what is typed behind a NUL does not belong to it.
class Line {
public:
    // Nothing as long as nothing has been typed.
    std::optional<Password> text;

    [[nodiscard]] bool isComplete() const noexcept { return isComplete_; }

    // False when there is no memory for it.
    [[nodiscard]] bool take(std::string_view typed) noexcept {
        if (!text) text.emplace();
        const std::size_t end = typed.find_first_of("\r\n");
        isComplete_ = end != std::string_view::npos;
        return keep(typed.substr(0, end));
    }

private:
    // Longer than any line that a terminal hands out at once.
    static constexpr std::size_t longest = 4096;

    bool keep(std::string_view typed) noexcept {
        if (isCut_) return true;
        const std::size_t size = std::min(typed.find('\0'), longest - text->bytes().size());
        isCut_ = size < typed.size();
        return text->append(typed.substr(0, size));
    }

    bool isCut_ = false;
    bool isComplete_ = false;
};

// False when a signal was caught. By select(), because poll() does not know /dev/tty on macOS.
bool waitForInput(const Descriptor& terminal, const SignalWatch& signals) noexcept {
    const int pipe = signals.pipe().number();
    fd_set readable;
    int ready = 0;
    do {
        FD_ZERO(&readable);
        FD_SET(terminal.number(), &readable);
        FD_SET(pipe, &readable);
        ready =
            ::select(std::max(terminal.number(), pipe) + 1, &readable, nullptr, nullptr, nullptr);
    } while (ready < 0 && errno == EINTR);
    return ready > 0 && !FD_ISSET(pipe, &readable);
}

std::optional<Password> readLine(const Descriptor& terminal, const SignalWatch& signals) noexcept {
    Line line;
    Chunk chunk;
    while (!line.isComplete()) {
        if (!waitForInput(terminal, signals)) return std::nullopt;
        const ssize_t size = ::read(terminal.number(), chunk.bytes, sizeof chunk.bytes);
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) return std::nullopt;
        if (size == 0) break;  // the end of input completes what has been typed
        if (!line.take({chunk.bytes, static_cast<std::size_t>(size)})) return std::nullopt;
    }
    return std::move(line.text);
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
    if (!terminal.canBeSelected()) return std::nullopt;
    const SignalWatch signals;
    if (!signals.isOn()) return std::nullopt;
    Silence silence(terminal);
    if (!silence.isOn()) return std::nullopt;

    std::optional<Password> line;
    if (writeAll(terminal, prompt)) line = readLine(terminal, signals);
    // The line's own end was not echoed.
    const bool isLineEnded = writeAll(terminal, "\n");
    if (!silence.end() || !isLineEnded) return std::nullopt;
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
        strikeAll(signals);
        if ((signals & ~stops) != 0) return std::nullopt;
    }
}

}  // namespace Optrella::Platform
