#include "Optrella/Text.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <ctime>
#include <functional>
#include <iomanip>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Optrella/Text/TextBlock.hpp"
#include "Support/Death.hpp"

namespace {

using namespace Optrella;

std::size_t hashOf(const Text& text) { return std::hash<Text>()(text); }

}  // namespace

// ---- Equality and hash ----

TEST(TextEquality, SeesTheByteAfterANUL) {
    const Text text = std::string("a\0b", 3);
    EXPECT_EQ(text, Text(std::string("a\0b", 3)));
    EXPECT_NE(text, Text(std::string("a\0c", 3)));
    EXPECT_NE(text, Text("a"));
    EXPECT_NE(text, Text(std::string("a\0", 2)));
}

TEST(TextEquality, OfABrokenSequenceAndTheWholeOneFails) {
    const Text whole = "\xC3\xA9";
    const Text broken =
        "\xC3"
        "a";
    EXPECT_NE(whole, broken);
    EXPECT_NE(broken, whole);
}

TEST(TextHash, KeepsEqualTextsOnceInASet) {
    const std::unordered_set<Text> texts = {"K", "\u212A", "\u00E9", "e\u0301", "k"};
    EXPECT_EQ(texts.size(), 3U);
    EXPECT_TRUE(texts.contains(std::string("e\u0301")));
    EXPECT_FALSE(texts.contains("e"));
}

// ---- Long texts ----

namespace {

constexpr std::size_t megabyte = 1 << 20;

std::string repeated(std::string_view part, std::size_t bytes) {
    std::string text;
    while (text.size() < bytes) text += part;
    return text;
}

// Whether both are equal. Fails when that takes 2 s of processor time: several times what it needs
// on a slow machine, far less than quadratic work would take.
bool areEqualInGoodTime(const Text& left, const Text& right) {
    const std::clock_t begin = std::clock();
    const bool areEqual = left == right;
    EXPECT_LT(std::clock() - begin, 2 * CLOCKS_PER_SEC);
    return areEqual;
}

TEST(Text, OfAnArrayWithoutANULIsAllOfIt) {
    char buffer[] = {'a', 'b', 'c'};
    const char constant[] = {'a', 'b', 'c'};
    EXPECT_EQ(Text(buffer).str(), "abc");
    EXPECT_EQ(Text(constant).str(), "abc");
    EXPECT_TRUE(Text("abc") == buffer);
    EXPECT_TRUE(Text("abc") == constant);
}

TEST(Text, ComparedWithANullPointerStopsSilently) {
    const char* null = nullptr;
    EXPECT_SILENT_STOP(Text("a") == null);
}

}  // namespace

TEST(LongTexts, OfMarksThatMustAllBeReorderedAreComparedInGoodTime) {
    const std::string above = repeated("\u0301", megabyte / 2);
    const std::string below = repeated("\u0323", megabyte / 2);
    const Text descending = "a" + above + below;
    const Text ascending = "a" + below + above;
    EXPECT_TRUE(areEqualInGoodTime(descending, ascending));
    EXPECT_FALSE(areEqualInGoodTime(descending, ascending.str() + "\u0301"));
    EXPECT_EQ(hashOf(descending), hashOf(ascending));
}

TEST(LongTexts, OfMarksInTurnsAreComparedInGoodTime) {
    const Text oneWay = "a" + repeated("\u0301\u0323\u0327", megabyte);
    const Text otherWay = "a" + repeated("\u0327\u0323\u0301", megabyte);
    EXPECT_TRUE(areEqualInGoodTime(oneWay, otherWay));
    EXPECT_EQ(hashOf(oneWay), hashOf(otherWay));
}

