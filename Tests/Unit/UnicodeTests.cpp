#include "Optrella/Text/Unicode.hpp"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "Optrella/Text.hpp"
#include "Support/Characters.hpp"
#include "Support/UTF8.hpp"

using namespace Optrella::Internal;
using Tests::brokenSequences;
using Tests::countCharacters;
using Tests::endOfUnicode;
using Tests::escaped;
using Tests::isSurrogate;
using Tests::utf8;

namespace {

std::string withoutLast(std::size_t count, std::string bytes) {
    bytes.resize(bytes.size() - sizeOfLastCharacters(bytes, count));
    return bytes;
}

}  // namespace

// ---- What bytes are ----

TEST(ASCII, IsLostByOneHighByteAtAnyPosition) {
    for (std::size_t size = 0; size <= 20; ++size) {
        std::string bytes(size, 'x');
        EXPECT_TRUE(isASCII(bytes)) << size;
        for (std::size_t position = 0; position < size; ++position) {
            bytes[position] = '\x80';
            EXPECT_FALSE(isASCII(bytes)) << position << " of " << size;
            bytes[position] = 'x';
        }
    }
}

TEST(ASCII, HoldsEveryByteBelow0x80) {
    for (int byte = 0; byte < 256; ++byte) {
        EXPECT_EQ(isASCII(std::string(1, static_cast<char>(byte))), byte < 0x80) << byte;
    }
}

TEST(UTF8, IsWhatEncodesEachCodePoint) {
    for (std::uint32_t c = 0; c < endOfUnicode; ++c) {
        if (isSurrogate(c)) continue;
        ASSERT_TRUE(isUTF8(utf8(c))) << std::hex << c;
    }
}

TEST(UTF8, IsNoBrokenSequenceWhereverItStands) {
    for (const std::string_view broken : brokenSequences) {
        const std::string bytes(broken);
        EXPECT_FALSE(isUTF8(bytes)) << escaped(broken);
        EXPECT_FALSE(isUTF8("a" + bytes)) << escaped(broken);
        EXPECT_FALSE(isUTF8(bytes + "a")) << escaped(broken);
        EXPECT_FALSE(isUTF8("\u00E9" + bytes + "\U0001F600")) << escaped(broken);
    }
}

// ---- Characters ----

TEST(Characters, AreAllTheBytesOfABrokenSequence) {
    for (const std::string_view broken : brokenSequences) {
        EXPECT_EQ(countCharacters(broken), broken.size()) << escaped(broken);
    }
    EXPECT_EQ(countCharacters("e\xFF\u0301"), 3U);
    EXPECT_EQ(countCharacters("\u0600\xFF"), 2U);  // not even a prepended character joins one
}

TEST(DroppedCharacters, AreAsManyAsAsked) {
    EXPECT_EQ(withoutLast(0, "abc"), "abc");
    EXPECT_EQ(withoutLast(1, "abc"), "ab");
    EXPECT_EQ(withoutLast(2, "a, "), "a");
    EXPECT_EQ(withoutLast(3, "abc"), "");
}

TEST(DroppedCharacters, AreAllWhenThereAreFewer) {
    EXPECT_EQ(withoutLast(4, "abc"), "");
    EXPECT_EQ(withoutLast(1, ""), "");
    EXPECT_EQ(withoutLast(static_cast<std::size_t>(-1), "\u00E9\xFF\n"), "");
}

TEST(DroppedCharacters, AreSingleBytesWhereTheyAreNotUTF8) {
    EXPECT_EQ(withoutLast(1, "a\xFF"), "a");
    EXPECT_EQ(withoutLast(1, "\xE2\x82"), "\xE2");
    EXPECT_EQ(withoutLast(2, "a\xF0\x9F\x98"), "a\xF0");
    EXPECT_EQ(withoutLast(1, "\xFF\u0301"), "\xFF");
    EXPECT_EQ(withoutLast(1, "\xC3|"), "\xC3");
}

TEST(DroppedCharacters, KeepTheBytesBeforeThem) {
    EXPECT_EQ(withoutLast(1, std::string("\0\xFF\n\u00E9|", 6)), std::string("\0\xFF\n\u00E9", 5));
}

// ---- Laws ----

