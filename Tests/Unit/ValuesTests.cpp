#include "Optrella/Values.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

#include "Support/TemporaryDirectory.hpp"

namespace {

using namespace Optrella;
namespace fs = std::filesystem;

constexpr UUID example{{0x8F, 0x14, 0xE4, 0x5F, 0xCE, 0xEA, 0x46, 0x7F, 0xA0, 0xE6, 0x9D, 0x3F,
                        0x1C, 0x2B, 0x7A, 0x55}};
constexpr char exampleText[] = "8F14E45F-CEEA-467F-A0E6-9D3F1C2B7A55";

std::string urlOf(const Text& path) { return FileURL::fromPath(path).text().str(); }
std::string pathOf(const Text& path) { return FileURL::fromPath(path).path().str(); }

// An empty directory of its own that is the current one during the test.
class FileURLTest : public testing::Test {
private:
    Tests::TemporaryDirectory directory_;

protected:
    const std::string here = directory_.path();
};

}  // namespace

// ---- UUID ----

TEST(AUUID, IsNothingWhenAnyCharacterIsNoDigitOrDash) {
    for (std::size_t i = 0; i < 36; ++i) {
        for (const char wrong : {'g', 'G', '/', ':', '@', '`', ' ', '_', '\0', '\xFF'}) {
            std::string text = exampleText;
            text[i] = wrong;
            EXPECT_EQ(UUID::fromText(text), std::nullopt) << text;
        }
    }
}

TEST(AUUID, IsNothingWhenADigitAndADashChangePlaces) {
    for (std::size_t i = 0; i + 1 < 36; ++i) {
        std::string text = exampleText;
        if ((text[i] == '-') == (text[i + 1] == '-')) continue;
        std::swap(text[i], text[i + 1]);
        EXPECT_EQ(UUID::fromText(text), std::nullopt) << text;
    }
}

TEST(AUUID, KeepsEachByteThroughItsText) {
    for (std::size_t i = 0; i < 16; ++i) {
        for (unsigned value = 0; value < 256; ++value) {
            UUID uuid = example;
            uuid.bytes[i] = static_cast<std::uint8_t>(value);
            EXPECT_EQ(UUID::fromText(uuid.text()), uuid);
        }
    }
}

TEST(AUUID, IsOrderedAsItsText) {
    const UUID ordered[] = {UUID(),
                            *UUID::fromText("00000000-0000-0000-0000-0000000000FF"),
                            *UUID::fromText("00000000-0000-0000-0000-000000000100"),
                            *UUID::fromText("7FFFFFFF-0000-0000-0000-000000000000"),
                            example,
                            *UUID::fromText("FF000000-0000-0000-0000-000000000000")};
    for (const UUID& a : ordered) {
        for (const UUID& b : ordered) {
            EXPECT_EQ(a < b, a.text().str() < b.text().str());
            EXPECT_EQ(a == b, a.text().str() == b.text().str());
        }
    }
}

TEST(AUUID, HashesDifferentlyForEachByte) {
    std::unordered_set<std::size_t> hashes = {std::hash<UUID>()(example)};
    for (std::size_t i = 0; i < 16; ++i) {
        UUID uuid = example;
        ++uuid.bytes[i];
        hashes.insert(std::hash<UUID>()(uuid));
    }
    EXPECT_EQ(hashes.size(), 17U);
}

// ---- FileURL: the text ----

TEST_F(FileURLTest, EncodesAllBytesButSlashesAndPathCharacters) {
    constexpr std::string_view unreserved =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
    constexpr std::string_view subDelimiters = "!$&'()*+,;=";
    const std::string kept = "/:@" + std::string(unreserved) + std::string(subDelimiters);
    for (unsigned value = 1; value < 256; ++value) {
        const char byte = static_cast<char>(value);
        constexpr char digits[] = "0123456789ABCDEF";
        const std::string escape = {'%', digits[value / 16], digits[value % 16]};
        const std::string shown =
            kept.find(byte) != std::string::npos ? std::string(1, byte) : escape;
        EXPECT_EQ(urlOf(std::string("/missing/") + byte + "x"), "file:///missing/" + shown + "x");
        EXPECT_EQ(urlOf(std::string("missing/x") + byte), "file://" + here + "/missing/x" + shown);
    }
}

TEST_F(FileURLTest, EncodesANULAndAllAfterIt) {
    EXPECT_EQ(urlOf(std::string("/a\0b", 4)), "file:///a%00b");
    EXPECT_EQ(urlOf(std::string("a\0/..", 5)), "file://" + here + "/");
}

TEST_F(FileURLTest, TakesNoDirectoryForAPathThatHoldsANUL) {
    EXPECT_EQ(urlOf(std::string("/tmp\0x", 6)), "file:///tmp%00x");
    EXPECT_EQ(urlOf(std::string("/tmp\0", 5)), "file:///tmp%00");
}

TEST_F(FileURLTest, KeepsSegmentsThatOnlyBeginWithDots) {
    EXPECT_EQ(urlOf("..."), "file://" + here + "/...");
    EXPECT_EQ(urlOf(".a/..b/c.."), "file://" + here + "/.a/..b/c..");
}

