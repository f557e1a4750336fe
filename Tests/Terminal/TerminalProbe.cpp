// Does what its arguments say, word by word, for TerminalTests.py: TerminalProbe REPORT WORD...
// What there is to tell goes to the descriptor REPORT, line by line.
//
//   read               reads a password: "none" or "text" and the bytes as hex
//   thread             reads on another thread, while the main thread waits for it
//   blocked-thread     the same on a thread that blocks all signals
//   held SIGNAL        the same; whatever comes waits for this signal, and then comes at once
//   many COUNT         reads so many passwords: how many there were
//   say TEXT           prints to standard output, without flushing it
//   ignore SIGNAL      ignores the signal of this number
//   ignore-info SIGNAL does the same by an action that asks for information on the signal
//   handle SIGNAL      counts the signal in a handler that returns, and looks at the terminal
//   count SIGNAL       does the same without opening the terminal
//   handled            how often the handler ran, and on or off, as it found the echo
//   handler-thread     whether the handler ran on the thread that reads: "reader" or "other"
//   handling           the signals that are not at their default, and whose handling they have
//   descriptors        how many descriptors there are
//   threads            how many threads there are, on Linux
//   close NUMBER       closes a descriptor
//   open NUMBER        opens descriptors until this one is the next

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string>
#include <thread>

#include "Optrella/Platform/Terminal.hpp"

namespace {

using Optrella::Platform::Password;
using Optrella::Platform::readPassword;

int reportTo = -1;
int terminal = -1;
std::atomic<int> handlerRuns{0};
std::atomic<bool> echoInHandler{false};
std::atomic<bool> isReaderInHandler{false};
thread_local bool isReader = false;

void report(const std::string& line) { ::dprintf(reportTo, "%s\n", line.c_str()); }

std::string described(const std::optional<Password>& password) {
    if (!password) return "none";
    std::string text = "text ";
    for (const char byte : password->bytes()) {
        constexpr const char* digits = "0123456789abcdef";
        const auto value = static_cast<unsigned char>(byte);
        text += digits[value / 16];
        text += digits[value % 16];
    }
    return text;
}

void read() {
    isReader = true;
    report(described(readPassword("Password:")));
}

void readOnThread(bool isBlocked) {
    std::atomic<bool> isStarted{false};
    std::thread reader([&] {
        // ThreadSanitizer loses signals that come to a thread while it starts another one.
        while (!isStarted) std::this_thread::yield();
        sigset_t all;
        sigfillset(&all);  // a macro on macOS
        if (isBlocked) ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
        read();
    });
    isStarted = true;
    reader.join();
}

void readHeld(int release) {
    sigset_t all;
    sigset_t one;
    sigset_t before;
    sigfillset(&all);
    sigemptyset(&one);
    sigaddset(&one, release);
    ::pthread_sigmask(SIG_BLOCK, &all, &before);
    std::thread reader(read);
    int received = 0;
    ::sigwait(&one, &received);
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    reader.join();
}

void readMany(int count) {
    int texts = 0;
    for (int i = 0; i < count; ++i) texts += readPassword("Password:") ? 1 : 0;
    report(std::to_string(texts) + " texts");
}

extern "C" void countSignal(int) {
    ++handlerRuns;
    isReaderInHandler = isReader;
    termios settings;
    if (terminal >= 0 && ::tcgetattr(terminal, &settings) == 0)
        echoInHandler = (settings.c_lflag & ECHO) != 0;
}

// Calls are interrupted by the handler, not repeated.
void handle(int signal, void (*handler)(int), int flags = 0) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    ::sigaction(signal, &action, nullptr);
}

void reportHandling() {
    std::string line = "handling:";
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGALRM, SIGTERM, SIGCHLD, SIGCONT,
                             SIGTSTP, SIGTTIN, SIGTTOU, SIGWINCH}) {
        struct sigaction action {};
        ::sigaction(signal, nullptr, &action);
        if (action.sa_handler == SIG_DFL) continue;
        line += " " + std::to_string(signal);
        line += action.sa_handler == SIG_IGN       ? " ignored"
                : action.sa_handler == countSignal ? " own"
                                                   : " foreign";
    }
    report(line);
}

int countDescriptors() {
    constexpr int most = 4096;  // more than any test opens
    int count = 0;
    for (int number = 0; number < most; ++number) count += ::fcntl(number, F_GETFD) >= 0 ? 1 : 0;
    return count;
}

std::ptrdiff_t countThreads() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                         std::filesystem::directory_iterator());
}

void openUpTo(int next) {
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit);
    int opened = 0;
    while (opened >= 0 && opened < next - 1) opened = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    report(opened == next - 1 ? "opened" : "not opened");
}

bool does(const std::string& word) {
    if (word == "read") {
        read();
    } else if (word == "thread") {
        readOnThread(false);
    } else if (word == "blocked-thread") {
        readOnThread(true);
    } else if (word == "handled") {
        report(std::to_string(handlerRuns) + (echoInHandler ? " on" : " off"));
    } else if (word == "handler-thread") {
        report(isReaderInHandler ? "reader" : "other");
    } else if (word == "handling") {
        reportHandling();
    } else if (word == "descriptors") {
        report(std::to_string(countDescriptors()));
    } else if (word == "threads") {
        report(std::to_string(countThreads()));
    } else {
        return false;
    }
    return true;
}

bool does(const std::string& word, const char* argument) {
    if (word == "held") {
        readHeld(std::atoi(argument));
    } else if (word == "many") {
        readMany(std::atoi(argument));
    } else if (word == "say") {
        std::fputs(argument, stdout);
    } else if (word == "ignore") {
        handle(std::atoi(argument), SIG_IGN);
    } else if (word == "ignore-info") {
        handle(std::atoi(argument), SIG_IGN, SA_SIGINFO);
    } else if (word == "handle") {
        if (terminal < 0) terminal = ::open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY);
        handle(std::atoi(argument), countSignal);
    } else if (word == "count") {
        handle(std::atoi(argument), countSignal);
    } else if (word == "close") {
        ::close(std::atoi(argument));
    } else if (word == "open") {
        openUpTo(std::atoi(argument));
    } else {
        return false;
    }
    return true;
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc < 2) return 64;
    reportTo = std::atoi(argv[1]);
    ::fcntl(reportTo, F_SETFD, FD_CLOEXEC);
    for (int i = 2; i < argc; ++i) {
        if (does(argv[i])) continue;
        if (i + 1 == argc || !does(argv[i], argv[i + 1])) return 64;
        ++i;
    }
    return 0;
}
