// What the library does to descriptors 1 and 2, write by write.

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <syslog.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cwchar>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Child.hpp"
#include "Optrella/CommandLineExitStatus.hpp"
#include "Optrella/Text/Print.hpp"

namespace {

std::atomic<int> writesCutShort{0};
std::atomic<int> writesInterrupted{0};

}  // namespace

// Replaces the C library's function, to see what that returned.
extern "C" ssize_t write(int descriptor, const void* bytes, size_t count) {
    using Write = ssize_t (*)(int, const void*, size_t);
    static const auto ofTheLibrary = reinterpret_cast<Write>(::dlsym(RTLD_NEXT, "write"));
    const ssize_t written = ofTheLibrary(descriptor, bytes, count);
    if (written >= 0 && static_cast<size_t>(written) < count) ++writesCutShort;
    if (written < 0 && errno == EINTR) ++writesInterrupted;
    return written;
}

namespace {

using namespace Optrella;
using namespace std::chrono_literals;
using Writes = std::vector<std::string>;

// Keeps the messages of these tests out of the machine's own log.
class QuietLog : public testing::Environment {
    void SetUp() override { ::setlogmask(LOG_UPTO(LOG_NOTICE)); }
};
const testing::Environment* const quietLog = testing::AddGlobalTestEnvironment(new QuietLog);

// Two sockets, one connected with the other, where each write is a packet of its own; false when
// there are none.
bool makeSockets(int (&ends)[2]) {
    // By default the largest packet of some systems is far shorter than the longest message here.
    const int room = 1 << 17;
    return ::socketpair(AF_UNIX, SOCK_DGRAM, 0, ends) == 0 &&
           ::setsockopt(ends[0], SOL_SOCKET, SO_RCVBUF, &room, sizeof room) == 0 &&
           ::setsockopt(ends[1], SOL_SOCKET, SO_SNDBUF, &room, sizeof room) == 0;
}

// All that waits in the socket, packet by packet: a packet is what one write wrote.
Writes packetsIn(int socket) {
    Writes packets;
    std::string buffer(1 << 17, '\0');
    for (;;) {
        const ssize_t size = ::recv(socket, buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (size < 0) return packets;
        packets.push_back(buffer.substr(0, static_cast<std::size_t>(size)));
    }
}

struct Streams {
    Writes output;
    Writes error;
    int exitCode;
};

// What a child that reports the message writes to descriptors 1 and 2.
Streams written(const Text& message) {
    int output[2];
    int error[2];
    if (!makeSockets(output) || !makeSockets(error)) {
        ADD_FAILURE() << "no sockets";
        return {};
    }
    const int exitCode = Tests::exitCodeOf([&] {
        ::dup2(output[1], STDOUT_FILENO);
        ::dup2(error[1], STDERR_FILENO);
        outputErrorMessage(message);
        std::fflush(stdout);
        return 0;
    });
    Streams streams{packetsIn(output[0]), packetsIn(error[0]), exitCode};
    for (const int socket : {output[0], output[1], error[0], error[1]}) ::close(socket);
    return streams;
}

void expectWrites(const Text& message, const Writes& expected) {
    const Streams streams = written(message);
    EXPECT_EQ(streams.exitCode, 0);
    EXPECT_EQ(streams.error, expected);
    EXPECT_EQ(streams.output, Writes{});
}

TEST(ErrorMessage, IsOneWriteAndItsLineEndAnother) {
    expectWrites("The disk is full.", {"The disk is full.", "\n"});
}

TEST(ErrorMessage, OfManyBytesIsStillOneWrite) {
    const std::string message(100000, 'x');
    expectWrites(Text(message), {message, "\n"});
}

TEST(ErrorMessage, IsWrittenAfterTheOneBefore) {
    int error[2];
    ASSERT_TRUE(makeSockets(error));
    EXPECT_EQ(Tests::exitCodeOf([&] {
                  ::dup2(error[1], STDERR_FILENO);
                  outputErrorMessage("one");
                  outputErrorMessage("two");
                  return 0;
              }),
              0);
    EXPECT_EQ(packetsIn(error[0]), (Writes{"one", "\n", "two", "\n"}));
    ::close(error[0]);
    ::close(error[1]);
}

extern "C" void doNothing(int) {}

// Sends a signal every millisecond whose handler ends the calls that it interrupts.
void interruptForEver() {
    struct sigaction action {};
    action.sa_handler = doNothing;  // without SA_RESTART
    ::sigaction(SIGALRM, &action, nullptr);
    const itimerval everyMillisecond{{0, 1000}, {0, 1000}};
    ::setitimer(ITIMER_REAL, &everyMillisecond, nullptr);
}

// Reads all that comes, with pauses, so that the writer must wait.
std::string readSlowly(int descriptor) {
    std::string received;
    std::string buffer(4096, '\0');
    for (;;) {
        const ssize_t size = ::read(descriptor, buffer.data(), buffer.size());
        if (size <= 0) return received;
        received.append(buffer, 0, static_cast<std::size_t>(size));
        if (received.size() % 65536 < 4096) std::this_thread::sleep_for(2ms);
    }
}

struct Received {
    std::string bytes;
    int status;  // the child's
};

// What arrives of what a child writes to the descriptor, which is a pipe with a slow reader, as
// small as the system makes it. The child fills the pipe first and is held up with nothing written,
// then it writes in pieces.
template <class Code>
Received receivedSlowly(int descriptor, Code code) {
    int pipe[2];
    if (::pipe(pipe) != 0) return {{}, -1};
#ifdef F_SETPIPE_SZ
    ::fcntl(pipe[1], F_SETPIPE_SZ, 4096);
#endif
    const pid_t child = Tests::started([&] {
        ::close(pipe[0]);
        ::dup2(pipe[1], descriptor);
        return code();
    });
    ::close(pipe[1]);
    std::this_thread::sleep_for(20ms);
    std::string bytes = readSlowly(pipe[0]);
    ::close(pipe[0]);
    return {std::move(bytes), Tests::waited(child)};
}

// 1: no write was cut short, 2: none was interrupted; then the test has proved nothing.
int proofOfInterruption() { return (writesCutShort > 0 ? 0 : 1) + (writesInterrupted > 0 ? 0 : 2); }

std::string longText() {
    std::string text;
    while (text.size() < (1 << 20)) text += std::to_string(text.size()) + ' ';
    return text;
}

TEST(ErrorMessage, IsCompleteInSpiteOfSignalsAndASlowReader) {
    const std::string message = longText();
    const Received received = receivedSlowly(STDERR_FILENO, [&] {
        interruptForEver();
        outputErrorMessage(Text(message));
        return proofOfInterruption();
    });
    EXPECT_EQ(received.status, 0);
    EXPECT_TRUE(received.bytes == message + "\n") << received.bytes.size() << " bytes";
}

TEST(ErrorMessage, IsCompleteInAPipeThatMayNotWait) {
    const std::string message = longText();
    const Received received = receivedSlowly(STDERR_FILENO, [&] {
        ::fcntl(STDERR_FILENO, F_SETFL, O_NONBLOCK);
        outputErrorMessage(Text(message));
        return 0;
    });
    EXPECT_EQ(received.status, 0);
    EXPECT_TRUE(received.bytes == message + "\n") << received.bytes.size() << " bytes";
}

// ---- Standard output ----

void printTwo(const std::string& text) {
    Internal::print("first ");
    Internal::print(text);
}

TEST(PrintedText, IsCompleteInSpiteOfSignalsAndASlowReader) {
    const std::string text = longText();
    const Received received = receivedSlowly(STDOUT_FILENO, [&] {
        interruptForEver();
        printTwo(text);
        return proofOfInterruption();
    });
    EXPECT_EQ(received.status, 0);
    EXPECT_TRUE(received.bytes == "first " + text) << received.bytes.size() << " bytes";
}

TEST(PrintedText, IsCompleteInAPipeThatMayNotWait) {
    const std::string text = longText();
    const Received received = receivedSlowly(STDOUT_FILENO, [&] {
        ::fcntl(STDOUT_FILENO, F_SETFL, O_NONBLOCK);
        printTwo(text);
        return 0;
    });
    EXPECT_EQ(received.status, 0);
    EXPECT_TRUE(received.bytes == "first " + text) << received.bytes.size() << " bytes";
}

TEST(PrintedText, LeavesWhatTheToolHasPrintedToAPipeThatMayNotWait) {
    const std::string text = longText();
    const std::string before(3000, 'x');
    const Received received = receivedSlowly(STDOUT_FILENO, [&] {
        ::fcntl(STDOUT_FILENO, F_SETFL, O_NONBLOCK);
        const std::string filling(3000, '.');
        if (::write(STDOUT_FILENO, filling.data(), filling.size()) != 3000) return 1;
        std::fputs(before.c_str(), stdout);
        printTwo(text);
        return 0;
    });
    EXPECT_EQ(received.status, 0);
    EXPECT_TRUE(received.bytes == std::string(3000, '.') + before + "first " + text);
}

TEST(PrintedText, IsInOnePieceWhileAnotherThreadPrints) {
    const std::string text = longText();
    const Received received = receivedSlowly(STDOUT_FILENO, [&] {
        std::atomic<bool> isDone{false};
        std::thread other([&isDone] {
            while (!isDone) {
                std::puts("!");
                std::fflush(stdout);
            }
        });
        printTwo(text);
        isDone = true;
        other.join();
        return 0;
    });
    EXPECT_EQ(received.status, 0);
    EXPECT_NE(received.bytes.find(text), std::string::npos);
    EXPECT_NE(received.bytes.find('!'), std::string::npos);
}

// What the code prints, which ends without a flush of its own.
template <class Code>
Writes outputOf(Code code) {
    int output[2];
    if (!makeSockets(output)) return {"no sockets"};
    EXPECT_EQ(Tests::exitCodeOf([&] {
                  ::dup2(output[1], STDOUT_FILENO);
                  code();
                  ::_exit(0);
                  return 1;
              }),
              0);
    Writes writes = packetsIn(output[0]);
    for (const int socket : {output[0], output[1]}) ::close(socket);
    return writes;
}

TEST(PrintedText, IsHandedOnAtOnce) {
    EXPECT_EQ(outputOf([] { printTwo("Lists."); }), (Writes{"first ", "Lists."}));
}

TEST(PrintedText, ComesAfterWhatTheToolHasPrintedAndBeforeWhatItPrintsNext) {
    EXPECT_EQ(outputOf([] {
                  std::printf("before");
                  printTwo("Lists.");
                  std::printf("after");
                  std::fflush(stdout);
              }),
              (Writes{"before", "first ", "Lists.", "after"}));
}

TEST(PrintedText, ArrivesOnAWideStandardOutput) {
    EXPECT_EQ(outputOf([] {
                  stdout = ::fdopen(STDOUT_FILENO, "w");  // the test's own has printed bytes
                  std::wprintf(L"before");
                  printTwo("Lists.");
              }),
              (Writes{"before", "first ", "Lists."}));
}

TEST(PrintedText, IsNotCutUpOnAStandardOutputWithoutABuffer) {
    EXPECT_EQ(outputOf([] {
                  std::setvbuf(stdout, nullptr, _IONBF, 0);
                  printTwo("Lists.");
              }),
              (Writes{"first ", "Lists."}));
}

TEST(PrintedText, ArrivesOnAStandardOutputInMemory) {
    EXPECT_EQ(Tests::exitCodeOf([] {
                  char* bytes = nullptr;
                  std::size_t size = 0;
                  stdout = ::open_memstream(&bytes, &size);
                  printTwo("Lists.");
                  return std::string_view(bytes, size) == "first Lists." ? 0 : 1;
              }),
              0);
}

TEST(PrintedText, IsLostSilentlyWithoutDescriptorOne) {
    EXPECT_EQ(Tests::exitCodeOf([] {
                  ::close(STDOUT_FILENO);
                  printTwo("Lists.");
                  return 0;
              }),
              0);
}

TEST(PrintedText, IsLostSilentlyOnAFullDevice) {
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    if (full < 0) GTEST_SKIP() << "no /dev/full";
    EXPECT_EQ(Tests::exitCodeOf([&] {
                  ::dup2(full, STDOUT_FILENO);
                  printTwo("Lists.");
                  return 0;
              }),
              0);
    ::close(full);
}

// ---- A descriptor that takes nothing ----

// The exit code of a child that reports a message after the preparation.
template <class Preparation>
int exitCodeAfter(Preparation prepare) {
    return Tests::exitCodeOf([&] {
        if (!prepare()) return Tests::notPossibleHere;
        outputErrorMessage("The disk is full.");
        return 0;
    });
}

TEST(ErrorMessage, IsLostSilentlyWithoutDescriptorTwo) {
    int output[2];
    ASSERT_TRUE(makeSockets(output));
    EXPECT_EQ(exitCodeAfter([&] {
                  return ::dup2(output[1], STDOUT_FILENO) >= 0 && ::close(STDERR_FILENO) == 0;
              }),
              0);
    EXPECT_EQ(packetsIn(output[0]), Writes{});
    ::close(output[0]);
    ::close(output[1]);
}

TEST(ErrorMessage, IsLostSilentlyOnAFullDevice) {
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    if (full < 0) GTEST_SKIP() << "no /dev/full";
    EXPECT_EQ(exitCodeAfter([&] { return ::dup2(full, STDERR_FILENO) >= 0; }), 0);
    ::close(full);
}

TEST(ErrorMessage, IsLostSilentlyOnAReadOnlyDescriptor) {
    const int null = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ASSERT_GE(null, 0);
    EXPECT_EQ(exitCodeAfter([&] { return ::dup2(null, STDERR_FILENO) >= 0; }), 0);
    ::close(null);
}

TEST(ErrorMessage, IsLostSilentlyOnAFullPipeThatMayNotWait) {
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    ::fcntl(pipe[1], F_SETFL, O_NONBLOCK);
    const std::string filling(4096, 'x');
    while (::write(pipe[1], filling.data(), filling.size()) > 0) continue;
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(exitCodeAfter([&] { return ::dup2(pipe[1], STDERR_FILENO) >= 0; }), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 2s);  // it has been waited for
    ::close(pipe[0]);
    ::close(pipe[1]);
}

int brokenPipe() {
    int pipe[2];
    if (::pipe(pipe) != 0) return -1;
    ::close(pipe[0]);
    return pipe[1];
}

TEST(ErrorMessage, RaisesSigpipeOnAClosedPipe) {
    const int pipe = brokenPipe();
    ASSERT_GE(pipe, 0);
    EXPECT_EQ(exitCodeAfter([&] {
                  ::signal(SIGPIPE, SIG_DFL);
                  return ::dup2(pipe, STDERR_FILENO) >= 0;
              }),
              -SIGPIPE);
    ::close(pipe);
}

TEST(ErrorMessage, IsLostSilentlyOnAClosedPipeWithSigpipeIgnored) {
    const int pipe = brokenPipe();
    ASSERT_GE(pipe, 0);
    EXPECT_EQ(exitCodeAfter([&] {
                  ::signal(SIGPIPE, SIG_IGN);
                  return ::dup2(pipe, STDERR_FILENO) >= 0;
              }),
              0);
    ::close(pipe);
}

}  // namespace