namespace {

// Texts made of everything that makes characters long, short or broken.
rc::Gen<std::string> anyBytes() {
    using namespace std::string_literals;
    static const std::vector parts = {
        "a"s,          "|"s,      ", "s,     "\r"s,       "\n"s,         "\r\n"s,
        "\0"s,         "\x1B"s,   "\u0301"s, "\u0323"s,   "\u00E9"s,     "\u0600"s,
        "\u200D"s,     "\u0903"s, "\u0915"s, "\u094D"s,   "\u1100"s,     "\u1161"s,
        "\u11A8"s,     "\uAC00"s, "\uFE0F"s, "\u2028"s,   "\U0001F468"s, "\U0001F3FD"s,
        "\U0001F1E9"s, "\xFF"s,   "\xC3"s,   "\xF0\x9F"s, "\x80"s};
    return rc::gen::map(rc::gen::container<std::vector<std::string>>(rc::gen::elementOf(parts)),
                        [](const std::vector<std::string>& some) {
                            std::string bytes;
                            for (const std::string& each : some) bytes += each;
                            return bytes;
                        });
}

}  // namespace

RC_GTEST_PROP(DroppedCharacters, AreOneByteAtLeastAndLeaveTheBeginning, ()) {
    const std::string text = *rc::gen::nonEmpty(anyBytes());
    const std::string left = withoutLast(1, text);
    RC_ASSERT(text.starts_with(left));
    RC_ASSERT(left.size() < text.size());
}

RC_GTEST_PROP(DroppedCharacters, AreTheSameAfterAnyOtherLine, ()) {
    const std::string text = *rc::gen::nonEmpty(anyBytes());
    const std::string line = *anyBytes() + "\n";
    RC_ASSERT(withoutLast(1, line + text) == line + withoutLast(1, text));
}

RC_GTEST_PROP(DroppedCharacters, AreOneCharacterThemselves, ()) {
    const std::string text = *rc::gen::nonEmpty(anyBytes());
    RC_ASSERT(countCharacters(text.substr(withoutLast(1, text).size())) == 1U);
}

RC_GTEST_PROP(DroppedCharacters, AreTheSameAtOnceAndOneByOne, ()) {
    const std::string text = *anyBytes();
    const auto count = *rc::gen::inRange<std::size_t>(0, 6);
    std::string oneByOne = text;
    for (std::size_t i = 0; i < count; ++i) oneByOne = withoutLast(1, oneByOne);
    RC_ASSERT(withoutLast(count, text) == oneByOne);
}

RC_GTEST_PROP(Escapes, LeaveUTF8WithoutControlCharacters, ()) {
    const std::string shown = escaped(*anyBytes());
    RC_ASSERT(isUTF8(shown));
    RC_ASSERT(std::none_of(shown.begin(), shown.end(), [](char c) { return c >= 0 && c < 0x20; }));
}

RC_GTEST_PROP(Escapes, AreThoseOfThePartsWithALetterBetween, ()) {
    const std::string first = *anyBytes();
    const std::string second = *anyBytes();
    RC_ASSERT(escaped(first + "x" + second) == escaped(first) + "x" + escaped(second));
}

namespace {

struct Twins {
    std::string oneWay;
    std::string otherWay;
};

// One text, written in two ways that differ in some of its parts.
rc::Gen<Twins> anyTwins() {
    static const std::vector<Twins> parts = {{"a", "a"},
                                             {"\u0301", "\u0301"},
                                             {"\u0323", "\u0323"},
                                             {"\u1161", "\u1161"},
                                             {"\u11A8", "\u11A8"},
                                             {"K", "\u212A"},
                                             {"\u037E", ";"},
                                             {"\u1FEF", "`"},
                                             {"\u00E9", "e\u0301"},
                                             {"\u212B", "A\u030A"},
                                             {"\uAC01", "\u1100\u1161\u11A8"},
                                             {"\u0323\u0307", "\u0307\u0323"},
                                             {"\u0344", "\u0308\u0301"}};
    return rc::gen::map(rc::gen::container<std::vector<Twins>>(rc::gen::elementOf(parts)),
                        [](const std::vector<Twins>& some) {
                            Twins text;
                            for (const Twins& each : some) {
                                text.oneWay += each.oneWay;
                                text.otherWay += each.otherWay;
                            }
                            return text;
                        });
}

void showValue(const Twins& twins, std::ostream& stream) {
    stream << escaped(twins.oneWay) << " and " << escaped(twins.otherWay);
}

}  // namespace

