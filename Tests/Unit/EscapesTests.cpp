#include "Optrella/Text/Escapes.hpp"

#include <gtest/gtest.h>
#include <utf8proc.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "Support/Characters.hpp"
#include "Support/UTF8.hpp"

using Optrella::Internal::appendEscaped;
using Optrella::Internal::appendPrintable;
using Tests::brokenSequences;
using Tests::endOfUnicode;
using Tests::escaped;
using Tests::isSurrogate;
using Tests::utf8;

TEST(Escapes, AreShortForTheUsualOnes) {
    EXPECT_EQ(escaped("\t"), R"(\t)");
    EXPECT_EQ(escaped("\n"), R"(\n)");
    EXPECT_EQ(escaped("\r"), R"(\r)");
    EXPECT_EQ(escaped(std::string_view("\0", 1)), R"(\0)");
    EXPECT_EQ(escaped("\""), R"(\")");
    EXPECT_EQ(escaped("'"), R"(\')");
    EXPECT_EQ(escaped("\\"), R"(\\)");
}

TEST(Escapes, NameOtherControlCharactersByTheirNumber) {
    EXPECT_EQ(escaped("\x01"), R"(\u{01})");
    EXPECT_EQ(escaped("\x08"), R"(\u{08})");
    EXPECT_EQ(escaped("\x1B[31m"), R"(\u{1B}[31m)");
    EXPECT_EQ(escaped("\x7F"), R"(\u{7F})");
    EXPECT_EQ(escaped("\u0085"), R"(\u{85})");
}

TEST(Escapes, NameWhatShowsNothingAndNoncharactersByTheirNumber) {
    EXPECT_EQ(escaped("list\u200B"), R"(list\u{200B})");
    EXPECT_EQ(escaped("\u034Fa\u2028b"), R"(\u{34F}a\u{2028}b)");
    EXPECT_EQ(escaped("\U000E0074\U0010FFFF"), R"(\u{E0074}\u{10FFFF})");
}

TEST(Escapes, LeaveEveryOtherCharacterAsItIs) {
    for (std::uint32_t c = 0; c < endOfUnicode; ++c) {
        const bool isControl = c < 0x20 || (c >= 0x7F && c <= 0x9F);
        const bool isQuoting = c == '"' || c == '\'' || c == '\\';
        const bool isSeparator = c == 0x2028 || c == 0x2029;
        const bool isNoncharacter = (c >= 0xFDD0 && c <= 0xFDEF) || c % 0x10000 >= 0xFFFE;
        // The Unicode library knows those that are no longer reserved.
        const bool isIgnorable =
            utf8proc_get_property(static_cast<utf8proc_int32_t>(c))->ignorable || c == 0x2065 ||
            (c >= 0xFFF0 && c <= 0xFFF8) || (c >= 0xE0000 && c <= 0xE0FFF);
        if (isSurrogate(c) || isQuoting) continue;
        ASSERT_EQ(escaped(utf8(c)) != utf8(c),
                  isControl || isSeparator || isNoncharacter || isIgnorable)
            << std::hex << c;
    }
}

TEST(Escapes, LeaveJoinersAndSelectorsWithinEmoji) {
    for (const std::string_view emoji : {
             "\u2764\uFE0F",                                // a red heart
             "\U0001F468\u200D\U0001F469\u200D\U0001F467",  // a family
             "\U0001F3F3\uFE0F\u200D\U0001F308",            // a flag of colours
             "\U0001F469\U0001F3FD\u200D\U0001F4BB",        // at the computer
             "\u2764\uFE0F\u200D\U0001F525",                // a burning heart
             "\U0001F575\uFE0F\u200D\u2642\uFE0F",          // both ends dressed
             "\U0001F44D\U0001F3FD",
             "\U0001F1E9\U0001F1EA",
             "\u00A9\uFE0F",
         }) {
        EXPECT_EQ(escaped(emoji), emoji);
    }
}