TEST(LongTexts, OfTwinsAreComparedInGoodTime) {
    constexpr std::size_t letters = megabyte / 3;
    const Text precomposed = repeated("\u00E9", 2 * letters);
    const Text decomposed = repeated("e\u0301", 3 * letters);
    EXPECT_TRUE(areEqualInGoodTime(precomposed, decomposed));
    EXPECT_FALSE(areEqualInGoodTime(precomposed, decomposed.str() + "e"));
    EXPECT_EQ(hashOf(precomposed), hashOf(decomposed));
}

TEST(LongTexts, ThatDifferInTheLastByteAreTwo) {
    const std::string ascii(megabyte, 'x');
    EXPECT_TRUE(areEqualInGoodTime(ascii + 'a', ascii + 'a'));
    EXPECT_FALSE(areEqualInGoodTime(ascii + 'a', ascii + 'b'));
    EXPECT_FALSE(areEqualInGoodTime(ascii + "\u00E9", ascii + "\u00E8"));
}

// ---- Ownership ----

TEST(TextOwnership, LeavesATextEmptyThatWasMovedFrom) {
    Text constructedFrom = std::string("\u00E9 owned");
    const Text constructed = std::move(constructedFrom);
    EXPECT_EQ(constructed.str(), "\u00E9 owned");
    EXPECT_EQ(constructedFrom.str(), "");  // NOLINT(bugprone-use-after-move): a promise of Text
    EXPECT_TRUE(constructedFrom.isASCII());

    Text assignedFrom = std::string("owned too");
    Text assigned = std::string("dropped");
    assigned = std::move(assignedFrom);
    EXPECT_EQ(assigned.str(), "owned too");
    EXPECT_EQ(assignedFrom.str(), "");  // NOLINT(bugprone-use-after-move)

    assignedFrom = "new again";
    EXPECT_EQ(assignedFrom.str(), "new again");
}

TEST(TextOwnership, IsSharedSafelyByThreads) {
    const Text text = std::string("seen by all");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&text] {
            Text mine;
            for (int round = 0; round < 1000; ++round) {
                const Text copy = text;
                mine = copy;
            }
            EXPECT_EQ(mine.str(), "seen by all");
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(text.str(), "seen by all");
}

// ---- What a text is made from ----

TEST(TextSource, KeepsANULFromAString) {
    const Text text = std::string("a\0b", 3);
    EXPECT_EQ(text.size(), 3U);
    EXPECT_EQ(text.str(), std::string("a\0b", 3));
    EXPECT_EQ(static_cast<std::string_view>(text), std::string_view("a\0b", 3));
    EXPECT_EQ(text.c_str()[3], '\0');
}

TEST(TextSource, MayBeAnEmptyView) {
    const Text text = std::string_view();
    EXPECT_TRUE(text.empty());
    EXPECT_STREQ(text.c_str(), "");
}

TEST(TextSource, MayBePartOfALongerText) {
    const Text text = std::string_view("whole").substr(1, 3);
    EXPECT_STREQ(text.c_str(), "hol");
}

TEST(TextSource, KeepsBytesThatAreNotUTF8) {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
    EXPECT_EQ(Text(bytes).str(), bytes);
}

TEST(TextSource, StopsTheProcessWhenItIsANullPointer) {
    const char* constant = nullptr;
    char* changeable = nullptr;
    EXPECT_SILENT_STOP(static_cast<void>(Text(constant)));
    EXPECT_SILENT_STOP(static_cast<void>(Text(changeable)));
}

// ---- What a text tells ----

TEST(TextProperties, SayWhetherAllOfItIsASCII) {
    EXPECT_TRUE(Text().isASCII());
    EXPECT_TRUE(Text("abc \x7F").isASCII());
    EXPECT_TRUE(Text(std::string("a\0b", 3)).isASCII());
    EXPECT_FALSE(Text("\u0080").isASCII());
    EXPECT_FALSE(Text(std::string("caf\u00E9")).isASCII());
    EXPECT_FALSE(Text("\xFF").isASCII());
}