TEST_F(FileURLTest, CountsFromTheRootWhenThatIsTheCurrentDirectory) {
    fs::current_path("/");
    EXPECT_EQ(urlOf("missing"), "file:///missing");
    EXPECT_EQ(pathOf("missing"), "/missing");
    EXPECT_EQ(urlOf(""), "file:///");
    EXPECT_EQ(pathOf(""), "/");
    EXPECT_EQ(urlOf(".."), "file:///");
    EXPECT_EQ(pathOf(".."), "/..");
}

TEST_F(FileURLTest, EncodesTheCurrentDirectoryToo) {
    fs::create_directory("a b%\u00E9");
    fs::current_path("a b%\u00E9");
    EXPECT_EQ(urlOf("c d"), "file://" + here + "/a%20b%25%C3%A9/c%20d");
    EXPECT_EQ(pathOf("c d"), here + "/a b%\u00E9/c d");
}

TEST_F(FileURLTest, CountsFromACurrentDirectoryWithALongName) {
    std::string longName = here;
    for (int i = 0; i < 5; ++i) {
        const std::string name(200, static_cast<char>('a' + i));
        fs::create_directory(name);
        fs::current_path(name);
        longName += "/" + name;
    }
    EXPECT_EQ(urlOf("x"), "file://" + longName + "/x");
    EXPECT_EQ(pathOf("x"), longName + "/x");
}

TEST_F(FileURLTest, EndsInASlashForADirectoryThatExists) {
    EXPECT_EQ(urlOf("directory"), "file://" + here + "/directory");
    fs::create_directory("directory");
    EXPECT_EQ(urlOf("directory"), "file://" + here + "/directory/");
    EXPECT_EQ(urlOf(here + "/directory"), "file://" + here + "/directory/");
}

TEST_F(FileURLTest, EndsInNoSlashForALinkToADirectory) {
    fs::create_directory("directory");
    fs::create_symlink("directory", "link");
    EXPECT_EQ(urlOf("link"), "file://" + here + "/link");
    EXPECT_EQ(urlOf(here + "/link"), "file://" + here + "/link");
    EXPECT_EQ(urlOf("link/"), "file://" + here + "/link/");
}

// ---- FileURL: the path ----

TEST_F(FileURLTest, KeepsAnAbsolutePathUntouched) {
    for (const char* path : {"/missing", "/missing/", "/missing/../x", "//a", "/\xFF\u00E9 %20"}) {
        EXPECT_EQ(pathOf(path), path);
    }
    EXPECT_EQ(pathOf(std::string("/a\0b", 4)), std::string("/a\0b", 4));
}

TEST_F(FileURLTest, PutsARelativePathAfterTheCurrentDirectoryAndTouchesNothingElse) {
    for (const char* path : {"a", "a/", "./a", "a/../b", "..", "a//b", "\xFF\u00E9 %20"}) {
        EXPECT_EQ(pathOf(path), here + "/" + path);
    }
}

TEST_F(FileURLTest, HasNoSlashAfterTheCurrentDirectoryForTheEmptyPath) {
    EXPECT_EQ(pathOf(""), here);
}

TEST_F(FileURLTest, NamesTheFileThroughALinkThatThePathLeavesAgain) {
    fs::create_directories("directory/inner");
    fs::create_symlink("directory/inner", "link");
    std::ofstream("directory/file").flush();
    const FileURL url = FileURL::fromPath("link/../file");
    EXPECT_TRUE(fs::exists(url.path().str()));
    EXPECT_EQ(url.path().str(), here + "/link/../file");
    EXPECT_EQ(url.text().str(), "file://" + here + "/file");
}

TEST_F(FileURLTest, StaysTheSameWhenTheCurrentDirectoryChanges) {
    const FileURL url = FileURL::fromPath("x");
    fs::current_path("/");
    EXPECT_EQ(url.path().str(), here + "/x");
    EXPECT_EQ(url.text().str(), "file://" + here + "/x");
}

TEST_F(FileURLTest, LeavesAPathRelativeWhenThereIsNoCurrentDirectoryAnyMore) {
    fs::create_directory("removed");
    fs::current_path("removed");
    fs::remove("../removed");
    EXPECT_EQ(pathOf("a/../b"), "a/../b");
    EXPECT_EQ(urlOf("a/../b"), "file:///b");
    EXPECT_EQ(pathOf(""), "");
    EXPECT_EQ(pathOf("/x"), "/x");
}

// ---- FileURL: equality ----

TEST_F(FileURLTest, EqualsAnyWithTheSameURL) {
    const FileURL url = FileURL::fromPath("x");
    EXPECT_EQ(url, FileURL::fromPath("./x"));
    EXPECT_EQ(url, FileURL::fromPath("a/../x"));
    EXPECT_EQ(url, FileURL::fromPath(here + "/x"));
    EXPECT_NE(url, FileURL::fromPath(here + "/./x"));
    EXPECT_NE(url, FileURL::fromPath("X"));
    EXPECT_NE(url, FileURL::fromPath("x/"));
}

TEST_F(FileURLTest, DiffersForTwoWaysToWriteALetter) {
    EXPECT_NE(FileURL::fromPath("\u00E9"), FileURL::fromPath("e\u0301"));
}
