// What a parser of somebody else's reads in a description is what the tool declares.

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "Drawn.hpp"
#include "Optrella/Description.hpp"
#include "Support/Capture.hpp"
#include "Support/UTF8.hpp"

namespace {

using namespace Optrella;
using namespace Tests;
using nlohmann::json;

// ---- Texts ----

// Compared as it is dumped: what RapidCheck would show of it, it takes for a text.
json written(const std::string& bytes) {
    json text = bytes;
    try {
        static_cast<void>(text.dump());
        return text;
    } catch (const json::type_error&) {  // not UTF-8
        constexpr std::string_view digits = "0123456789abcdef";
        std::string hex;
        for (const char each : bytes) {
            const auto byte = static_cast<unsigned char>(each);
            hex += {digits[byte / 16], digits[byte % 16]};
        }
        return {{"hex", hex}};
    }
}

json written(const std::vector<std::string>& texts) {
    json list = json::array();
    for (const std::string& each : texts) list.push_back(written(each));
    return list;
}

// Controls, their neighbours, and whatever else JSON or UTF-8 treat in a way of their own.
std::string drawnText() {
    std::string text;
    for (auto left = *rc::gen::inRange(0, 6); left > 0; --left) {
        text += *rc::gen::oneOf(rc::gen::map(rc::gen::inRange<char32_t>(0, 0xA1), utf8),
                                rc::gen::map(rc::gen::inRange<char32_t>(0x2027, 0x202A), utf8),
                                rc::gen::map(rc::gen::inRange<char32_t>(0xE000, 0x110000), utf8),
                                rc::gen::elementOf(std::vector<std::string>{
                                    "\"", "\\", "/", std::string(1, '\0'), "\x1F", "\x7F"}),
                                rc::gen::elementOf(std::vector<std::string>(
                                    std::begin(brokenSequences), std::end(brokenSequences))));
    }
    return text;
}

// ---- Declarations, by the records that they are made of ----

json described(const ParameterCase& parameter) {
    json described{{"tags", written(parameter.tags)}, {"tagHelp", written(parameter.help)}};
    const bool isFlag = parameter.kind == numberOf<ParameterNone>;
    if (parameter.kind >= ownKind || parameter.takesValue == isFlag) {
        described["hasParameter"] = parameter.takesValue;
    }
    if (parameter.takesValue) described["parameterName"] = written(parameter.name);
    for (const auto& [key, number] : parameter.fields.numbers) described[key] = number;
    for (const auto& [key, word] : parameter.fields.words) described[key] = word;
    if (parameter.kind == numberOf<ParameterList>) {
        json& options = described["validOptions"] = json::array();
        for (const auto& tags : parameter.fields.options) {
            options.push_back({{"tags", written(tags)}, {"tagHelp", "of an option"}});
        }
    }
    return described;
}

std::string kindOf(const ParameterCase& parameter) {
    if (parameter.kind >= ownKind) return "OwnKind<";  // the argument of the template follows
    return nameOfKind(made(parameter));
}

// The names of kinds apart, which a template's are in a form of the compiler's.
void checkParameters(json found, const std::vector<ParameterCase>& declared) {
    RC_ASSERT(found.size() == declared.size());
    for (std::size_t i = 0; i < declared.size(); ++i) {
        const std::string kind = found[i].at("kind");
        RC_ASSERT(kind.starts_with(kindOf(declared[i])));
        found[i].erase("kind");
        RC_ASSERT(found[i].dump() == described(declared[i]).dump());
    }
}

void check(const json& found, const CommandCase& declared) {
    RC_ASSERT(found.size() == 5U);
    RC_ASSERT(found.at("requiresRoot").get<bool>() == declared.requiresRoot);
    RC_ASSERT(found.at("hidden").get<bool>() == declared.hidden);
    RC_ASSERT(found.at("help").dump() == written(declared.help).dump());
    checkParameters(found.at("required"), declared.required);
    checkParameters(found.at("optional"), declared.optional);
}

std::vector<std::string> linesOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

}  // namespace

TEST(DescriptionLaws, ATextIsReadAsItIs) {
    EXPECT_TRUE(rc::check("texts", [] {
        const std::string name = drawnText();
        const std::string help = drawnText();
        const std::string tag = drawnText();
        const ParameterString item{{tag}, help, name};
        const Tool tool{
            .name = name,
            .commandLines = {{false, {item}, {}, help, false, [](const Parameters&) {}}},
            .repeated = {item}};
        const std::string text = description(tool).str();
        const json read = json::parse(text);
        RC_ASSERT(read.at("name").dump() == written(name).dump());
        RC_ASSERT(read.at("repeated").dump() == written(std::vector{tag}).dump());
        const json& declaration = read.at("declarations").at(0);
        RC_ASSERT(declaration.at("help").dump() == written(help).dump());
        const auto isControl = [](char c) { return (c >= 0 && c < ' ' && c != '\n') || c == 0x7F; };
        RC_ASSERT(std::none_of(text.begin(), text.end(), isControl));
        RC_CLASSIFY(read.at("name").is_object(), "not UTF-8");
        RC_CLASSIFY(read.at("name").is_string() && name.find('\0') != name.npos, "NUL");
    }));
}

TEST(DescriptionLaws, EveryDeclarationIsALineThatSaysAllOfIt) {
    EXPECT_TRUE(rc::check("declarations", [] {
        const Case drawn = drawnCase();
        const Tool tool{.commandLines = made(drawn.commands, [](std::size_t, const Parameters&) {
                            RC_FAIL("a description runs no action");
                        })};
        std::string text;
        RC_ASSERT(printed([&] { text = description(tool).str(); }).empty());
        RC_LOG(text);
        const json read = json::parse(text).at("declarations");
        RC_ASSERT(read.size() == drawn.commands.size());
        const std::vector<std::string> lines = linesOf(text);
        RC_ASSERT(lines.size() == 7 + (read.empty() ? 0 : read.size() + 1));
        for (std::size_t i = 0; i < read.size(); ++i) {
            check(read[i], drawn.commands[i]);
            std::string line = lines[7 + i];
            if (i + 1 < read.size()) line.pop_back();
            RC_ASSERT(json::parse(line).dump() == read[i].dump());
        }
    }));
}
