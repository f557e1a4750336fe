#include "Optrella/Text.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <functional>
#include <iomanip>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Optrella/Text/TextBlock.hpp"
#include "Support/Death.hpp"

namespace {

using namespace Optrella;

std::size_t hashOf(const Text& text) { return std::hash<Text>()(text); }

// Two ways to write each text.
const std::pair<Text, Text> canonicalTwins[] = {
    {"\u00E9", "e\u0301"},
    {"caf\u00E9 cr\u00E8me", "cafe\u0301 cre\u0300me"},
    {"\u00C5", "A\u030A"},
    {"\u00C5", "\u212B"},
    {"K", "\u212A"},
    {"OK then", "O\u212A then"},
    {";", "\u037E"},
    {"`", "\u1FEF"},
    {"\u00B4", "\u1FFD"},
    {"\u03A9", "\u2126"},
    {"\u2002", "\u2000"},
    {"\u1E69", "s\u0323\u0307"},
    {"\u1E69", "s\u0307\u0323"},
    {"q\u0323\u0307", "q\u0307\u0323"},
    {"a\u0327\u0323\u0301", "a\u0301\u0323\u0327"},
    {"\uAC00", "\u1100\u1161"},
    {"\uAC01", "\u1100\u1161\u11A8"},
    {"\uAC01", "\uAC00\u11A8"},
    {"\u2260", "=\u0338"},
    {"\uF900", "\u8C48"},
    {"\U0001D15E", "\U0001D157\U0001D165"},
    {"\u0344", "\u0308\u0301"},
};

// Pairs that look alike but are different texts.
const std::pair<Text, Text> differentTexts[] = {
    {"a", "A"},
    {"\u00E9", "\u00C9"},
    {"\u00E9", "e"},
    {"a b", "ab"},
    {"a", "a "},
    {"a", " a"},
    {"a b", "a\u00A0b"},
    {"", "\u200B"},
    {"a", "\uFEFFa"},
    {"a", "a\u200D"},
    {"\uFB01", "fi"},
    {"\u00DF", "ss"},
    {"\u017F", "s"},
    {"\u00BD", "1\u20442"},
    {"\uFF21", "A"},
    {"q\u0308\u0301", "q\u0301\u0308"},  // marks of one class keep their order
    {"e\u034F\u0301", "\u00E9"},
    {"\u00E9", "\u00E8"},
    {"", "a"},
    {"\r\n", "\n"},
    {"\xFF", "\xFE"},
    {"\u00E9\xFF", "e\u0301\xFF"},
};

}  // namespace

// ---- Equality and hash ----

TEST(TextEquality, HoldsForTheWaysToWriteOneText) {
    for (const auto& [a, b] : canonicalTwins) {
        EXPECT_TRUE(a == b) << a << " " << b;
        EXPECT_TRUE(b == a) << a << " " << b;
        EXPECT_FALSE(a != b) << a << " " << b;
    }
}

TEST(TextEquality, HoldsInTheMiddleOfALongerText) {
    for (const auto& [a, b] : canonicalTwins) {
        EXPECT_EQ(Text("\u00E4 <" + a.str() + "> z"), Text("a\u0308 <" + b.str() + "> z"));
        EXPECT_NE(Text("\u00E4 <" + a.str() + "> z"), Text("a\u0308 <" + b.str() + "> Z"));
    }
}

TEST(TextEquality, CountsCaseSpacesAndEveryOtherDifference) {
    for (const auto& [a, b] : differentTexts) {
        EXPECT_FALSE(a == b) << a << " " << b;
        EXPECT_FALSE(b == a) << a << " " << b;
        EXPECT_TRUE(a != b) << a << " " << b;
    }
}

TEST(TextEquality, FailsForATextAndItsBeginning) {
    const std::string whole = "tag \u00E9\u0323\U0001F600 e\u0301";
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_NE(Text(whole), Text(whole.substr(0, size))) << size;
        EXPECT_NE(Text(whole.substr(0, size)), Text(whole)) << size;
    }
}

TEST(TextEquality, KeepsTheOrderOfMarksOfOneClassInALongRun) {
    std::string above, below, mixed;
    for (int i = 0; i < 100; ++i) {
        const std::string mark = i % 3 == 0 ? "\u0301" : "\u0308";
        above += mark;
        below += "\u0323";
        mixed += mark + "\u0323";
    }
    EXPECT_EQ(Text("a" + mixed), Text("a" + below + above));
    EXPECT_NE(Text("a" + mixed + "\u0301\u0308"), Text("a" + mixed + "\u0308\u0301"));
}

TEST(TextEquality, SeesTheByteAfterANUL) {
    const Text text = std::string("a\0b", 3);
    EXPECT_EQ(text, Text(std::string("a\0b", 3)));
    EXPECT_NE(text, Text(std::string("a\0c", 3)));
    EXPECT_NE(text, Text("a"));
    EXPECT_NE(text, Text(std::string("a\0", 2)));
}

TEST(TextEquality, OfBytesThatAreNotUTF8IsThatOfTheBytes) {
    const Text invalid[] = {"\xFF",
                            "\x80",
                            "\x81",
                            "\xC3",
                            "\xC3\xC3",
                            "\xED\xA0\x80",
                            "\xE2\x82",
                            "a\xFF",
                            "\xFF"
                            "a"};
    for (const Text& a : invalid) {
        for (const Text& b : invalid) EXPECT_EQ(a == b, a.str() == b.str());
    }
}

