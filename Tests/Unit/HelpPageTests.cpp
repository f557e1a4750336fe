#include "Optrella/HelpPage.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Optrella;

void nothing(const Parameters&) {}

const ParameterNone add{{"add"}, ""};
const ParameterNone list{{"list"}, ""};
const Tool tool{.name = "items",
                .summary = "Manage items.",
                .commandLines = {{false, {add}, {}, "Add items.", false, nothing},
                                 {false, {list}, {}, "List items.", false, nothing}}};

}  // namespace

TEST(HelpPage, TakesDeclarationsInBracesWhichAreNoWidth) {
    const std::vector<std::size_t> second{1};
    EXPECT_EQ(helpPage(tool, {1}), helpPage(tool, second));
    EXPECT_EQ(helpPage(tool, {1}, 20, Emphasis::terminal),
              helpPage(tool, second, 20, Emphasis::terminal));
    EXPECT_NE(helpPage(tool, {1}), helpPage(tool, 1));
}

TEST(HelpPage, IsEightyColumnsWideAndPlainUnlessItIsToldOtherwise) {
    EXPECT_EQ(helpPage(tool), helpPage(tool, 80, Emphasis::none));
    EXPECT_EQ(helpPage(tool, {0, 1}), helpPage(tool, {0, 1}, 80, Emphasis::none));
}

TEST(HelpPage, OutlivesItsTool) {
    Text page;
    {
        const std::string name = "a name that is copied to the heap, for it is long";
        const Tool gone{.name = name, .commandLines = {{false, {}, {}, name, false, nothing}}};
        page = helpPage(gone);
    }
    EXPECT_TRUE(page.str().starts_with("a name that is copied to the heap, for it is long\n"));
}
