// The Unicode Consortium's own test data against what the library says of texts.
//
// Lines with characters that the installed Unicode library does not know yet are counted and named
// as skipped.

#include <gtest/gtest.h>
#include <utf8proc.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Optrella/Text.hpp"
#include "Optrella/Text/Unicode.hpp"
#include "Support/Characters.hpp"
#include "Support/UTF8.hpp"

#ifndef OPTRELLA_UNICODE_DATA
#define OPTRELLA_UNICODE_DATA "/usr/share/unicode"
#endif

namespace {

using namespace Optrella;
using Tests::utf8;

using CodePoints = std::vector<char32_t>;

constexpr char32_t endOfUnicode = 0x110000;

// ---- The data files ----

// The content of a data file, which may be packed. Throws, and so fails the test, when there is
// none.
std::string content(const std::string& file) {
    const std::string path = OPTRELLA_UNICODE_DATA "/" + file;
    const std::string command =
        std::filesystem::exists(path) ? "cat '" + path + "'" : "bzip2 -dc '" + path + ".bz2'";
    std::FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) throw std::runtime_error("cannot run " + command);
    std::string text;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) text += static_cast<char>(c);
    if (::pclose(pipe) != 0 || text.empty()) {
        throw std::runtime_error("cannot read " + path + " (package unicode-data)");
    }
    return text;
}

// The lines without their comments, and without the lines that hold only a comment.
std::vector<std::string> dataLines(const std::string& file) {
    std::vector<std::string> lines;
    std::istringstream stream(content(file));
    for (std::string line; std::getline(stream, line);) {
        line.resize(std::min(line.find('#'), line.size()));
        if (line.find_first_not_of(" \t") != std::string::npos) lines.push_back(line);
    }
    return lines;
}

std::vector<std::string> split(const std::string& line, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(line);
    for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
    return parts;
}

// "0044 0307": the code points.
CodePoints codePoints(const std::string& field) {
    CodePoints all;
    std::istringstream stream(field);
    for (std::string number; stream >> number;) {
        all.push_back(static_cast<char32_t>(std::stoul(number, nullptr, 16)));
    }
    return all;
}

// "0044..0046" or "0044": the first one and the one after the last.
std::pair<char32_t, char32_t> range(const std::string& field) {
    const auto first = static_cast<char32_t>(std::stoul(field, nullptr, 16));
    const std::size_t dots = field.find("..");
    if (dots == std::string::npos) return {first, first + 1};
    return {first, static_cast<char32_t>(std::stoul(field.substr(dots + 2), nullptr, 16)) + 1};
}

std::string utf8(const CodePoints& text) {
    std::string bytes;
    for (const char32_t c : text) bytes += utf8(c);
    return bytes;
}

// ---- Characters that the installed Unicode library is too old for ----

using Version = std::vector<int>;

Version version(const std::string& text) {
    Version numbers;
    for (const std::string& number : split(text, '.')) numbers.push_back(std::stoi(number));
    numbers.resize(3);
    return numbers;
}

enum class Age : std::uint8_t { unassigned, known, tooNew };

// For each code point, what the installed Unicode library's version knows of it.
std::vector<Age> ages() {
    const Version installed = version(utf8proc_unicode_version());
    std::vector<Age> all(endOfUnicode, Age::unassigned);
    for (const std::string& line : dataLines("DerivedAge.txt")) {
        const std::vector<std::string> fields = split(line, ';');
        const auto [first, end] = range(fields.at(0));
        std::fill(all.begin() + first, all.begin() + end,
                  version(fields.at(1)) <= installed ? Age::known : Age::tooNew);
    }
    return all;
}

// Tells which texts the installed Unicode library cannot know, and prints how many there were.
class TooNewTexts {
public:
    bool has(const CodePoints& text) {
        const bool isTooNew = std::any_of(text.begin(), text.end(), [&](char32_t c) {
            return ages_[std::size_t{c}] == Age::tooNew;
        });
        if (isTooNew) ++count_;
        return isTooNew;
    }
    TooNewTexts() = default;
    TooNewTexts(const TooNewTexts&) = delete;
    TooNewTexts& operator=(const TooNewTexts&) = delete;
    ~TooNewTexts() {
        std::cout << "[  SKIPPED ] lines with characters newer than Unicode "
                  << utf8proc_unicode_version() << ": " << count_ << "\n";
    }

private:
    std::vector<Age> ages_ = ages();
    std::size_t count_ = 0;
};

// ---- Normalisation ----

// A line of the normalisation data: five ways to write a text. The first three are canonically
// equivalent, and so are the last two; all five are if the third and the fifth, which are
// decomposed, are the same.
struct Normalisation {
    std::string line;
    CodePoints firstText;
    std::vector<Text> texts;

    [[nodiscard]] static bool isCanonical(std::size_t column) { return column < 3; }
    [[nodiscard]] bool areEqual(std::size_t a, std::size_t b) const {
        return isCanonical(a) == isCanonical(b) || texts[2].str() == texts[4].str();
    }
};