TEST(TextEquality, OfABrokenSequenceAndTheWholeOneFails) {
    const Text whole = "\xC3\xA9";
    const Text broken =
        "\xC3"
        "a";
    EXPECT_NE(whole, broken);
    EXPECT_NE(broken, whole);
}

TEST(TextEquality, OfATextWithOneByteThatIsNotUTF8IgnoresCanonicalEquivalence) {
    for (const auto& [a, b] : canonicalTwins) {
        EXPECT_NE(Text(a.str() + "\xFF"), Text(b.str() + "\xFF"));
        EXPECT_NE(Text("\xFF" + a.str()), Text("\xFF" + b.str()));
        EXPECT_NE(Text(a.str() + "\xFF"), Text(b.str()));
        EXPECT_EQ(Text("\xFF" + a.str()), Text("\xFF" + a.str()));
    }
}

TEST(TextEquality, IsTheSameForWhateverATextIsMadeFrom) {
    const Text text = "e\u0301t\u00E9";
    const std::string string = "\u00E9te\u0301";
    const std::string_view view = string;
    const char* pointer = string.c_str();
    const char array[] = "\u00E9te\u0301";
    EXPECT_TRUE(text == string && string == text);
    EXPECT_TRUE(text == view && view == text);
    EXPECT_TRUE(text == pointer && pointer == text);
    EXPECT_TRUE(text == array && array == text);
    EXPECT_TRUE(text == "\u00E9te\u0301" && "\u00E9te\u0301" == text);
    EXPECT_FALSE(text == "\u00E9te" || text == std::string("\u00C9te\u0301"));
}

TEST(TextEquality, HoldsForATextAndItself) {
    for (const auto& [a, b] : canonicalTwins) {
        EXPECT_EQ(a, Text(a.str()));
        EXPECT_EQ(b, Text(b.str()));
    }
    EXPECT_EQ(Text(), Text(""));
    EXPECT_EQ(Text(), Text(std::string()));
}

TEST(TextHash, IsOneForEqualTexts) {
    for (const auto& [a, b] : canonicalTwins) EXPECT_EQ(hashOf(a), hashOf(b)) << a << " " << b;
    EXPECT_EQ(hashOf("\xFF\xC3"), hashOf(std::string("\xFF\xC3")));
}

TEST(TextHash, DiffersForTextsThatResembleEachOther) {
    for (const auto& [a, b] : differentTexts) EXPECT_NE(hashOf(a), hashOf(b)) << a << " " << b;
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

TEST(TextOwnership, ViewsALiteral) {
    static constexpr char literal[] = "literal";
    const Text text = literal;
    EXPECT_EQ(static_cast<const void*>(text.c_str()), static_cast<const void*>(literal));
    EXPECT_EQ(static_cast<const void*>(Text(text).c_str()), static_cast<const void*>(literal));
}

TEST(TextOwnership, CopiesAString) {
    std::string source = "some text that is longer than a short string";
    const Text text = source;
    EXPECT_NE(static_cast<const void*>(text.c_str()), static_cast<const void*>(source.c_str()));
    source.assign(source.size(), '#');
    EXPECT_EQ(text.str(), "some text that is longer than a short string");
}

TEST(TextOwnership, CopiesWhatAPointerPointsTo) {
    char buffer[] = "buffer";
    const char* pointer = buffer;
    const Text text = pointer;
    buffer[0] = '#';
    EXPECT_EQ(text.str(), "buffer");
}

TEST(TextOwnership, SurvivesItsSource) {
    Text text;
    {
        const std::string source = "gone \u00E9";
        text = source;
    }
    EXPECT_EQ(text.str(), "gone \u00E9");
}

TEST(TextOwnership, IsSharedByCopies) {
    const Text text = std::string("shared");
    const Text copy = text;
    Text assigned = "other";
    assigned = text;
    EXPECT_EQ(static_cast<const void*>(copy.c_str()), static_cast<const void*>(text.c_str()));
    EXPECT_EQ(static_cast<const void*>(assigned.c_str()), static_cast<const void*>(text.c_str()));
}

TEST(TextOwnership, OutlivesTheTextThatWasCopied) {
    auto text = std::make_unique<Text>(std::string("first owner"));
    const Text copy = *text;
    text.reset();
    EXPECT_EQ(copy.str(), "first owner");
}

TEST(TextOwnership, StaysThroughAnAssignmentToItself) {
    Text text = std::string("self");
    const Text& same = text;
    text = same;
    EXPECT_EQ(text.str(), "self");
    text = std::move(const_cast<Text&>(same));
    EXPECT_EQ(text.str(), "self");
}

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

TEST(TextSource, EndsAtTheFirstNULOfAPointerOrBuffer) {
    char buffer[8] = "ab\0cd";
    const char* pointer = buffer;
    EXPECT_EQ(Text(buffer).str(), "ab");
    EXPECT_EQ(Text(pointer).str(), "ab");
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

TEST(TextSource, IsNeverNullptrItself) {
    EXPECT_FALSE((std::is_constructible_v<Text, std::nullptr_t>));
    EXPECT_FALSE((std::is_convertible_v<std::nullptr_t, Text>));
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

TEST(TextProperties, OfALiteralAreKnownToTheCompiler) {
    static constexpr Text text = "caf\u00E9";
    static_assert(text.size() == 5 && !text.isASCII() && !text.empty());
    static_assert(Text().empty() && Text().isASCII());
    EXPECT_EQ(text.str(), "caf\u00E9");
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

TEST(TextBlockDeathTest, StopsForANullPointer) {
    const char* const withNull[] = {"tool", nullptr};
    EXPECT_SILENT_STOP(Internal::TextBlock(std::span<const char* const>(withNull)));
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
