// What the library answers to the questions in Tests/Data: one test for each kind of fact, all
// lines of that kind.

#include <gtest/gtest.h>
#include <unistd.h>
#include <utf8proc.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Optrella/CommandLine/Dispatch.hpp"
#include "Optrella/Elevation/PromptForPassword.hpp"
#include "Optrella/Parameters.hpp"
#include "Optrella/Text.hpp"
#include "Optrella/Text/Unicode.hpp"
#include "Optrella/Values.hpp"
#include "Support/Characters.hpp"
#include "Support/TemporaryDirectory.hpp"

namespace {

using namespace Optrella;
using enum ParameterFileURL::existState;
using nlohmann::json;

// The lines of one kind in a data file. A kind without lines is a failure.
class Facts {
public:
    Facts(const std::string& file, const std::string& kind) {
        std::ifstream stream(OPTRELLA_TEST_DATA "/" + file);
        std::string line;
        for (std::size_t number = 1; std::getline(stream, line); ++number) {
            json fact = json::parse(line);
            if (fact["what"] != kind) continue;
            fact["line"] = file + ":" + std::to_string(number);
            facts_.push_back(std::move(fact));
        }
        EXPECT_FALSE(facts_.empty()) << file << " has no fact of the kind " << kind;
    }

    [[nodiscard]] auto begin() const { return facts_.begin(); }
    [[nodiscard]] auto end() const { return facts_.end(); }

private:
    std::vector<json> facts_;
};

std::string field(const json& fact, const char* name) { return fact.at(name).get<std::string>(); }

// ---- Lines that need a newer Unicode than the installed one ----

// Unassigned in the installed version, and not one that will never be assigned.
bool maySomedayBeAssigned(utf8proc_int32_t c) {
    const bool isNoncharacter = (c & 0xFFFE) == 0xFFFE || (c >= 0xFDD0 && c <= 0xFDEF);
    return utf8proc_category(c) == UTF8PROC_CATEGORY_CN && !isNoncharacter;
}

bool holdsUnassignedCharacter(std::string_view text) {
    while (!text.empty()) {
        utf8proc_int32_t codePoint = 0;
        const utf8proc_ssize_t size =
            utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                             static_cast<utf8proc_ssize_t>(text.size()), &codePoint);
        if (size <= 0) return false;
        if (maySomedayBeAssigned(codePoint)) return true;
        text.remove_prefix(static_cast<std::size_t>(size));
    }
    return false;
}

// Takes the lines that got another answer. Those with a character that the installed Unicode does
// not know are printed as skipped, all others fail.
class OtherAnswers {
public:
    void add(const json& fact, std::string_view text) {
        if (holdsUnassignedCharacter(text)) {
            std::cout << "[  SKIPPED ] " << field(fact, "line")
                      << ": holds a character that is unassigned in Unicode "
                      << utf8proc_unicode_version() << "\n";
            ++skipped_;
        } else {
            ADD_FAILURE() << fact;
        }
    }
    OtherAnswers() = default;
    OtherAnswers(const OtherAnswers&) = delete;
    OtherAnswers& operator=(const OtherAnswers&) = delete;
    ~OtherAnswers() { std::cout << "[  SKIPPED ] lines: " << skipped_ << "\n"; }

private:
    std::size_t skipped_ = 0;
};

// ---- Bytes, numbers and paths ----

std::string bytesFromHexadecimal(const std::string& digits) {
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
    return bytes;
}

std::string replaced(std::string text, std::string_view placeholder, const std::string& by) {
    const std::size_t position = text.find(placeholder);
    if (position != std::string::npos) text.replace(position, placeholder.size(), by);
    return text;
}

bool isAcceptable(const std::string& path, ParameterFileURL::existState state) {
    ParameterFileURL parameter({"--path"}, ParameterFileURL::urlType::fileOrFolder, state, "", "");
    parameter.storeUserValue(path);
    return !parameter.validate().has_value();
}

// The directory that the facts on paths are about, while it is the current one.
class FileURLFacts : public testing::Test {
protected:
    FileURLFacts() {
        std::filesystem::create_directory(here_);
        std::filesystem::current_path(here_);
        std::ofstream("file").flush();
        std::ofstream("a b").flush();
        std::filesystem::create_directories("dir/sub");
        std::filesystem::create_symlink("dir", "link-dir");
        std::filesystem::create_symlink("nowhere", "dangling");
    }

    [[nodiscard]] std::string located(const std::string& text) const {
        return replaced(replaced(text, "{here}", here_), "{parent}", parent_);
    }

private:
    Tests::TemporaryDirectory directory_;
    std::string parent_ = directory_.path();
    std::string here_ = parent_ + "/here";
};

}  // namespace