std::vector<Normalisation> normalisations() {
    std::vector<Normalisation> all;
    TooNewTexts tooNew;
    for (const std::string& line : dataLines("NormalizationTest.txt")) {
        if (line.starts_with('@')) continue;  // the title of a part
        const std::vector<std::string> columns = split(line, ';');
        const CodePoints text = codePoints(columns.at(0));
        if (tooNew.has(text)) continue;
        Normalisation normalisation{line, text, {}};
        for (std::size_t i = 0; i < 5; ++i) {
            normalisation.texts.emplace_back(utf8(codePoints(columns.at(i))));
        }
        all.push_back(std::move(normalisation));
    }
    EXPECT_FALSE(all.empty());
    return all;
}

// ---- Characters ----

// A line of the data on characters: "÷ 0020 × 0308 ÷ 0020 ÷", a ÷ wherever one ends.
std::vector<CodePoints> characters(const std::string& line) {
    std::vector<CodePoints> all;
    std::istringstream stream(line);
    for (std::string word; stream >> word;) {
        if (word == "÷") {
            all.emplace_back();
        } else if (word != "×") {
            all.back().push_back(static_cast<char32_t>(std::stoul(word, nullptr, 16)));
        }
    }
    all.pop_back();  // after the last ÷
    return all;
}

CodePoints joined(const std::vector<CodePoints>& parts) {
    CodePoints all;
    for (const CodePoints& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

// A text and how many characters it has.
using Counted = std::pair<std::string, std::size_t>;

// What is left each time when one character after another is cut off the end.
std::vector<Counted> cutDown(std::string text) {
    std::vector<Counted> left;
    while (!text.empty()) {
        left.emplace_back(text, Tests::countCharacters(text));
        text.resize(text.size() - Internal::sizeOfLastCharacters(text, 1));
    }
    return left;
}

std::vector<Counted> cutDown(std::vector<CodePoints> listed) {
    std::vector<Counted> left;
    for (; !listed.empty(); listed.pop_back()) {
        left.emplace_back(utf8(joined(listed)), listed.size());
    }
    return left;
}

}  // namespace

TEST(UnicodeNormalisation, TextsAreEqualWhereTheConsortiumSaysSo) {
    for (const Normalisation& normalisation : normalisations()) {
        for (std::size_t a = 0; a < 5; ++a) {
            for (std::size_t b = 0; b < 5; ++b) {
                EXPECT_EQ(normalisation.texts[a] == normalisation.texts[b],
                          normalisation.areEqual(a, b))
                    << normalisation.line << " columns " << a + 1 << " and " << b + 1;
            }
        }
    }
}

TEST(UnicodeNormalisation, EqualTextsHashAlike) {
    const std::hash<Text> hash;
    for (const Normalisation& normalisation : normalisations()) {
        const std::vector<Text>& texts = normalisation.texts;
        EXPECT_EQ(hash(texts[0]), hash(texts[1])) << normalisation.line;
        EXPECT_EQ(hash(texts[0]), hash(texts[2])) << normalisation.line;
        EXPECT_EQ(hash(texts[3]), hash(texts[4])) << normalisation.line;
    }
}

TEST(UnicodeNormalisation, CharactersThatTheConsortiumDoesNotListEqualNothingElse) {
    std::vector<bool> isListed(endOfUnicode, false);
    std::unordered_set<std::string> decomposed;
    std::unordered_set<Text> all;
    for (const Normalisation& normalisation : normalisations()) {
        if (normalisation.firstText.size() != 1) continue;
        isListed[std::size_t{normalisation.firstText[0]}] = true;
        decomposed.insert(normalisation.texts[2].str());
        all.insert(normalisation.texts[2]);
    }
    EXPECT_EQ(all.size(), decomposed.size());
    const std::vector<Age> age = ages();
    for (char32_t c = 0; c < endOfUnicode; ++c) {
        if (isListed[std::size_t{c}] || age[std::size_t{c}] != Age::known) continue;
        const bool isNew = all.insert(utf8(c)).second;
        EXPECT_EQ(isNew, !decomposed.contains(utf8(c))) << std::hex << std::uint32_t{c};
    }
}

TEST(UnicodeCharacters, EndWhereTheConsortiumSaysSo) {
    TooNewTexts tooNew;
    for (const std::string& line : dataLines("auxiliary/GraphemeBreakTest.txt")) {
        const std::vector<CodePoints> listed = characters(line);
        if (tooNew.has(joined(listed))) continue;
        EXPECT_EQ(cutDown(utf8(joined(listed))), cutDown(listed)) << line;
    }
}

TEST(UnicodeCharacters, AreOneForEachEmojiThatTheConsortiumLists) {
    TooNewTexts tooNew;
    for (const std::string& line : dataLines("emoji/emoji-test.txt")) {
        const CodePoints emoji = codePoints(line.substr(0, line.find(';')));
        if (tooNew.has(emoji)) continue;
        EXPECT_EQ(Tests::countCharacters(utf8(emoji)), 1U) << line;
    }
}