TEST(Escapes, NameJoinersAndSelectorsWithoutAnEffect) {
    EXPECT_EQ(escaped("\U0001F468\u200D"), "\U0001F468\\u{200D}");
    EXPECT_EQ(escaped("\U0001F468\u200Dx"), "\U0001F468\\u{200D}x");
    EXPECT_EQ(escaped("x\u200D\U0001F468"), "x\\u{200D}\U0001F468");
    EXPECT_EQ(escaped("\U0001F468x\u200D\U0001F468"), "\U0001F468x\\u{200D}\U0001F468");
    EXPECT_EQ(escaped("\U0001F468\u200D\u200D\U0001F468"),
              "\U0001F468\\u{200D}\\u{200D}\U0001F468");
    EXPECT_EQ(escaped("\u2764\uFE0F\uFE0F"), "\u2764\uFE0F\\u{FE0F}");
    EXPECT_EQ(escaped("\u2764\uFE0E"), "\u2764\\u{FE0E}");
    EXPECT_EQ(escaped("\U0001F44D\U0001F3FD\uFE0F"), "\U0001F44D\U0001F3FD\\u{FE0F}");
    EXPECT_EQ(escaped("\U0001F3FD\u200D\U0001F468"), "\U0001F3FD\\u{200D}\U0001F468");
    EXPECT_EQ(escaped("1\uFE0F\u20E3"), "1\\u{FE0F}\u20E3");
    EXPECT_EQ(escaped("\U0001F468\u200D\xF0\x9F"), "\U0001F468\\u{200D}\\x{F0}\\x{9F}");
    EXPECT_EQ(escaped("\U0001F3F4\U000E0067\U000E007F"), "\U0001F3F4\\u{E0067}\\u{E007F}");
}

TEST(Escapes, NameEachByteThatIsNotPartOfUTF8) {
    EXPECT_EQ(escaped("a\xC3"), R"(a\x{C3})");
    EXPECT_EQ(escaped("\xC3z"), R"(\x{C3}z)");
    EXPECT_EQ(escaped("\xE2\x82\u20AC"), "\\x{E2}\\x{82}\u20AC");
    EXPECT_EQ(escaped("\xF0\x9F\x98\""), R"(\x{F0}\x{9F}\x{98}\")");
}

TEST(Escapes, TellEveryBrokenSequenceByteByByte) {
    for (const std::string_view broken : brokenSequences) {
        std::string expected;
        for (const char byte : broken) {
            constexpr char digits[] = "0123456789ABCDEF";
            const auto value = static_cast<unsigned char>(byte);
            expected += std::string("\\x{") + digits[value / 16] + digits[value % 16] + '}';
        }
        EXPECT_EQ(escaped(broken), expected);
    }
}

TEST(Escapes, AreAppended) {
    std::string text = "\n before ";
    appendEscaped(text, "\n");
    EXPECT_EQ(text, "\n before \\n");
}

TEST(Escapes, OfProseLeaveQuotationMarksAndWhatShapesLetters) {
    const auto printable = [](std::string_view text) {
        std::string shown;
        appendPrintable(shown, text);
        return shown;
    };
    EXPECT_EQ(printable(R"(It's "C:\\")"), R"(It's "C:\\")");
    EXPECT_EQ(printable("\u0915\u094D\u200D\u0937 \u0645\u200C \u2764\uFE0E"),
              "\u0915\u094D\u200D\u0937 \u0645\u200C \u2764\uFE0E");
    EXPECT_EQ(printable("\x1B[31m\t\n\u0085\u2028\xFF"), R"(\u{1B}[31m\t\n\u{85}\u{2028}\x{FF})");
    EXPECT_EQ(printable("\u200B\u202E\u202C\u00AD\uFFFF"),
              R"(\u{200B}\u{202E}\u{202C}\u{AD}\u{FFFF})");
}