TEST(TextProperties, CountBytes) {
    EXPECT_EQ(Text().size(), 0U);
    EXPECT_EQ(Text("e\u0301").size(), 3U);
    EXPECT_EQ(Text(std::string("\U0001F600")).size(), 4U);
    EXPECT_TRUE(Text("").empty());
    EXPECT_FALSE(Text(" ").empty());
}

TEST(TextStream, WritesTheBytes) {
    std::ostringstream stream;
    stream << Text("caf\u00E9 ") << Text(std::string("a\0b\xFF", 4)) << Text();
    EXPECT_EQ(stream.str(), std::string("caf\u00E9 a\0b\xFF", 10));
}

TEST(TextStream, PadsAsForEveryOtherString) {
    std::ostringstream stream;
    stream << std::setw(4) << std::left << Text("ab") << '|';
    EXPECT_EQ(stream.str(), "ab  |");
}

// ---- Texts that share a block ----

TEST(TextBlock, CopiesEachStringByteForByte) {
    const char* const strings[] = {"tool", "", "caf\u00E9", "a\xFF",
                                   "a text that is a good deal longer"};
    std::string gone = "gone";
    const char* const oneGone[] = {gone.c_str()};
    const Internal::TextBlock block(strings);
    const Internal::TextBlock copied(oneGone);
    gone = "over";
    ASSERT_EQ(block.texts().size(), std::size(strings));
    for (std::size_t i = 0; i < std::size(strings); ++i) {
        EXPECT_STREQ(block.texts()[i].c_str(), strings[i]);
        EXPECT_EQ(block.texts()[i], Text(std::string(strings[i])));
        EXPECT_EQ(block.texts()[i].isASCII(), Text(std::string(strings[i])).isASCII());
    }
    EXPECT_STREQ(copied.texts()[0].c_str(), "gone");
}

TEST(TextBlock, MayHaveAnyNumberOfTexts) {
    const std::vector<const char*> strings(1000, "tool");
    const Internal::TextBlock block(strings);
    ASSERT_EQ(block.texts().size(), strings.size());
    for (const Text& text : block.texts()) EXPECT_EQ(text, "tool");
}

TEST(TextBlock, MayBeEmpty) { EXPECT_TRUE(Internal::TextBlock().texts().empty()); }

TEST(TextBlock, IsOutlivedByCopiesOfItsTexts) {
    const char* const strings[] = {"first", "second"};
    Text kept;
    {
        const Internal::TextBlock block(strings);
        kept = block.texts()[1];
    }
    EXPECT_STREQ(kept.c_str(), "second");
    const Text copy = kept;
    kept = Text();
    EXPECT_EQ(copy, "second");
}

// ---- Fingerprints ----

unsigned fingerprintOf(const Text& text) { return Internal::TextDigest::of(text).fingerprint(); }

TEST(TextFingerprint, IsTheSameHoweverATextWasMade) {
    static constexpr Text literal = "--name";
    const char* const strings[] = {"--name"};
    EXPECT_EQ(fingerprintOf(Text(std::string("--name"))), fingerprintOf(literal));
    EXPECT_EQ(fingerprintOf(Internal::TextBlock(strings).texts()[0]), fingerprintOf(literal));
    EXPECT_EQ(fingerprintOf(Text(std::string())), fingerprintOf(Text()));
    EXPECT_EQ(fingerprintOf(Text("")), fingerprintOf(Text()));
    Text moved = Text(std::string("--name"));
    static_cast<void>(Text(std::move(moved)));
    EXPECT_EQ(moved, "");
    EXPECT_EQ(fingerprintOf(moved), fingerprintOf(Text()));
}

TEST(TextFingerprint, TellsMostTextsApartThatDifferInOneByte) {
    std::unordered_set<unsigned> fingerprints;
    for (int i = 0; i < 1000; ++i) {
        char text[16];
        std::snprintf(text, sizeof text, "item%04d", i);
        fingerprints.insert(fingerprintOf(Text(text)));
    }
    EXPECT_GT(fingerprints.size(), 800U);
}
