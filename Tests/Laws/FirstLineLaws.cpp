// What is left of a text without its first line, against a walk over its characters.

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Optrella/Elevation/PromptForPassword.hpp"

namespace {

using Optrella::PromptForPassword::removeFirstLine;

// A text as its characters. A return and the line feed after it are one.
std::vector<std::string> charactersOf(const std::vector<std::string>& parts) {
    std::vector<std::string> characters;
    for (const std::string& part : parts) {
        if (part == "\n" && !characters.empty() && characters.back() == "\r") {
            characters.back() = "\r\n";
        } else {
            characters.push_back(part);
        }
    }
    return characters;
}

std::string joined(const std::vector<std::string>& parts) {
    std::string text;
    for (const std::string& part : parts) text += part;
    return text;
}

std::optional<std::string> withoutFirstLine(const std::vector<std::string>& characters) {
    bool isAfter = false;
    std::string rest;
    for (const std::string& character : characters) {
        if (isAfter) rest += character;
        if (character == "\n") isAfter = true;
    }
    if (rest.empty()) return std::nullopt;
    return rest;
}

}  // namespace

TEST(FirstLineLaws, WhatIsLeftStandsAfterTheFirstLineFeed) {
    EXPECT_TRUE(rc::check([] {
        const auto parts =
            *rc::gen::container<std::vector<std::string>>(rc::gen::element<std::string>(
                "\n", "\r", "a", "\u0301", "\u2028", "\u0085", "\v", "\f", "\u200D"));
        const std::string text = joined(parts);
        const std::optional<std::string_view> left = removeFirstLine(text);
        const std::optional<std::string> expected = withoutFirstLine(charactersOf(parts));
        RC_ASSERT(left == expected);
        RC_CLASSIFY(expected.has_value(), "something is left");
    }));
}
