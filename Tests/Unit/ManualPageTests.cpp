#include "Optrella/ManualPage.hpp"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace Optrella;

struct Port final : ParameterDefaults<Port> {
    commonDetails common;
};

constexpr ParameterNone serve{{"serve"}, ""};

Tool toolWith(const ParameterProtocol& parameter) {
    return {.name = "items",
            .commandLines = {{false, {serve, parameter}, {}, "", false, [](const Parameters&) {}}}};
}

std::string commandsOf(const Tool& tool) {
    const std::string page = manualPage(tool).str();
    const std::size_t begin = page.find(".Sh COMMANDS\n");
    return page.substr(begin, page.find(".Sh OPTIONS\n") - begin);
}

TEST(ManualPage, ShowsAKindOfTheToolsOwnByItsNameAndHelp) {
    Port port;
    port.common = {"Where to listen", {"port"}, "", true, "port"};
    EXPECT_EQ(commandsOf(toolWith(port)),
              ".Sh COMMANDS\n.Bl -tag -width Ds\n.It Cm serve Cm port Ar PORT\n"
              ".Bl -tag -width Ds\n.It Cm port Ar PORT\nWhere to listen\n.El\n.El\n");
}

TEST(ManualPage, AsksNoCompleter) {
    const ParameterString name({"name"}, "name", "");
    const Tool tool = toolWith(name);
    Tool completing = tool;
    completing.completers = {{name, [] {
                                  ADD_FAILURE() << "is asked";
                                  return std::vector<Text>{};
                              }}};
    EXPECT_EQ(manualPage(completing), manualPage(tool));
}

}  // namespace
