#include "Optrella/Platform/ChildProcess.hpp"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

#include "Optrella/Platform/Descriptor.hpp"
#include "Optrella/Platform/Process.hpp"

namespace Optrella::Platform {

namespace {

// Where the tool has closed a standard descriptor, a new one takes its number, and would then be
// overwritten by another when those of the child are set up.
Descriptor movedAboveStandard(Descriptor descriptor) noexcept {
    return Descriptor(::fcntl(descriptor.number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

std::optional<Pipe> makePipeAboveStandard() noexcept {
    std::optional<Pipe> made = makePipe();
    if (!made) return std::nullopt;
    Pipe pipe{movedAboveStandard(std::move(made->readEnd)),
              movedAboveStandard(std::move(made->writeEnd))};
    if (!pipe.readEnd.isOpen() || !pipe.writeEnd.isOpen()) return std::nullopt;
    return pipe;
}

// Anything but an interruption ends it, with success or not.
void writeOnce(const Descriptor& to, std::string_view bytes) noexcept {
    while (::write(to.number(), bytes.data(), bytes.size()) < 0 && errno == EINTR) {
    }
}

// Hands what comes out of a pipe to the handler, block by block, on a thread of its own.
class Reader {
public:
    Reader(Descriptor output, Pipe wake, BlockHandler handler)
        : output_(std::move(output)), wake_(std::move(wake)), handler_(handler) {}
    ~Reader() { finish(); }

    [[nodiscard]] bool start() noexcept;
    // Returns when what stands in the pipe by now has been handled.
    void finish() noexcept;
    // What the thread does.
    void relay();

private:
    static constexpr std::size_t largestBlock = std::size_t{64} << 10;

    [[nodiscard]] bool awaitOutput() noexcept;
    [[nodiscard]] std::size_t sizeWaiting() const noexcept;
    std::size_t takeBlock(std::size_t largest);

    Descriptor output_;
    Pipe wake_;
    BlockHandler handler_;
    std::string buffer_ = std::string(largestBlock, '\0');
    pthread_t thread_{};
    bool isRunning_ = false;
};

extern "C" void* callRelay(void* reader) {
    static_cast<Reader*>(reader)->relay();
    return nullptr;
}

// Here and below without "::": macOS has macros of these names.

// The signals that are for the tool's own threads: all but those that a thread brings on itself.
sigset_t signalsOfTheTool() noexcept {
    sigset_t signals;
    sigfillset(&signals);
    for (const int own : {SIGBUS, SIGFPE, SIGILL, SIGPIPE, SIGSEGV, SIGSYS, SIGTRAP}) {
        sigdelset(&signals, own);
    }
    return signals;
}

bool Reader::start() noexcept {
    // A thread begins with the mask of the one that starts it.
    const sigset_t kept = signalsOfTheTool();
    sigset_t before;
    ::pthread_sigmask(SIG_BLOCK, &kept, &before);
    isRunning_ = ::pthread_create(&thread_, nullptr, callRelay, this) == 0;
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return isRunning_;
}

void Reader::finish() noexcept {
    if (!isRunning_) return;
    // The closing alone would wake nobody while a process that another thread has forked holds a
    // copy of this end.
    writeOnce(wake_.writeEnd, "!");
    wake_.writeEnd.close();
    ::pthread_join(thread_, nullptr);
    isRunning_ = false;
}

void Reader::relay() {
    bool isOpen = true;
    while (isOpen && awaitOutput()) isOpen = takeBlock(largestBlock) > 0;
    // Measured after the child's end, so nothing of the child's is missed; and measured once, so
    // that others who write on and on do not keep us.
    for (std::size_t left = isOpen ? sizeWaiting() : 0; left > 0;) {
        const std::size_t taken = takeBlock(std::min(left, largestBlock));
        left = taken > 0 ? left - taken : 0;
    }
    // Should reading have failed, the child must not wait for a reader that is gone.
    output_.close();
}

// False when finish() has been called, whether there is output or not.
bool Reader::awaitOutput() noexcept {
    pollfd ends[] = {{output_.number(), POLLIN, 0}, {wake_.readEnd.number(), POLLIN, 0}};
    int ready = -1;
    do {
        ready = ::poll(ends, std::size(ends), -1);
    } while (ready < 0 && (errno == EINTR || errno == EAGAIN));
    return ready > 0 && ends[1].revents == 0;
}

std::size_t Reader::sizeWaiting() const noexcept {
    int size = 0;
    return ::ioctl(output_.number(), FIONREAD, &size) == 0 ? static_cast<std::size_t>(size) : 0;
}

// The size of the block; 0 at the end of the pipe.
std::size_t Reader::takeBlock(std::size_t largest) {
    ssize_t size = -1;
    do {
        size = ::read(output_.number(), buffer_.data(), largest);
    } while (size < 0 && errno == EINTR);
    if (size <= 0) return 0;
    const std::string_view block(buffer_.data(), static_cast<std::size_t>(size));
    handler_.handle(handler_.context, block);
    return block.size();
}

// All but those that are ignored: what was started to outlive a hang-up goes on doing so.
sigset_t signalsNotIgnored() noexcept {
    sigset_t signals;
    sigfillset(&signals);
    for (int signal = 1; signal < NSIG; ++signal) {
        struct sigaction action;
        if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) {
            sigdelset(&signals, signal);
        }
    }
    return signals;
}

// How a child is set up. What a failed call leaves out must not be launched without.
class LaunchSettings {
public:
    LaunchSettings() noexcept
        : hasActions_(::posix_spawn_file_actions_init(&actions_) == 0),
          hasAttributes_(::posix_spawnattr_init(&attributes_) == 0) {}
    LaunchSettings(const LaunchSettings&) = delete;
    LaunchSettings& operator=(const LaunchSettings&) = delete;
    ~LaunchSettings() {
        if (hasActions_) ::posix_spawn_file_actions_destroy(&actions_);
        if (hasAttributes_) ::posix_spawnattr_destroy(&attributes_);
    }

    [[nodiscard]] bool connect(const Descriptor& from, int to) noexcept {
        return hasActions_ && ::posix_spawn_file_actions_adddup2(&actions_, from.number(), to) == 0;
    }
    [[nodiscard]] bool resetSignals() noexcept {
        sigset_t none;
        sigemptyset(&none);
        const sigset_t defaults = signalsNotIgnored();
        return hasAttributes_ && ::posix_spawnattr_setsigmask(&attributes_, &none) == 0 &&
               ::posix_spawnattr_setsigdefault(&attributes_, &defaults) == 0 &&
               ::posix_spawnattr_setflags(&attributes_,
                                          POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF) == 0;
    }

    [[nodiscard]] const posix_spawn_file_actions_t* actions() const noexcept { return &actions_; }
    [[nodiscard]] const posix_spawnattr_t* attributes() const noexcept { return &attributes_; }

private:
    posix_spawn_file_actions_t actions_;
    posix_spawnattr_t attributes_;
    bool hasActions_;
    bool hasAttributes_;
};

// The words of a command line as the system takes them. It does not change them.
std::vector<char*> argumentVector(const char* program, std::span<const std::string> arguments) {
    std::vector<char*> words{const_cast<char*>(program)};
    for (const std::string& each : arguments) words.push_back(const_cast<char*>(each.c_str()));
    words.push_back(nullptr);
    return words;
}

std::optional<pid_t> launch(const char* program, std::span<const std::string> arguments,
                            const Descriptor& input, const Descriptor& output) {
    LaunchSettings settings;
    const bool areMade = settings.connect(input, STDIN_FILENO) &&
                         settings.connect(output, STDOUT_FILENO) &&
                         settings.connect(output, STDERR_FILENO) && settings.resetSignals();
    if (!areMade) return std::nullopt;
    const std::vector<char*> words = argumentVector(program, arguments);
    pid_t child = 0;
    const int error = ::posix_spawn(&child, program, settings.actions(), settings.attributes(),
                                    words.data(), environment());
    if (error != 0) return std::nullopt;
    return child;
}

// Both ends stay open until the write is done: while somebody could still read, the write to a
// child that has already ended raises no signal.
void feed(Pipe toChild, Password& input) noexcept {
    // A child need not read, and on a busy system a pipe may hold less than a password.
    ::fcntl(toChild.writeEnd.number(), F_SETFL, O_NONBLOCK);
    writeOnce(toChild.writeEnd, input.bytes());
    input.wipe();
}

// There is no such child any more when the tool ignores the ends of its children or has a handler
// that collects them.
void awaitEnd(pid_t child) noexcept {
    while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

}  // namespace

bool runChild(const char* program, std::span<const std::string> arguments, Password input,
              BlockHandler handler) {
    std::optional<Pipe> toChild = makePipeAboveStandard();
    std::optional<Pipe> fromChild = makePipeAboveStandard();
    std::optional<Pipe> wake = makePipeAboveStandard();
    if (!toChild || !fromChild || !wake) return false;

    // Before the launch, since a child that runs cannot be taken back should there be no thread;
    // until then the pipe is empty and the reader has nothing to handle.
    Reader reader(std::move(fromChild->readEnd), std::move(*wake), handler);
    if (!reader.start()) return false;
    const std::optional<pid_t> child =
        launch(program, arguments, toChild->readEnd, fromChild->writeEnd);
    fromChild->writeEnd.close();
    if (!child) return false;

    feed(std::move(*toChild), input);
    awaitEnd(*child);
    reader.finish();
    return true;
}

}  // namespace Optrella::Platform
