// What happens where there is no memory: nothing is thrown, the process stops.

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "HeapCalls.hpp"
#include "Optrella/Optrella.hpp"

using namespace Optrella;

namespace {

// Runs the code, from whose first heap call on there is no memory.
template <class Code>
[[noreturn]] void runWithoutMemory(Code code) {
    failHeapCalls();
    try {
        static_cast<void>(code());
    } catch (const std::bad_alloc&) {
        std::_Exit(1);
    }
    std::_Exit(0);
}

#define EXPECT_STOP_WITHOUT_MEMORY(expression)                                                  \
    EXPECT_EXIT(runWithoutMemory([&] { return expression; }), testing::KilledBySignal(SIGABRT), \
                "bad_alloc")

const std::string longWord(100, 'x');
const Text text(longWord);
const std::vector<Text> many(3, text);
const std::vector<std::string> words(3, longWord);
const Tags manyTags(many);
const std::vector<ParameterNone> choices(3, ParameterNone({"name"}, ""));

struct Large {
    commonDetails common{.tags = {"large"}};
    char bytes[1000]{};
};
const ParameterProtocol large{Large()};

}  // namespace

TEST(LackOfMemory, StopsTheProcessInsteadOfThrowing) {
    EXPECT_STOP_WITHOUT_MEMORY(Text(longWord));
    EXPECT_STOP_WITHOUT_MEMORY(Text(longWord.c_str()));
    EXPECT_STOP_WITHOUT_MEMORY(text.str());
    EXPECT_STOP_WITHOUT_MEMORY(Tags(many));
    EXPECT_STOP_WITHOUT_MEMORY(Tags(text, text, text));
    EXPECT_STOP_WITHOUT_MEMORY(Tags(manyTags));
    EXPECT_STOP_WITHOUT_MEMORY(ListOptions(choices));
    EXPECT_STOP_WITHOUT_MEMORY(ListOptions({"name", "date"}));
    EXPECT_STOP_WITHOUT_MEMORY(ArgumentList(words));
    EXPECT_STOP_WITHOUT_MEMORY(ParameterProtocol(Large()));
    EXPECT_STOP_WITHOUT_MEMORY(ParameterProtocol(large));
    EXPECT_STOP_WITHOUT_MEMORY(FileURL::fromPath("relative"));
    EXPECT_STOP_WITHOUT_MEMORY(UUID().text());
}

TEST(LackOfMemory, StopsNothingThatNeedsNone) {
    EXPECT_EXIT(runWithoutMemory([] { return Tags("a", Text(text)).size() + text.size(); }),
                testing::ExitedWithCode(0), "");
}

// What a tool makes and copies throws nothing, so its own functions need not expect it to.
static_assert(std::is_nothrow_constructible_v<Text, std::string>);
static_assert(std::is_nothrow_constructible_v<Text, std::string_view>);
static_assert(std::is_nothrow_constructible_v<Text, const char*>);
static_assert(std::is_nothrow_constructible_v<Text, char (&)[8]>);
static_assert(std::is_nothrow_constructible_v<Text, const char (&)[8]>);
static_assert(std::is_nothrow_assignable_v<Text&, const char (&)[8]>);
static_assert(std::is_nothrow_copy_constructible_v<Text>);
static_assert(std::is_nothrow_copy_constructible_v<Tags>);
static_assert(std::is_nothrow_constructible_v<Tags, std::span<const Text>>);
static_assert(std::is_nothrow_constructible_v<ListOptions, std::vector<ParameterNone>>);
static_assert(std::is_nothrow_constructible_v<ParameterProtocol, Large>);
static_assert(std::is_nothrow_copy_constructible_v<ParameterFileURL>);
static_assert(std::is_nothrow_copy_constructible_v<ParameterList>);
static_assert(std::is_nothrow_copy_constructible_v<CommandLinePossibility>);
static_assert(std::is_nothrow_constructible_v<ArgumentList, std::vector<std::string>>);
static_assert(noexcept(text.str()) && noexcept(FileURL::fromPath(text)) && noexcept(UUID().text()));
