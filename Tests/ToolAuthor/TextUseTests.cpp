// The ways in which a tool's author makes, compares and prints a Text.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "HeapCalls.hpp"
#include "Optrella/CommandLineExitStatus.hpp"
#include "Optrella/Text.hpp"
#include "Support/Capture.hpp"

using namespace Optrella;

namespace {

// ---- from a literal ----

TEST(TextFromALiteral, MakesNoHeapCall) {
    const long before = heapCalls();
    const Text text = "a text that is longer than any small string could hold in itself";
    const Text copy = text;  // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(heapCalls(), before);
    EXPECT_EQ(copy, text);
}

constexpr Text constantText = "abc";
static_assert(constantText.size() == 3);
static_assert(!constantText.empty());
static_assert(constantText.isASCII());
static_assert(static_cast<std::string_view>(constantText) == "abc");
constinit Text startedText = "abc";

TEST(TextFromALiteral, IsAConstant) {
    EXPECT_EQ(constantText, "abc");
    EXPECT_EQ(startedText, constantText);
}

Text byCase(int number) {
    switch (number) {
        case 1:
            return "one";
        default:
            return "many";
    }
}
std::optional<Text> asOptional() { return "no port"; }
Text withDefault(Text text = "x") { return text; }
Text withDefaultReference(const Text& text = "x") { return text; }

TEST(TextFromALiteral, IsReturnedFromAFunction) {
    EXPECT_EQ(byCase(1), "one");
    EXPECT_EQ(byCase(2), "many");
    EXPECT_EQ(asOptional(), "no port");
}

TEST(TextFromALiteral, IsADefaultArgument) {
    EXPECT_EQ(withDefault(), "x");
    EXPECT_EQ(withDefaultReference(), "x");
    EXPECT_EQ(withDefaultReference("y"), "y");
}

struct Record {
    Text text = "abc";
    std::vector<Text> texts = {"a", "b"};
    inline static const Text shared = "s";
};

TEST(TextFromALiteral, IsAMemberInitialiser) {
    const Record record;
    EXPECT_EQ(record.text, "abc");
    EXPECT_EQ(record.texts.at(1), "b");
    EXPECT_EQ(Record::shared, "s");
}

TEST(TextFromALiteral, IsMadeInALambda) {
    const auto plain = [captured = Text("x")] {
        const Text inside = "inside";
        return captured == inside;
    };
    const auto generic = [](auto) {
        const Text inside = "inside";
        return inside == "inside";
    };
    const auto returning = []() -> Text { return "returned"; };
    const std::function<Text()> held = [] { return "held"; };
    EXPECT_FALSE(plain());
    EXPECT_TRUE(generic(1));
    EXPECT_EQ(returning(), "returned");
    EXPECT_EQ(held(), "held");
}

// ---- from a literal that a template hands on: nobody knows how long it lives, so it is copied
// ----

TEST(TextFromAForwardedLiteral, FillsAnOptional) {
    const std::optional<Text> direct{"a"};
    const std::optional<Text> copied = "b";
    std::optional<Text> assigned;
    assigned = "c";
    std::optional<Text> emplaced;
    emplaced.emplace("d");
    EXPECT_EQ(direct, "a");
    EXPECT_EQ(copied, "b");
    EXPECT_EQ(assigned, "c");
    EXPECT_EQ(emplaced, "d");
    EXPECT_EQ(std::make_optional<Text>("e"), "e");
}

TEST(TextFromAForwardedLiteral, StandsInForAnAbsentText) {
    const std::optional<Text> absent;
    const std::optional<Text> present = "here";
    EXPECT_EQ(absent.value_or("default"), "default");
    EXPECT_EQ(absent.value_or(Text("default")), "default");
    EXPECT_EQ(present.value_or("default"), "here");
}

TEST(TextFromAForwardedLiteral, GoesIntoAVector) {
    std::vector<Text> texts;
    texts.emplace_back("a");
    texts.push_back("b");
    EXPECT_EQ(texts, (std::vector<Text>{"a", "b"}));
}

TEST(TextFromAForwardedLiteral, GoesIntoAPairAndATuple) {
    const std::pair<Text, int> pair{"a", 1};
    const std::tuple<Text, int> tuple{"b", 2};
    EXPECT_EQ(pair.first, "a");
    EXPECT_EQ(std::get<0>(tuple), "b");
    EXPECT_EQ(*std::make_unique<Text>("c"), "c");
}

TEST(TextFromAForwardedLiteral, IsAKey) {
    std::unordered_map<Text, int> map{{"a", 1}};
    map["b"] = 2;
    map.emplace("c", 3);
    EXPECT_EQ(map.at("a"), 1);
    EXPECT_EQ(map.find("b")->second, 2);
    EXPECT_TRUE(map.contains("c"));
    EXPECT_FALSE(map.contains("d"));
}

template <class Given>
Text made(Given&& given) {
    return Text(std::forward<Given>(given));
}

TEST(TextFromAForwardedLiteral, IsMadeExplicitlyInATemplate) {
    EXPECT_EQ(made("a"), "a");
    EXPECT_EQ(made(std::string("b")), "b");
}

TEST(TextFromAForwardedLiteral, OwnsItsBytes) {
    static constexpr char bytes[] = "abc";
    const std::optional<Text> text = bytes;
    EXPECT_NE(text->c_str(), bytes);
    EXPECT_EQ(text, "abc");
}

// ---- in arrays, lists and conditions ----

TEST(TextsInBraces, FillArraysAndVectors) {
    const Text plain[] = {"a", "b"};
    const std::array<Text, 2> array{"a", "b"};
    const std::vector<Text> vector{"a", "b"};
    EXPECT_EQ(plain[1], "b");
    EXPECT_EQ(array[1], "b");
    EXPECT_EQ(vector[1], "b");
}

TEST(TextsInBraces, AreTwoTextsInDoubleBracesToo) {
    const std::vector<Text> texts{{"a", "b"}};
    EXPECT_EQ(texts, (std::vector<Text>{"a", "b"}));
}

TEST(TextsInBraces, AreWalked) {
    std::string all;
    for (const Text text : {"a", "bc"}) all += text;
    for (const Text& text : {Text("d"), Text("e")}) all += text;
    EXPECT_EQ(all, "abcde");
}

TEST(TextsInBraces, EmptyOnesMakeTheEmptyText) {
    const Text direct{};
    const Text copied = {};
    const Text none;
    EXPECT_TRUE(direct.empty());
    EXPECT_EQ(copied, "");
    EXPECT_STREQ(none.c_str(), "");
}

TEST(TextFromACondition, TakesLiteralsOfDifferentLengths) {
    const bool yes = heapCalls() < 0;
    const Text text = yes ? "yes" : "nope";
    EXPECT_EQ(text, "nope");
}

TEST(TextFromACondition, TakesLiteralsOfOneLengthWhenItIsExplicit) {
    const bool yes = heapCalls() < 0;
    const Text text(yes ? "yes" : "not");
    EXPECT_EQ(text, "not");
}

TEST(TextFromACondition, MixesTextsStringsAndLiterals) {
    const bool yes = heapCalls() < 0;
    const Text text = "text";
    const std::string string = "string";
    const Text second = yes ? text : "literal";
    const Text first = yes ? "literal" : text;
    const Text third = yes ? "literal" : string;
    EXPECT_EQ(second, "literal");
    EXPECT_EQ(first, "text");
    EXPECT_EQ(third, "string");
}

// ---- from run-time bytes ----

TEST(TextFromABuffer, KeepsTheBytesWhenTheBufferChanges) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "abc");
    const Text explicitly(buffer);
    const Text implicitly = buffer;
    buffer[0] = '\0';
    EXPECT_EQ(explicitly, "abc");
    EXPECT_EQ(implicitly, "abc");
}