TEST(TextFacts, TextsAreEqualAsTheFactsSay) {
    OtherAnswers otherAnswers;
    for (const json& fact : Facts("text-facts.jsonl", "equal")) {
        const Text a = field(fact, "a");
        const Text b = field(fact, "b");
        if ((a == b) != fact["equal"]) otherAnswers.add(fact, a.str() + b.str());
    }
}

TEST(TextFacts, EqualityIsSymmetricAndHashesAgree) {
    for (const json& fact : Facts("text-facts.jsonl", "equal")) {
        const Text a = field(fact, "a");
        const Text b = field(fact, "b");
        const bool isEqual = a == b;
        EXPECT_EQ(isEqual, b == a) << fact;
        EXPECT_TRUE(!isEqual || std::hash<Text>()(a) == std::hash<Text>()(b)) << fact;
    }
}

TEST(TextFacts, CharactersAreCountedAsTheFactsSay) {
    OtherAnswers otherAnswers;
    for (const json& fact : Facts("text-facts.jsonl", "characters")) {
        const std::string text = field(fact, "text");
        if (Tests::countCharacters(text) != fact["count"]) otherAnswers.add(fact, text);
    }
}

TEST(TextFacts, TheEndIsCutAsTheFactsSay) {
    OtherAnswers otherAnswers;
    for (const json& fact : Facts("text-facts.jsonl", "cut")) {
        const std::string suffix = field(fact, "suffix");
        std::string left = "[ " + field(fact, "tag") + suffix;
        left.resize(left.size() - Internal::sizeOfLastCharacters(left, suffix.size()));
        if (left != field(fact, "left")) otherAnswers.add(fact, field(fact, "tag"));
    }
}

TEST(ValueFacts, BytesAreUTF8AsTheFactsSay) {
    for (const json& fact : Facts("value-facts.jsonl", "utf8")) {
        const std::string bytes = bytesFromHexadecimal(field(fact, "hex"));
        EXPECT_EQ(Internal::isUTF8(bytes), fact["valid"].get<bool>()) << fact;
    }
}

TEST(ValueFacts, ArgumentsAreRenderedAsTheFactsSay) {
    for (const json& fact : Facts("value-facts.jsonl", "rendered")) {
        std::vector<Text> arguments;
        for (const json& argument : fact["list"]) {
            arguments.emplace_back(argument.get<std::string>());
        }
        EXPECT_EQ(Internal::rendered(arguments), field(fact, "text")) << fact;
    }
}

TEST(ValueFacts, NumbersAreReadAsTheFactsSay) {
    for (const json& fact : Facts("value-facts.jsonl", "integer")) {
        ParameterNumber number({"-n"}, "", 0, 0, "");
        number.storeUserValue(field(fact, "text"));
        const json& value = fact["value"];
        EXPECT_EQ(number.getValue(),
                  value.is_null() ? number.defaultValue() : value.get<std::int64_t>())
            << fact;
    }
}

TEST(ValueFacts, UUIDsAreReadAsTheFactsSay) {
    for (const json& fact : Facts("value-facts.jsonl", "uuid")) {
        const std::optional<UUID> uuid = UUID::fromText(field(fact, "text"));
        EXPECT_EQ(uuid ? json(uuid->text().str()) : json(), fact["value"]) << fact;
    }
}

TEST_F(FileURLFacts, PathsBecomeTheURLsThatTheFactsSay) {
    for (const json& fact : Facts("value-facts.jsonl", "fileURL")) {
        const FileURL url = FileURL::fromPath(located(field(fact, "path")));
        EXPECT_EQ(url.text().str(), located(field(fact, "url"))) << fact;
    }
}

TEST_F(FileURLFacts, PathsExistAsTheFactsSay) {
    for (const json& fact : Facts("value-facts.jsonl", "fileURL")) {
        const std::string path = located(field(fact, "path"));
        EXPECT_EQ(isAcceptable(path, exist), fact["exists"].get<bool>()) << fact;
        EXPECT_EQ(isAcceptable(path, absent), !fact["exists"].get<bool>()) << fact;
        EXPECT_TRUE(isAcceptable(path, vague)) << fact;
    }
}

TEST(TextFacts, FirstLinesAreRemovedAsTheFactsSay) {
    for (const json& fact : Facts("value-facts.jsonl", "removeFirstLine")) {
        const std::string text = field(fact, "text");
        const auto rest = PromptForPassword::removeFirstLine(text);
        EXPECT_EQ(rest ? json(*rest) : json(), fact.at("value")) << fact;
    }
}
