// The child process, as every system runs it.

#include "Optrella/Platform/ChildProcess.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Child.hpp"
#include "Runs.hpp"

// macOS declares it in no header.
extern "C" char** environ;

namespace {

using namespace Optrella::Platform;
using namespace std::chrono_literals;
using namespace Tests;
using Clock = std::chrono::steady_clock;

// ---- Blocks ----

TEST_F(ChildProcess, BlocksAreTheWritesOfTheChild) {
    const Outcome outcome = runProbe({"write", "610a62", "write", "63", "write", "0a"});
    EXPECT_EQ(outcome.blocks, (Blocks{"a\nb", "c", "\n"}));
}

TEST_F(ChildProcess, BlocksKeepBytesThatAreNotUTF8) {
    const Outcome outcome = runProbe({"write", "ff00fe", "write", "c3", "write", "a9"});
    EXPECT_EQ(outcome.blocks, (Blocks{{"\xff\0\xfe", 3}, "\xc3", "\xa9"}));
}

TEST_F(ChildProcess, BlocksAreNeverEmpty) {
    EXPECT_EQ(runProbe({}).blocks, Blocks{});
    EXPECT_EQ(runProbe({"write", "", "write", "61", "error", ""}).blocks, Blocks{"a"});
}

TEST_F(ChildProcess, BlocksOfStandardOutputAndStandardErrorShareOneOrder) {
    const Outcome outcome =
        runProbe({"write", "31", "error", "32", "error", "33", "write", "34", "error", "35"});
    EXPECT_EQ(outcome.blocks, (Blocks{"1", "2", "3", "4", "5"}));
}

TEST_F(ChildProcess, BlocksKeepTheirOrder) {
    Blocks expected;
    for (int i = 0; i < 1000; ++i) expected.push_back(std::to_string(i) + '\n');
    EXPECT_EQ(runProbe({"numbers", "1000"}).blocks, expected);
}

TEST_F(ChildProcess, BlocksAreHandledOnOneOtherThread) {
    std::vector<pthread_t> threads;
    const auto keepThread = [](void* context, std::string_view) {
        static_cast<std::vector<pthread_t>*>(context)->push_back(::pthread_self());
    };
    const std::vector<std::string> arguments{"numbers", "10"};
    ASSERT_TRUE(runChild(probe.c_str(), arguments, {}, {keepThread, &threads}));
    ASSERT_EQ(threads.size(), 10u);
    EXPECT_EQ(::pthread_equal(threads.front(), ::pthread_self()), 0);
    for (const pthread_t each : threads) EXPECT_NE(::pthread_equal(each, threads.front()), 0);
}

TEST_F(ChildProcess, BlocksOfALargeOutputAreCompleteAndAtMost64KiBLong) {
    std::string expected(std::size_t{10} << 20, '\0');
    std::generate(expected.begin(), expected.end(), [n = 0u]() mutable {
        n = n * 1664525u + 1013904223u;
        return static_cast<char>(n >> 24);
    });
    const Outcome outcome = runProbe({"stream", std::to_string(expected.size())});
    EXPECT_TRUE(outcome.output() == expected) << outcome.output().size();
    for (const std::string& each : outcome.blocks) EXPECT_LE(each.size(), 65536u);
}

TEST_F(ChildProcess, BlocksAreHandledThoughTheHandlerIsSlow) {
    Blocks blocks;
    const auto keepSlowly = [](void* context, std::string_view block) {
        std::this_thread::sleep_for(5ms);
        keep(context, block);
    };
    const std::vector<std::string> arguments{"numbers", "20"};
    ASSERT_TRUE(runChild(probe.c_str(), arguments, {}, {keepSlowly, &blocks}));
    EXPECT_EQ(blocks.size(), 20u);
    EXPECT_EQ(blocks.back(), "19\n");
}

// ---- Input ----

TEST_F(ChildProcess, InputIsTheGivenBytesAndThenTheEnd) {
    EXPECT_EQ(runProbe({"input"}, password("p\xc3\xa4 ss\n")).output(), "70c3a42073730a\n");
    EXPECT_EQ(runProbe({"input"}, password({"\0\xff", 2})).output(), "00ff\n");
}

TEST_F(ChildProcess, InputMayBeEmpty) { EXPECT_EQ(runProbe({"input"}).output(), "\n"); }

TEST_F(ChildProcess, InputMayBeAsLongAsAPasswordCanBe) {
    const std::string longest(Password::capacity, 'p');
    std::string expected;
    for (std::size_t i = 0; i < longest.size(); ++i) expected += "70";
    EXPECT_EQ(runProbe({"input"}, password(longest)).output(), expected + '\n');
}

TEST_F(ChildProcess, InputNeedNotBeRead) {
    EXPECT_EQ(Tests::exitCodeOf([] {
                  ::signal(SIGPIPE, SIG_DFL);
                  for (int i = 0; i < 50; ++i) {
                      const std::vector<std::string> arguments{"abandon", "exit", "1"};
                      Password input = password(std::string(4096, 'p'));
                      if (!run(probe, arguments, std::move(input)).isStarted) return 1;
                  }
                  return 0;
              }),
              0);
}

// ---- The end of the child ----

TEST_F(ChildProcess, EndsWithAnyExitCode) {
    EXPECT_EQ(runProbe({"write", "61", "exit", "77"}).blocks, Blocks{"a"});
}

TEST_F(ChildProcess, EndsByASignal) {
    EXPECT_EQ(runProbe({"write", "61", "kill", std::to_string(SIGKILL)}).blocks, Blocks{"a"});
    EXPECT_EQ(runProbe({"fill", "10", "kill", std::to_string(SIGTERM)}).blocks,
              Blocks{"xxxxxxxxxx"});
}

TEST_F(ChildProcess, EndsLaterThanItsOutput) {
    const Clock::time_point before = Clock::now();
    EXPECT_EQ(runProbe({"write", "61", "abandon", "sleep", "100"}).blocks, Blocks{"a"});
    EXPECT_GE(Clock::now() - before, 100ms);
}

TEST_F(ChildProcess, EndsLaterThanItStops) {
    const Clock::time_point before = Clock::now();
    EXPECT_EQ(runProbe({"write", "61", "stop", "write", "62"}).blocks, (Blocks{"a", "b"}));
    EXPECT_GE(Clock::now() - before, 100ms);
}

TEST_F(ChildProcess, EndsThoughAnotherProcessHoldsThePipe) {
    const Clock::time_point before = Clock::now();
    EXPECT_EQ(runProbe({"write", "61", "heir", "fill", "3"}).output(), "axxx");
    EXPECT_LT(Clock::now() - before, 1s);
}

TEST_F(ChildProcess, EndsThoughAnotherProcessWritesOnAndOn) {
    Blocks blocks;
    const auto keepSlowly = [](void* context, std::string_view block) {
        std::this_thread::sleep_for(10ms);  // the other refills the pipe meanwhile
        keep(context, block);
    };
    const std::vector<std::string> arguments{"write", "61", "flood", "sleep", "50"};
    const Clock::time_point before = Clock::now();
    ASSERT_TRUE(runChild(probe.c_str(), arguments, {}, {keepSlowly, &blocks}));
    EXPECT_LT(Clock::now() - before, 1s);
    ASSERT_GE(blocks.size(), 2u);
    EXPECT_EQ(blocks[0], "a");
    EXPECT_EQ(blocks[1].substr(0, 10), "floodflood");
}

TEST_F(ChildProcess, EndsThoughAForkOfTheProcessHoldsAllDescriptors) {
    pid_t forked = 0;
    const auto fork = [](void* context, std::string_view) {
        pid_t& process = *static_cast<pid_t*>(context);
        if (process == 0) process = ::fork();
        if (process == 0) {
            ::poll(nullptr, 0, 10'000);
            ::_exit(0);
        }
    };
    const std::vector<std::string> arguments{"heir", "write", "61"};
    const Clock::time_point before = Clock::now();
    EXPECT_TRUE(runChild(probe.c_str(), arguments, {}, {fork, &forked}));
    EXPECT_LT(Clock::now() - before, 1s);
    ASSERT_GT(forked, 0);
    ::kill(forked, SIGKILL);
    ::waitpid(forked, nullptr, 0);
}

TEST_F(ChildProcess, EndsUnseenWhereChildrenAreIgnored) {
    EXPECT_EQ(Tests::exitCodeOf([] {
                  ::signal(SIGCHLD, SIG_IGN);
                  const Outcome outcome = run(probe, {"sleep", "50", "fill", "3"});
                  return outcome.isStarted && outcome.blocks == Blocks{"xxx"} ? 0 : 1;
              }),
              0);
}

TEST_F(ChildProcess, EndsUnseenWhereAHandlerCollectsChildren) {
    EXPECT_EQ(Tests::exitCodeOf([] {
                  ::signal(SIGCHLD, [](int) {
                      const int before = errno;
                      while (::waitpid(-1, nullptr, WNOHANG) > 0) {
                      }
                      errno = before;
                  });
                  for (int i = 0; i < 20; ++i) {
                      const Outcome outcome = run(probe, {"fill", "3"});
                      if (!outcome.isStarted || outcome.blocks != Blocks{"xxx"}) return 1;
                  }
                  return 0;
              }),
              0);
}

// ---- Failures to start ----

class UnstartableChild : public ChildProcess {
protected:
    void SetUp() override {
        ChildProcess::SetUp();
        directory_ = testing::TempDir() + "optrella-child-XXXXXX";
        ASSERT_NE(::mkdtemp(directory_.data()), nullptr);
    }
    void TearDown() override {
        for (const std::string& each : files_) ::unlink(each.c_str());
        ::rmdir(directory_.c_str());
        ChildProcess::TearDown();
    }

    // Makes a file and returns its path.
    std::string file(const char* name, std::string_view text, mode_t mode) {
        files_.push_back(directory_ + '/' + name);
        const int made = ::open(files_.back().c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, mode);
        EXPECT_EQ(::write(made, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        ::close(made);
        return files_.back();
    }
    const std::string& directory() const { return directory_; }

    static void expectUnstartable(const std::string& program,
                                  const std::vector<std::string>& arguments = {}) {
        SCOPED_TRACE(program);
        const Outcome outcome = run(program, arguments, password("p"));
        EXPECT_FALSE(outcome.isStarted);
        EXPECT_EQ(outcome.blocks, Blocks{});
    }

private:
    std::string directory_;
    std::vector<std::string> files_;
};

TEST_F(UnstartableChild, IsMissing) {
    expectUnstartable(directory() + "/nothing");
    expectUnstartable("");
    expectUnstartable(probe + "/within");
}

TEST_F(UnstartableChild, IsNotExecutable) {
    expectUnstartable(file("program", "#!/bin/sh\n", 0644));
}

TEST_F(UnstartableChild, IsNoProgram) { expectUnstartable(file("text", "echo here\n", 0755)); }

TEST_F(UnstartableChild, HasNoInterpreter) {
    expectUnstartable(file("script", "#!/nowhere/sh\n", 0755));
}

TEST_F(UnstartableChild, IsADirectory) { expectUnstartable(directory()); }

TEST_F(UnstartableChild, IsSearchedForNowhere) { expectUnstartable("true"); }

TEST_F(UnstartableChild, HasTooLongAnArgument) {
    expectUnstartable(probe, {std::string(std::size_t{1} << 20, 'a')});
}

TEST_F(UnstartableChild, HasTooFewDescriptorsLeft) {
    EXPECT_EQ(Tests::exitCodeOf([] {
                  for (const int each : Tests::descriptors()) {
                      if (each > 2) ::close(each);
                  }
                  const std::vector<int> before = Tests::descriptors();
                  rlimit usual{};
                  ::getrlimit(RLIMIT_NOFILE, &usual);
                  for (rlim_t most = 3;; ++most) {
                      const rlimit limit{most, usual.rlim_max};
                      ::setrlimit(RLIMIT_NOFILE, &limit);
                      const bool isStarted = run(probe, {}).isStarted;
                      ::setrlimit(RLIMIT_NOFILE, &usual);
                      if (Tests::descriptors() != before) return 1;
                      if (Tests::hasChildren()) return 2;
                      // Below nine there is not even room for the ends of three pipes.
                      if (isStarted) return most >= 9 ? 0 : 3;
                      if (most > 20) return 4;
                  }
              }),
              0);
}

// ---- What the child gets ----

TEST_F(ChildProcess, GetsItsArgumentsUnchangedAfterItsName) {
    const std::vector<std::string> arguments{
        "arguments", "",          " ",  " a  b ", "\"'`$HOME\\", "\n", "a\nb\r\n", "\xff\xfe",
        "\xc3\xa9",  "e\xcc\x81", "--", "-x",     "a=b",         "*",  ""};
    const Outcome outcome = runProbe(arguments);
    const auto hexLine = [](const std::string& text) {
        std::string line;
        for (const char each : text) {
            char digits[3];
            std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(each));
            line += digits;
        }
        return line + '\n';
    };
    std::string expected = hexLine(probe);
    for (const std::string& each : arguments) expected += hexLine(each);
    EXPECT_EQ(outcome.output(), expected);
}

TEST_F(ChildProcess, GetsVeryLongAndVeryManyArguments) {
    std::vector<std::string> arguments(5000, "a");
    arguments.front() = "arguments";
    arguments.back() = std::string(100'000, 'a');
    const std::string output = runProbe(arguments).output();
    EXPECT_EQ(output.size(), 2 * probe.size() + 1 + 2 * 9 + 1 + 4998 * 3 + 200'001);
}

TEST_F(ChildProcess, GetsTheEnvironmentAsItIs) {
    EXPECT_EQ(Tests::exitCodeOf([] {
                  static char* none[] = {nullptr};
                  environ = none;
                  ::setenv("LANG", "xx_YY", 1);
                  ::setenv("EMPTY", "", 1);
                  ::setenv("BYTES", "a\nb \xff=\"", 1);
                  const char expected[] = "LANG=xx_YY\0EMPTY=\0BYTES=a\nb \xff=\"";
                  const Outcome outcome = run(probe, {"environment"});
                  return outcome.output() == std::string(expected, sizeof expected) ? 0 : 1;
              }),
              0);
}

TEST_F(ChildProcess, GetsTheWorkingDirectoryAndTheUmask) {
    EXPECT_EQ(Tests::exitCodeOf([] {
                  ::umask(037);
                  if (::chdir("/usr") != 0) return 1;
                  return run(probe, {"place"}).output() == "/usr 31\n" ? 0 : 2;
              }),
              0);
}

TEST_F(ChildProcess, GetsTheProcessGroupAndSession) {
    const std::string expected = std::to_string(::getpid()) + ' ' + std::to_string(::getpgrp()) +
                                 ' ' + std::to_string(::getsid(0)) + '\n';
    EXPECT_EQ(runProbe({"relations"}).output(), expected);
}

TEST_F(ChildProcess, GetsNoDescriptorsButThoseThatAreLeftOpenForIt) {
    const int left = ::open("/dev/null", O_RDONLY);
    const int own = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    std::string expected;
    for (const int each : Tests::inheritableDescriptors()) {
        expected += std::to_string(each) + '\n';
    }
    EXPECT_EQ(runProbe({"descriptors"}).output(), expected);
    ::close(left);
    ::close(own);
}

TEST_F(ChildProcess, GetsDescriptorsThatBlock) {
    EXPECT_EQ(runProbe({"nonblocking"}, password("p")).output(), "0\n");
}

// Runs in a process of its own; returns 0 when all is well.
int codeWithClosed(int closed) {
    for (const int number : {0, 1, 2}) {
        if ((closed >> number & 1) != 0) ::close(number);
    }
    struct Seen {
        Blocks blocks;
        std::vector<int> descriptors;
        static void handle(void* context, std::string_view block) {
            auto& seen = *static_cast<Seen*>(context);
            keep(&seen.blocks, block);
            seen.descriptors = Tests::descriptors();
        }
    } seen;
    const std::vector<int> before = Tests::descriptors();
    const std::vector<std::string> arguments{"descriptors", "input", "error", "32", "write", "33"};
    if (!runChild(probe.c_str(), arguments, password("p\n"), {Seen::handle, &seen})) return 1;

    std::string numbers = "0\n1\n2\n";
    for (const int each : Tests::inheritableDescriptors()) {
        if (each > 2) numbers += std::to_string(each) + '\n';
    }
    if (seen.blocks != Blocks{numbers, "700a\n", "2", "3"}) return 2;
    // What the tool prints to a closed descriptor must not reach a pipe.
    for (const int number : {0, 1, 2}) {
        if (std::count(before.begin(), before.end(), number) !=
            std::count(seen.descriptors.begin(), seen.descriptors.end(), number)) {
            return 3;
        }
    }
    return Tests::descriptors() == before ? 0 : 4;
}

TEST_F(ChildProcess, GetsItsDescriptorsWhicheverOfTheProcessAreClosed) {
    for (int closed = 0; closed < 8; ++closed) {
        EXPECT_EQ(Tests::exitCodeOf([closed] { return codeWithClosed(closed); }), 0) << closed;
    }
}

// ---- Signals ----

constexpr int lastSignal = NSIG - 1;

// Without "::" before what macOS has as macros.
void setAllToDefault() {
    for (int signal = 1; signal <= lastSignal; ++signal) {
        struct sigaction action {};
        ::sigaction(signal, &action, nullptr);
    }
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

TEST_F(ChildProcess, HasSignalsAtTheirDefaultsButIgnoredOnes) {
    EXPECT_EQ(Tests::exitCodeOf([] {
                  setAllToDefault();
                  ::signal(SIGHUP, SIG_IGN);
                  ::signal(lastSignal, SIG_IGN);
                  for (const int handled : {SIGINT, SIGUSR1, SIGPIPE}) {
                      ::signal(handled, [](int) {});
                  }
                  sigset_t all;
                  sigfillset(&all);
                  ::sigprocmask(SIG_SETMASK, &all, nullptr);
                  const Outcome outcome = run(probe, {"signals"});
                  const std::string last = std::to_string(lastSignal);
                  return outcome.output() == "1 ignored\n" + last + " ignored\n" ? 0 : 1;
              }),
              0);
}

TEST_F(ChildProcess, LeavesTheSignalsOfTheProcessAsTheyAre) {
    EXPECT_EQ(Tests::exitCodeOf([] {
                  setAllToDefault();
                  ::signal(SIGHUP, SIG_IGN);
                  const auto handler = [](int) {};
                  ::signal(SIGUSR1, handler);
                  sigset_t blocked;
                  sigemptyset(&blocked);
                  sigaddset(&blocked, SIGUSR2);
                  ::sigprocmask(SIG_SETMASK, &blocked, nullptr);
                  if (!run(probe, {}).isStarted) return 1;

                  struct sigaction now {};
                  ::sigaction(SIGUSR1, nullptr, &now);
                  if (now.sa_handler != handler) return 2;
                  ::sigaction(SIGHUP, nullptr, &now);
                  if (now.sa_handler != SIG_IGN) return 3;
                  sigset_t mask;
                  ::sigprocmask(SIG_SETMASK, nullptr, &mask);
                  for (int each = 1; each <= lastSignal; ++each) {
                      if (sigismember(&mask, each) != sigismember(&blocked, each)) return 4;
                  }
                  return 0;
              }),
              0);
}

TEST_F(ChildProcess, IsWaitedForAndReadThroughAStormOfSignals) {
    EXPECT_EQ(Tests::exitCodeOf([] {
                  static std::atomic<int> signals{0};
                  static const pthread_t caller = ::pthread_self();
                  static std::atomic<bool> isElsewhere{false};
                  struct sigaction action {};
                  action.sa_handler = [](int) {
                      ++signals;
                      if (::pthread_equal(::pthread_self(), caller) == 0) isElsewhere = true;
                  };
                  ::sigaction(SIGALRM, &action, nullptr);
                  const itimerval often{{0, 500}, {0, 500}};
                  ::setitimer(ITIMER_REAL, &often, nullptr);
                  // Some systems send them less often than they are asked to.
                  for (int round = 0; round < 1000 && signals <= 10; ++round) {
                      const Outcome outcome = run(probe, {"numbers", "300"}, password("p"));
                      if (!outcome.isStarted || outcome.blocks.size() != 300) return 1;
                  }
                  const itimerval never{};
                  ::setitimer(ITIMER_REAL, &never, nullptr);
                  if (isElsewhere) return 2;
                  return signals > 10 ? 0 : 3;
              }),
              0);
}

TEST_F(ChildProcess, HasItsBlocksHandledAwayFromTheSignalsOfTheProcess) {
    sigset_t blocked;
    sigemptyset(&blocked);
    const auto keepMask = [](void* context, std::string_view) {
        ::pthread_sigmask(SIG_SETMASK, nullptr, static_cast<sigset_t*>(context));
    };
    const std::vector<std::string> arguments{"write", "61"};
    ASSERT_TRUE(runChild(probe.c_str(), arguments, {}, {keepMask, &blocked}));
    for (const int each : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGALRM, SIGCHLD, SIGWINCH, SIGTSTP,
                           SIGCONT, SIGUSR1, SIGUSR2, lastSignal}) {
        EXPECT_EQ(sigismember(&blocked, each), 1) << each;
    }
    // These come from what the handler itself does.
    for (const int each : {SIGPIPE, SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS}) {
        EXPECT_EQ(sigismember(&blocked, each), 0) << each;
    }
}

TEST_F(ChildProcess, RaisesSigpipeWhenTheHandlerWritesToAClosedPipe) {
    EXPECT_EQ(Tests::exitCodeOf([] {
                  setAllToDefault();
                  int ends[2];
                  if (::pipe(ends) != 0) return 1;
                  ::close(ends[0]);
                  const auto pass = [](void* context, std::string_view block) {
                      static_cast<void>(!::write(*static_cast<int*>(context), block.data(), 1));
                  };
                  const std::vector<std::string> arguments{"write", "61"};
                  return runChild(probe.c_str(), arguments, {}, {pass, &ends[1]}) ? 2 : 3;
              }),
              -SIGPIPE);
}

// ---- Many ----

TEST_F(ChildProcess, LeavesNothingInTheProcessAThousandTimes) {
    const std::vector<int> descriptorsBefore = Tests::descriptors();
    for (int i = 0; i < 1000; ++i) {
        const std::string number = std::to_string(i);
        ASSERT_EQ(run("/bin/echo", {number}, password(number)).output(), number + '\n');
    }
    EXPECT_EQ(Tests::descriptors(), descriptorsBefore);
    EXPECT_TRUE(Tests::hasUsualThreads());
    EXPECT_FALSE(Tests::hasChildren());
}

}  // namespace