TEST(TextFromABuffer, CopiesAConstantBufferExplicitly) {
    const char local[16] = "abc";
    static const char padded[16] = "abc";
    EXPECT_EQ(Text(local), "abc");
    EXPECT_EQ(Text(local).size(), 3U);
    EXPECT_EQ(Text(padded), "abc");
    EXPECT_EQ(Text(__func__), "TestBody");
}

TEST(TextFromABuffer, CopiesAFieldOfAnotherRecord) {
    struct Entry {
        char name[32];
    };
    const Entry entry{"file"};
    const Entry* found = &entry;
    EXPECT_EQ(Text(found->name), "file");
    EXPECT_EQ(Text(found->name).size(), 4U);
}

TEST(TextFromAPointer, CopiesItsBytes) {
    std::string bytes = "abc";
    char* changeable = bytes.data();
    const char* readable = bytes.c_str();
    const Text first = changeable;
    const Text second(readable);
    bytes[0] = 'x';
    EXPECT_EQ(first, "abc");
    EXPECT_EQ(second, "abc");
}

TEST(TextFromAString, CopiesItsBytes) {
    std::string string = "abc";
    const Text fromString = string;
    const Text fromView = std::string_view(string).substr(1);
    const Text fromResult = string + "d";
    string = "x";
    EXPECT_EQ(fromString, "abc");
    EXPECT_EQ(fromView, "bc");
    EXPECT_EQ(fromResult, "abcd");
}

