#include "Optrella/Description.hpp"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Support/Death.hpp"

struct OfNoNamespace {
    Optrella::commonDetails common;
};

namespace {

using namespace Optrella;
using nlohmann::json;

void nothing(const Parameters&) {}

Tool toolWith(const ParameterProtocol& parameter) {
    return {.name = "items", .commandLines = {{false, {parameter}, {}, "", false, nothing}}};
}

json described(const ParameterProtocol& parameter) {
    return json::parse(description(toolWith(parameter)).str())
        .at("declarations")
        .at(0)
        .at("required")
        .at(0);
}

// ---- Kinds of a tool's own ----

struct Port {
    commonDetails common;
};

template <class Value>
struct Checked {
    commonDetails common;
    Value least{};
};

namespace Inner {
struct Name final : ParameterDefaults<Name> {
    commonDetails common;
};
}  // namespace Inner

template <class Kind>
std::string nameOfOwn() {
    Kind kind{};
    kind.common.tags = {"-k"};
    return described(kind).at("kind");
}

TEST(Description, CallsAKindOfTheToolsOwnByItsName) {
    EXPECT_EQ(nameOfOwn<Port>(), "Port");
    EXPECT_EQ(nameOfOwn<Inner::Name>(), "Name");
    EXPECT_EQ(nameOfOwn<OfNoNamespace>(), "OfNoNamespace");
}

TEST(Description, CallsALocalKindByItsName) {
    struct Local {
        commonDetails common;
    };
    EXPECT_EQ(nameOfOwn<Local>(), "Local");
}

TEST(Description, CallsAKindFromATemplateByItsNameAndTheArguments) {
    EXPECT_EQ(nameOfOwn<Checked<int>>(), "Checked<int>");
    EXPECT_TRUE(nameOfOwn<Checked<std::string>>().starts_with("Checked<std::"));
}

TEST(Description, SaysOfAKindOfTheToolsOwnWhetherAValueFollows) {
    const Port port{{.tagHelp = "to listen on", .tags = {"-p", "--port"}, .parameterName = "PORT"}};
    EXPECT_EQ(described(port), json({{"kind", "Port"},
                                     {"tags", {"-p", "--port"}},
                                     {"hasParameter", true},
                                     {"parameterName", "PORT"},
                                     {"tagHelp", "to listen on"}}));
    const Port flag{{.tags = {"-p"}, .hasParameter = false}};
    EXPECT_EQ(described(flag),
              json({{"kind", "Port"}, {"tags", {"-p"}}, {"hasParameter", false}, {"tagHelp", ""}}));
}

// ---- The library's kinds ----

TEST(Description, SaysThatAFlagWasMadeToTakeAValue) {
    ParameterNone flag{{"-f"}, ""};
    flag.common.hasParameter = true;
    flag.common.parameterName = "WHY";
    EXPECT_EQ(described(flag), json({{"kind", "ParameterNone"},
                                     {"tags", {"-f"}},
                                     {"hasParameter", true},
                                     {"parameterName", "WHY"},
                                     {"tagHelp", ""}}));
}

TEST(Description, SaysThatAParameterWasMadeToTakeNoValue) {
    ParameterString text{{"-s"}, "TEXT", ""};
    text.common.hasParameter = false;
    EXPECT_EQ(described(text), json({{"kind", "ParameterString"},
                                     {"tags", {"-s"}},
                                     {"hasParameter", false},
                                     {"tagHelp", ""}}));
}

// ---- The tool ----

TEST(Description, LeavesOutAnOperandThatHasNoTag) {
    const ParameterString nameless{{}, "NAME", ""};
    const ParameterString disk{{"--disk"}, "DISK", ""};
    const Tool tool{.operands = {nameless, disk}, .repeated = {nameless, disk}};
    const json read = json::parse(description(tool).str());
    EXPECT_EQ(read.at("operands"), json::array({{{"tag", "--disk"}, {"takes", "one"}}}));
    EXPECT_EQ(read.at("repeated"), json::array({"--disk"}));
}

TEST(Description, AsksNoCompleter) {
    const ParameterString disk{{"--disk"}, "DISK", ""};
    Tool tool = toolWith(disk);
    const Text before = description(tool);
    tool.completers.emplace_back(disk, [] {
        ADD_FAILURE() << "asked";
        return std::vector<Text>();
    });
    EXPECT_EQ(description(tool), before);
}

TEST(DescriptionDeath, StopsAtAPathOfNoCase) {
    using Path = ParameterFileURL;
    const Path type{{"-f"}, static_cast<Path::urlType>(9), Path::existState::vague, "", ""};
    const Path state{{"-f"}, Path::urlType::file, static_cast<Path::existState>(9), "", ""};
    EXPECT_SILENT_STOP(description(toolWith(type)));
    EXPECT_SILENT_STOP(description(toolWith(state)));
}

}  // namespace
