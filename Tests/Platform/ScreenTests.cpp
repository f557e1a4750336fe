// On a pseudo-terminal that takes the place of a standard stream.

#include "Optrella/Platform/Screen.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "Optrella/Platform/Descriptor.hpp"

namespace {

using namespace Optrella;
using Platform::Descriptor;
using Platform::Stream;

class Terminal {
public:
    Terminal() : master_(::posix_openpt(O_RDWR | O_NOCTTY)), slave_(openSlave(master_)) {}

    [[nodiscard]] int slave() const { return slave_.number(); }
    void resize(unsigned short columns) const {
        winsize size{};
        size.ws_col = columns;
        ASSERT_EQ(::ioctl(slave(), TIOCSWINSZ, &size), 0);
    }

private:
    static int openSlave(const Descriptor& master) {
        ::grantpt(master.number());
        ::unlockpt(master.number());
        return ::open(::ptsname(master.number()), O_RDWR | O_NOCTTY);
    }

    Descriptor master_;
    Descriptor slave_;
};

// Puts a descriptor in the place of a standard one, for the time of a test.
class InPlaceOf {
public:
    InPlaceOf(int standard, int other) : standard_(standard), usual_(::dup(standard)) {
        std::fflush(stdout);
        ::dup2(other, standard);
    }
    InPlaceOf(const InPlaceOf&) = delete;
    InPlaceOf& operator=(const InPlaceOf&) = delete;
    ~InPlaceOf() { ::dup2(usual_.number(), standard_); }

private:
    int standard_;
    Descriptor usual_;
};

TEST(Screen, TellsTheColumnsOfTheTerminalThatAStreamLeadsTo) {
    const Terminal terminal;
    terminal.resize(123);
    const Descriptor file(::open("/dev/null", O_WRONLY));
    for (const Stream stream : {Stream::output, Stream::error}) {
        const bool isOutput = stream == Stream::output;
        const InPlaceOf terminals(isOutput ? STDOUT_FILENO : STDERR_FILENO, terminal.slave());
        const InPlaceOf files(isOutput ? STDERR_FILENO : STDOUT_FILENO, file.number());
        const Stream other = isOutput ? Stream::error : Stream::output;
        EXPECT_TRUE(Platform::isTerminal(stream));
        EXPECT_EQ(Platform::screenColumns(stream), 123U);
        EXPECT_FALSE(Platform::isTerminal(other));
        EXPECT_EQ(Platform::screenColumns(other), std::nullopt);
    }
}

TEST(Screen, TellsNothingOfATerminalThatDoesNotKnowItsSize) {
    const Terminal terminal;
    terminal.resize(0);
    const InPlaceOf place(STDOUT_FILENO, terminal.slave());
    EXPECT_TRUE(Platform::isTerminal(Stream::output));
    EXPECT_EQ(Platform::screenColumns(Stream::output), std::nullopt);
}

}  // namespace