TEST(TextFromAString, MakesOneHeapCallAndCopiesOfItNone) {
    const std::string string = "abc";
    const long before = heapCalls();
    const Text text = string;
    EXPECT_EQ(heapCalls(), before + 1);
    const Text copy = text;  // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(heapCalls(), before + 1);
    EXPECT_EQ(copy.c_str(), text.c_str());
}

// ---- copies ----

TEST(TextCopies, AreIndependentWhenOneIsAssigned) {
    Text original = std::string("abc");
    const Text copy = original;
    original = "x";
    EXPECT_EQ(copy, "abc");
    original = std::string("y");
    EXPECT_EQ(original, "y");
}

TEST(TextCopies, SurviveSelfAssignmentAndSwap) {
    Text text = std::string("abc");
    Text& same = text;
    text = same;
    EXPECT_EQ(text, "abc");
    text = std::move(same);
    EXPECT_EQ(text, "abc");
    Text other = "x";
    std::swap(text, other);
    EXPECT_EQ(text, "x");
    EXPECT_EQ(other, "abc");
}

// ---- comparing ----

TEST(TextComparison, TakesWhateverATextIsMadeFromOnEitherSide) {
    const Text text = "abc";
    const std::string string = "abc";
    const std::string_view view = string;
    const char* pointer = string.c_str();
    char buffer[8] = "abc";
    const char padded[8] = "abc";
    EXPECT_TRUE(text == "abc" && "abc" == text);
    EXPECT_TRUE(text == string && string == text);
    EXPECT_TRUE(text == view && view == text);
    EXPECT_TRUE(text == pointer && pointer == text);
    EXPECT_TRUE(text == buffer && buffer == text);
    EXPECT_TRUE(text == padded && padded == text);
    EXPECT_FALSE(text != "abc" || "abc" != text || text != string || view != text);
    EXPECT_TRUE(text != "ABC" && "abc " != text);
}

TEST(TextComparison, ReachesIntoAnOptional) {
    const std::optional<Text> text = "abc";
    const std::optional<Text> none;
    EXPECT_TRUE(text == "abc");
    EXPECT_TRUE(text == Text("abc"));
    EXPECT_TRUE(text == std::string("abc"));
    EXPECT_TRUE(text == std::string_view("abc"));
    EXPECT_TRUE(none == std::nullopt);
    EXPECT_FALSE(none == "abc");
    EXPECT_FALSE(text == none);
}

TEST(TextComparison, ServesAlgorithmsAndConcepts) {
    static_assert(std::equality_comparable<Text>);
    const std::vector<Text> texts{"a", "b"};
    EXPECT_EQ(std::find(texts.begin(), texts.end(), "b"), texts.begin() + 1);
    EXPECT_EQ(std::count(texts.begin(), texts.end(), std::string("c")), 0);
}

TEST(TextOrder, IsThatOfTheBytesWhenAViewIsAskedFor) {
    const Text left = "a";
    const std::string_view right = "b";
    EXPECT_TRUE(left < right);
    std::map<std::string, int> map;
    map[left.str()] = 1;
    EXPECT_EQ(map.at("a"), 1);
}

// ---- handing on ----

std::size_t lengthOf(std::string_view view) { return view.size(); }

TEST(TextHandedOn, IsAView) {
    const Text text = "-abc";
    const std::string_view view = text;
    EXPECT_TRUE(view.starts_with("-"));
    EXPECT_EQ(lengthOf(text), 4U);
    const std::unordered_set<std::string_view> views{"-abc"};
    EXPECT_TRUE(views.contains(text));
}

TEST(TextHandedOn, FillsAndExtendsAString) {
    const Text text = "a";
    std::string string(text);
    string += text;
    string.append(text);
    EXPECT_EQ(string, "aaa");
    string = text;
    EXPECT_EQ(string, "a");
    EXPECT_EQ(text.str() + " x", "a x");
    EXPECT_EQ("x " + text.str(), "x a");
}

TEST(TextHandedOn, GoesToCFunctionsWithANULAfterIt) {
    const Text text = "/dev/null";
    std::FILE* file = std::fopen(text.c_str(), "r");
    ASSERT_NE(file, nullptr);
    std::fclose(file);
    EXPECT_STREQ(Text(std::string("abc")).c_str(), "abc");
}

TEST(TextHandedOn, IsAnErrorMessageFromALiteralAStringOrACondition) {
    const bool bad = heapCalls() < 0;
    const Tests::Output output = Tests::capture([&] {
        outputErrorMessage("one");
        outputErrorMessage(std::string("two ") + std::to_string(2));
        outputErrorMessage(Text(bad ? "bad" : "odd"));
    });
    EXPECT_EQ(output, (Tests::Output{"", "one\ntwo 2\nodd\n"}));
}

}  // namespace
