#include "Elevation/Steps.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>
#include <utility>

#include "Support/Probe.hpp"

namespace Tests {

namespace {

using namespace std::chrono_literals;

int numberIn(std::string_view text) {
    int number = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
    if (parsed.ec != std::errc()) giveUp();
    return number;
}

std::string place() {
    const ::mode_t mask = ::umask(0);
    ::umask(mask);
    char octal[16];
    std::snprintf(octal, sizeof octal, "%03o", static_cast<unsigned>(mask));
    return "place " + std::filesystem::current_path().string() + " " + octal + "\n";
}

std::string descriptors() {
    std::string text = "descriptors";
    for (int number = 0; number < 1024; ++number) {
        if (::fcntl(number, F_GETFD) >= 0) text += " " + std::to_string(number);
    }
    return text + "\n";
}

std::string threads() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return "threads " + std::to_string(std::distance(begin(tasks), end(tasks))) + "\n";
}

std::string signals() {
    sigset_t mask;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    std::string blocked = "blocked";
    std::string ignored = " ignored";
    for (int number = 1; number < NSIG; ++number) {
        struct sigaction action {};
        const bool isKnown = ::sigaction(number, nullptr, &action) == 0;
        if (::sigismember(&mask, number) == 1) blocked += " " + std::to_string(number);
        if (isKnown && action.sa_handler == SIG_IGN) ignored += " " + std::to_string(number);
    }
    return blocked + ignored + "\n";
}

void awaitFile(const std::string& path) {
    for (int i = 0; i < 2'000 && !std::filesystem::exists(path); ++i) {
        std::this_thread::sleep_for(5ms);
    }
}

void sleepFor(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

void leaveProcess(int milliseconds) {
    const pid_t heir = ::fork();
    if (heir < 0) giveUp();
    if (heir > 0) return;
    sleepFor(milliseconds);
    ::_exit(0);
}

[[noreturn]] void dieOf(int signal) {
    // A tool's thread might leave the signal to another one.
    ::kill(::getpid(), signal);
    sleepFor(10'000);
    giveUp();
}

}  // namespace

void Steps::tell(std::string_view text) { told_ += text; }

void Steps::write(int descriptor) {
    writeAll(descriptor, std::exchange(told_, {}));
    awaitDrained(descriptor);
}

void Steps::finish() {
    writeAll(STDOUT_FILENO, told_);
    ::_exit(0);
}

void Steps::record(const std::string& path, std::string_view bytes) const {
    const std::string unfinished = path + ".unfinished";
    std::ofstream(unfinished, std::ios::binary) << bytes;
    std::filesystem::rename(unfinished, path);
}

void Steps::take(std::string_view step) {
    const std::size_t end = std::min(step.find(' '), step.size());
    const std::string_view name = step.substr(0, end);
    const std::string word(step.substr(std::min(end + 1, step.size())));
    if (name == "say") return tell(word + "\n");
    if (name == "bytes") return tell(bytesOf(word));
    if (name == "fill") return tell(std::string(static_cast<std::size_t>(numberIn(word)), 'x'));
    if (name == "arguments") {
        for (const std::string& each : arguments_) tell("argument " + hex(each) + "\n");
        return;
    }
    if (name == "environment") {
        for (char** each = environ; *each != nullptr; ++each) tell("variable " + hex(*each) + "\n");
        return;
    }
    if (name == "input") return tell("input " + hex(standardInput()) + "\n");
    if (name == "user") {
        return tell("user " + std::to_string(::geteuid()) + " " + std::to_string(::getuid()) +
                    "\n");
    }
    if (name == "program") {
        return tell("program " + std::filesystem::read_symlink("/proc/self/exe").string() + "\n");
    }
    if (name == "place") return tell(place());
    if (name == "descriptors") return tell(descriptors());
    if (name == "threads") return tell(threads());
    if (name == "signals") return tell(signals());
    if (name == "write") return write(STDOUT_FILENO);
    if (name == "error") return write(STDERR_FILENO);
    if (name == "finish") finish();
    if (name == "record") return record(word, std::exchange(told_, {}));
    if (name == "pid") return record(word, std::to_string(::getpid()));
    if (name == "await") return awaitFile(word);
    if (name == "sleep") return sleepFor(numberIn(word));
    if (name == "leave") return leaveProcess(numberIn(word));
    if (name == "kill") dieOf(numberIn(word));
    if (name == "execute") {
        ::execl(word.c_str(), word.c_str(), static_cast<char*>(nullptr));
        return tell("refused " + std::to_string(errno) + "\n");
    }
    if (name == "exit") ::_exit(numberIn(word));
    giveUp();
}

}  // namespace Tests
