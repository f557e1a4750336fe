// Of the listing what its cases cannot say: they show what it looks like.

#include "Optrella/Help.hpp"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include "Optrella/Text/Print.hpp"
#include "Support/Capture.hpp"

namespace {

using namespace Optrella;
using Tests::printed;

void doNothing(const Parameters&) {}

CommandLinePossibility shownCommand(Parameters required, Parameters optional, Text help) {
    return {false, std::move(required), std::move(optional), std::move(help), false, doNothing};
}

std::string help(const CommandLinePossibility& possibility) {
    return printed([&] { displayHelp({possibility}); });
}

const ParameterNone flag{{"-f"}, "Description"};

// Where a character begins may depend on all that comes before it; here only on its own synopsis.
TEST(DisplayHelp, TakesTimeForEachSynopsisByItself) {
    const ParameterNone accented{{"\u00e9"}, ""};
    const CommandLinePossibility possibility =
        shownCommand(Parameters(20'000, accented), Parameters(20'000, accented), "");
    const std::clock_t begin = std::clock();
    const std::string listing = help(possibility);
    // Several times what it needs on a slow machine, far less than quadratic work would take.
    EXPECT_LT(std::clock() - begin, 2 * CLOCKS_PER_SEC);
    EXPECT_NE(listing.find("\u00e9 \u00e9 [ \u00e9 ] [ \u00e9 ] "), std::string::npos);
}

TEST(DisplayHelp, AListThatTakesNoValueShowsNoChoices) {
    ParameterList list{{"-l"}, {"a"}, "word", "Help"};
    list.common.hasParameter = false;
    EXPECT_EQ(help(shownCommand({list}, {}, "Do it.")),
              help(shownCommand({ParameterNone{{"-l"}, "Help"}}, {}, "Do it.")));
}

TEST(DisplayHelp, ShowsAKindOfAToolsOwnLikeAnyParameterWithAValue) {
    struct Port {
        commonDetails common{.tagHelp = "Port", .tags = {"-p"}, .parameterName = "port"};
    };
    EXPECT_EQ(help(shownCommand({}, {Port()}, "Serve.")),
              help(shownCommand({}, {ParameterString{{"-p"}, "port", "Port"}}, "Serve.")));
}

TEST(DisplayHelp, NeverCallsTheAction) {
    int calls = 0;
    const CommandLinePossibility counting{false, {flag}, {},
                                          "",    false,  [&](const Parameters&) { ++calls; }};
    EXPECT_NE(help(counting), "");
    EXPECT_EQ(calls, 0);
}

TEST(DisplayHelp, StaysInOrderWithTheToolsOwnPrintf) {
    EXPECT_EQ(printed([] {
                  std::printf("before\n");
                  displayHelp({shownCommand({flag}, {}, "Do it.")});
                  std::printf("after\n");
              }),
              "before\n" + help(shownCommand({flag}, {}, "Do it.")) + "after\n");
}

// What arrives at once of a line that is printed.
std::string writtenByPrintLine() {
    // Each read of such a socket takes what one write has brought.
    int ends[2];
    ::socketpair(AF_UNIX, SOCK_DGRAM, 0, ends);
    ::dup2(ends[1], STDOUT_FILENO);
    Internal::printLine({"te", "xt"});
    char written[16];
    const ssize_t size = ::recv(ends[0], written, sizeof written, MSG_DONTWAIT);
    return {written, size > 0 ? static_cast<std::size_t>(size) : 0};
}

TEST(PrintLine, WritesATextAndItsLineEndAtOnce) {
    EXPECT_EXIT(std::_Exit(writtenByPrintLine() == "text\n" ? 0 : 1), testing::ExitedWithCode(0),
                testing::Eq(""));
}

}  // namespace