TEST(CanonicalComparer, ComparesEachTextThoughOneBeginsAnother) {
    const std::string_view text = "e\u0301\u0323";
    const std::string_view beginning = text.substr(0, 3);
    CanonicalComparer comparer;
    EXPECT_TRUE(comparer.areEqual(text, "\u1EB9\u0301"));
    EXPECT_FALSE(comparer.areEqual(beginning, "\u1EB9\u0301"));
    EXPECT_TRUE(comparer.areEqual(beginning, "\u00E9"));
}

TEST(CanonicalEquality, HoldsForThreeCharactersAloneWithASCII) {
    std::unordered_set<Optrella::Text> ascii;
    for (char32_t c = 0; c < 0x80; ++c) ascii.insert(utf8(c));
    for (char32_t c = 0x80; c < endOfUnicode; ++c) {
        if (isSurrogate(c)) continue;
        EXPECT_EQ(mayBeEquivalentToASCII(utf8(c)), ascii.contains(utf8(c))) << std::uint32_t{c};
    }
    EXPECT_TRUE(mayBeEquivalentToASCII("\u00E9\u212A-"));
    EXPECT_TRUE(mayBeEquivalentToASCII("-k"));
    EXPECT_FALSE(mayBeEquivalentToASCII("-\u00E9"));
}

TEST(CanonicalEquality, OfTextsThatDifferInTheirMarksLooksAtAllOfThem) {
    const std::string marks = "\u0301\u0323\u0301\u0327";
    EXPECT_TRUE(isCanonicallyEqual("x" + marks, "x\u0327\u0323\u0301\u0301"));
    EXPECT_FALSE(isCanonicallyEqual("x" + marks, "x\u0327\u0323\u0301"));
    EXPECT_FALSE(isCanonicallyEqual("x" + marks + "y", "x\u0327\u0323\u0301\u0301z"));
    EXPECT_TRUE(isCanonicallyEqual(marks, "\u0327\u0323\u0301\u0301"));
}

// A character that is decomposed into marks, after a mark of a class that comes later.
TEST(CanonicalEquality, OrdersTheMarksOfEveryDecomposition) {
    for (std::uint32_t c = 0x80; c < endOfUnicode; ++c) {
        if (isSurrogate(c)) continue;
        CanonicalReader reader;
        const std::string character = utf8(c);
        reader = character;
        std::string decomposed;
        for (auto next = reader.next(); next != CanonicalReader::end; next = reader.next()) {
            decomposed += utf8(static_cast<char32_t>(next));
        }
        for (const std::string_view mark : {"\u0327", "\u0301", "\u0345"}) {
            const std::string before = "x" + std::string(mark);
            EXPECT_TRUE(isCanonicallyEqual(before + character, before + decomposed)) << c;
            EXPECT_TRUE(isCanonicallyEqual(before + decomposed, before + character)) << c;
        }
    }
}

TEST(CanonicalEquality, FailsWhereTheCommonBeginningIsNotUTF8) {
    EXPECT_FALSE(isCanonicallyEqual("\xFF-\u00E9", "\xFF-e\u0301"));
    EXPECT_FALSE(isCanonicallyEqual("-\u00E9-\xFF", "-e\u0301-\xFF"));
    EXPECT_TRUE(isCanonicallyEqual("-\u00E9-\u00E8", "-e\u0301-\u00E8"));
}

RC_GTEST_PROP(CanonicalEquality, HoldsBothWaysAndForTheHash, ()) {
    const Twins text = *anyTwins();
    RC_ASSERT(isCanonicallyEqual(text.oneWay, text.otherWay));
    RC_ASSERT(isCanonicallyEqual(text.otherWay, text.oneWay));
    RC_ASSERT(canonicalHash(text.oneWay) == canonicalHash(text.otherWay));
}

RC_GTEST_PROP(CanonicalEquality, IsThatOfTheBytesWhereOneIsNotUTF8, ()) {
    const Twins text = *anyTwins();
    RC_ASSERT(isCanonicallyEqual(text.oneWay + '\xFF', text.otherWay + '\xFF') ==
              (text.oneWay == text.otherWay));
    RC_ASSERT(!isCanonicallyEqual(text.oneWay + '\xFF', text.otherWay));
}

RC_GTEST_PROP(CanonicalEquality, FailsWhereOneHasMore, ()) {
    const Twins text = *anyTwins();
    const std::string more = *rc::gen::nonEmpty(anyBytes());
    RC_ASSERT(!isCanonicallyEqual(text.oneWay + more, text.otherWay));
    RC_ASSERT(!isCanonicallyEqual(text.oneWay, text.otherWay + more));
}
