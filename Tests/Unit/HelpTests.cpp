#include "Optrella/Help.hpp"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include "Optrella/Help/Listing.hpp"
#include "Optrella/Text/Print.hpp"
#include "Support/Capture.hpp"
#include "Support/Death.hpp"

namespace {

using namespace Optrella;
using Internal::displayHelpParameters;
using Internal::Listing;
using Tests::printed;

void doNothing(const Parameters&) {}

CommandLinePossibility shownCommand(Parameters required, Parameters optional, Text help) {
    return {false, std::move(required), std::move(optional), std::move(help), false, doNothing};
}

std::string help(const CommandLinePossibility& possibility) {
    return printed([&] { displayHelp({possibility}); });
}

std::string formTagHelp(const ParameterProtocol& option, bool optional) {
    Internal::StringBuilder text;
    Internal::formTagHelp(text, option.view(), optional);
    return std::string(std::string_view(text));
}

const ParameterNone flag{{"-f", "--file"}, "Description"};
const ParameterString value{{"-f", "--file"}, "path", "Description"};
const ParameterNone bareFlag{{}, ""};
const ParameterString bareValue{{}, "path", ""};

// ---- Synopses ----

TEST(FormTagHelp, RequiredWithoutValue) { EXPECT_EQ(formTagHelp(flag, false), "-f|--file"); }
TEST(FormTagHelp, RequiredWithValue) { EXPECT_EQ(formTagHelp(value, false), "-f|--file <path> "); }
TEST(FormTagHelp, OptionalWithoutValue) { EXPECT_EQ(formTagHelp(flag, true), "[ -f|--file ]"); }
TEST(FormTagHelp, OptionalWithValue) {
    EXPECT_EQ(formTagHelp(value, true), "[ -f|--file <path>  ]");
}

TEST(FormTagHelp, ShowsEveryTagAsItIs) {
    EXPECT_EQ(formTagHelp(ParameterNone{{"a|b", "", "c\n", "\xFF"}, ""}, false), "a|b||c\n|\xFF");
}

TEST(FormTagHelp, IsAppended) {
    Internal::StringBuilder text;
    const ParameterProtocol option(flag);
    Internal::formTagHelp(text, option.view(), false);
    Internal::formTagHelp(text, option.view(), true);
    EXPECT_EQ(std::string_view(text), "-f|--file[ -f|--file ]");
}

TEST(FormTagHelp, TakesTheLastUserPerceivedCharacterAway) {
    // U+0600 takes the bar after it into its own character.
    EXPECT_EQ(formTagHelp(ParameterNone{{"-a\u0600"}, ""}, false), "-a");
    EXPECT_EQ(formTagHelp(ParameterNone{{"-a|\u0301"}, ""}, false), "-a|\u0301");
}

TEST(FormTagHelp, AnOptionalParameterWithoutTagsLosesTheSpace) {
    EXPECT_EQ(formTagHelp(bareFlag, true), "[ ]");
    EXPECT_EQ(formTagHelp(bareValue, true), "[ <path>  ]");
}

// Where a character begins may depend on all that comes before it; here only on its own synopsis.
TEST(FormTagHelp, TakesTimeForItsOwnSynopsisAlone) {
    const ParameterNone accented{{"\u00e9"}, ""};
    const CommandLinePossibility possibility =
        shownCommand(Parameters(20'000, accented), Parameters(20'000, accented), "");
    const std::clock_t begin = std::clock();
    const std::string listing = help(possibility);
    // Several times what it needs on a slow machine, far less than quadratic work would take.
    EXPECT_LT(std::clock() - begin, 2 * CLOCKS_PER_SEC);
    EXPECT_TRUE(listing.starts_with("\n\u00e9 \u00e9 "));
    EXPECT_TRUE(listing.ends_with(" [ \u00e9 ] [ \u00e9 ] \n   \n\n"));
}

// ---- Parameter lists ----

const Internal::KeptParameters listed({value, flag}, {});

TEST(DisplayHelpParameters, ListsSynopsesAndDescriptions) {
    Listing listing;
    displayHelpParameters(listing, listed.required(), true);
    EXPECT_EQ(std::string_view(listing.text), "[ -f|--file <path>  ] [ -f|--file ] ");
    EXPECT_EQ(std::string_view(listing.descriptions),
              "    path  -  Description\n    Description\n");
}

TEST(DisplayHelpParameters, OfAnEmptyListListsNothing) {
    Listing listing;
    displayHelpParameters(listing, {}, false);
    EXPECT_EQ(std::string_view(listing.text), "");
    EXPECT_EQ(std::string_view(listing.descriptions), "");
}

TEST(DisplayHelpParameters, PrintsNothing) {
    Listing listing;
    EXPECT_EQ(printed([&] { displayHelpParameters(listing, listed.required(), true); }), "");
}

// ---- The listing ----

TEST(DisplayHelp, ShowsTheWorkedExample) {
    const CommandLinePossibility declarations[] = {
        {false,
         {ParameterNone{{"list"}, ""}},
         {ParameterList{{"-s", "--sort"}, {"name", "date"}, "order", "Sort order"}},
         "List the installed items.",
         false,
         doNothing},
        {true,
         {ParameterNone{{"remove"}, ""},
          ParameterString{{"-n", "--name"}, "item", "Item to remove"}},
         {ParameterNone{{"-f", "--force"}, "Do not ask for confirmation"}},
         "Remove an item.",
         false,
         doNothing},
        {false, {ParameterNone{{"secret"}, "x"}}, {}, "Hidden.", true, doNothing}};
    EXPECT_EQ(printed([&] { displayHelp(declarations); }),
              "\n"
              "list [ -s|--sort <order>  ] \n"
              "  List the installed items. \n"
              "    order  -  Sort order\n"
              "        Must be one of: name, date\n"
              "\n"
              "remove -n|--name <item>  [ -f|--force ] \n"
              "  Remove an item.  (must be run as root)\n"
              "    item  -  Item to remove\n"
              "    Do not ask for confirmation\n"
              "\n");
}

TEST(DisplayHelp, OfNoDeclarationsIsAnEmptyLine) {
    EXPECT_EQ(printed([] { displayHelp({}); }), "\n");
}

TEST(DisplayHelp, OfHiddenDeclarationsIsAnEmptyLine) {
    const CommandLinePossibility hidden{true, {flag}, {value}, "Hidden.", true, doNothing};
    EXPECT_EQ(printed([&] { displayHelp({hidden, hidden}); }), "\n");
}

TEST(DisplayHelp, DoesNotTouchAHiddenDeclaration) {
    const CommandLinePossibility hidden{false, {bareFlag}, {}, "Hidden.", true, doNothing};
    EXPECT_EQ(printed([&] { displayHelp({hidden}); }), "\n");
}

TEST(DisplayHelp, OfACommandWithoutParametersHasAnEmptySynopsisLine) {
    EXPECT_EQ(help(shownCommand({}, {}, "Do it.")), "\n\n  Do it. \n\n");
    EXPECT_EQ(help({true, {}, {}, "Do it.", false, doNothing}),
              "\n\n  Do it.  (must be run as root)\n\n");
}

TEST(DisplayHelp, AFlagWithoutHelpHasNoDescriptionLine) {
    EXPECT_EQ(help(shownCommand({ParameterNone{{"-f"}, ""}}, {}, "Do it.")),
              "\n-f \n  Do it. \n\n");
}

TEST(DisplayHelp, AValueWithoutHelpHasADescriptionLine) {
    EXPECT_EQ(help(shownCommand({ParameterString{{"-f"}, "path", ""}}, {}, "Do it.")),
              "\n-f <path>  \n  Do it. \n    path  -  \n\n");
}

TEST(DisplayHelp, AListWithoutChoicesLosesTheColon) {
    EXPECT_EQ(help(shownCommand({ParameterList{{"-l"}, {}, "word", "Help"}}, {}, "Do it.")),
              "\n-l <word>  \n  Do it. \n    word  -  Help\n        Must be one of\n\n");
}

TEST(DisplayHelp, ShowsTheFirstTagOfEachChoiceOnly) {
    const ListOptions options{ParameterNone{{"a", "x"}, "hidden"}, ParameterNone{{"b", "y"}, ""}};
    EXPECT_EQ(help(shownCommand({ParameterList{{"-l"}, options, "word", ""}}, {}, "Do it.")),
              "\n-l <word>  \n  Do it. \n    word  -  \n        Must be one of: a, b\n\n");
}

TEST(DisplayHelp, AChoiceThatTakesTheCommaIntoItsCharacterLosesMore) {
    EXPECT_EQ(help(shownCommand({ParameterList{{"-l"}, {"a\u0600"}, "word", ""}}, {}, "Do it.")),
              "\n-l <word>  \n  Do it. \n    word  -  \n        Must be one of: a\n\n");
}

TEST(DisplayHelp, AListThatTakesNoValueShowsNoChoices) {
    ParameterList list{{"-l"}, {"a"}, "word", "Help"};
    list.common.hasParameter = false;
    EXPECT_EQ(help(shownCommand({list}, {}, "Do it.")), "\n-l \n  Do it. \n    Help\n\n");
}

TEST(DisplayHelp, RequiredSynopsesComeBeforeOptionalOnesInTheOrderOfDeclaration) {
    const ParameterNone a{{"-a"}, "A"};
    const ParameterNone b{{"-b"}, "B"};
    const ParameterNone c{{"-c"}, "C"};
    const ParameterNone d{{"-d"}, "D"};
    EXPECT_EQ(help(shownCommand({d, b}, {c, a}, "Do it.")),
              "\n-d -b [ -c ] [ -a ] \n  Do it. \n    D\n    B\n    C\n    A\n\n");
}

TEST(DisplayHelp, StopsAtARequiredParameterWithoutTagsAfterWhatStandsBeforeIt) {
    for (const ParameterProtocol& bare : {ParameterProtocol(bareFlag), {bareValue}}) {
        const CommandLinePossibility broken{false, {flag, bare}, {flag}, "", false, doNothing};
        EXPECT_EXIT(
            {
                Tests::joinStreams();
                displayHelp({broken});
            },
            Tests::isTrap, testing::Eq("\n-f|--file "));
    }
}

TEST(DisplayHelp, StopsAtAChoiceWithoutTags) {
    const ParameterList list{{"-l"}, {ParameterNone{{}, ""}}, "word", ""};
    const CommandLinePossibility broken{false, {list}, {}, "", false, doNothing};
    EXPECT_EXIT(
        {
            Tests::joinStreams();
            displayHelp({broken});
        },
        Tests::isTrap, testing::Eq("\n-l <word>  "));
}

TEST(DisplayHelp, ShowsAKindOfAToolsOwnLikeAnyParameterWithAValue) {
    struct Port {
        commonDetails common{.tagHelp = "Port", .tags = {"-p"}, .parameterName = "port"};
    };
    EXPECT_EQ(help(shownCommand({}, {Port()}, "Serve.")),
              "\n[ -p <port>  ] \n  Serve. \n    port  -  Port\n\n");
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
                  displayHelp({});
                  std::printf("after\n");
              }),
              "before\n\nafter\n");
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
