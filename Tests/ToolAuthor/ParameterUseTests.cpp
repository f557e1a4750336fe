// The ways in which a tool's author declares parameters of the six kinds.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_set>
#include <utility>
#include <vector>

#include "HeapCalls.hpp"
#include "Optrella/Fetch.hpp"
#include "Optrella/Parameters.hpp"
#include "Support/Kinds.hpp"

using namespace Optrella;

namespace {

using enum ParameterFileURL::urlType;
using enum ParameterFileURL::existState;

// ---- declared at namespace scope: there before any other declaration can copy them ----

constinit const Text aText = "x";
constinit const Tags someTags{"a", "b"};
constinit const commonDetails details{.tagHelp = "h", .tags = {"-p"}};
constinit const ParameterNone flag{{"-f", "--flag"}, "help"};
constinit const ParameterString name{{"-n", "--name"}, "name", "help"};
constinit const ParameterUUID identity{{"-u", "--uuid"}, "uuid", "help"};
constinit const ParameterNumber limit{{"-l", "--limit"}, "count", 1, 10, "help"};
constinit const ParameterFileURL path{{"-p", "--path"}, fileOrFolder, vague, "path", "help"};
constexpr ParameterNumber constantNumber{{"-c"}, "count", 1, 10, "help"};
static_assert(constantNumber.rangeMin() == 1 && constantNumber.rangeMax() == 10);
static_assert(constantNumber.defaultValue() == -1);
static_assert(constantNumber.common.tags.size() == 1 && constantNumber.common.hasParameter);

TEST(DeclaredParameter, AtNamespaceScopeIsAConstant) {
    EXPECT_EQ(aText, "x");
    EXPECT_EQ(someTags[1], "b");
    EXPECT_EQ(details.tags.front(), "-p");
    EXPECT_EQ(flag.firstTag(), "-f");
    EXPECT_EQ(name.firstTag(), "-n");
    EXPECT_EQ(identity.firstTag(), "-u");
    EXPECT_EQ(limit.firstTag(), "-l");
    EXPECT_EQ(path.firstTag(), "-p");
}

struct Holder {
    ParameterNone braced{{"a", "b"}, "h"};
    ParameterNone copied = {{"c", "d"}, "h"};
    ParameterList list{{"-s"}, {"x", "y"}, "n", "h"};
    commonDetails common{.tagHelp = "h", .tags = {"-p"}, .parameterName = "port"};
    inline static const ParameterNone shared{{"s"}, "h"};
    static constexpr ParameterNone constant{{"c"}, "h"};
};
thread_local const ParameterNone perThread{{"t"}, "h"};
Text firstTagOf(const ParameterNone& given = {{"x", "y"}, "h"}) { return given.firstTag(); }
template <class Kind>
Text firstTagOfFlag() {
    const Kind made{{"a", "b"}, "h"};
    return made.firstTag();
}

TEST(DeclaredParameter, IsAMemberOrAStaticOne) {
    const Holder holder;
    EXPECT_EQ(holder.braced.common.tags.size(), 2U);
    EXPECT_EQ(holder.copied.firstTag(), "c");
    EXPECT_EQ(holder.list.validOptions().size(), 2U);
    EXPECT_EQ(holder.common.parameterName, "port");
    EXPECT_TRUE(holder.common.hasParameter);
    EXPECT_EQ(Holder::shared.firstTag(), "s");
    EXPECT_EQ(Holder::constant.firstTag(), "c");
    EXPECT_EQ(perThread.firstTag(), "t");
}

TEST(DeclaredParameter, IsADefaultArgumentAndMadeInTemplates) {
    const auto generic = [](auto) { return ParameterNone{{"g", "h"}, "h"}.firstTag(); };
    const auto capturing = [captured = ParameterNone{{"c"}, "h"}] { return captured.firstTag(); };
    EXPECT_EQ(firstTagOf(), "x");
    EXPECT_EQ(firstTagOf({{"z"}, ""}), "z");
    EXPECT_EQ(firstTagOfFlag<ParameterNone>(), "a");
    EXPECT_EQ(generic(1), "g");
    EXPECT_EQ(capturing(), "c");
}

TEST(DeclaredParameter, IsMadeOnTheHeap) {
    const auto unique = std::make_unique<ParameterNone>(Tags{"a"}, Text("help"));
    const std::unique_ptr<ParameterNone> plain(new ParameterNone{{"a", "b"}, "help"});
    EXPECT_EQ(unique->common.tagHelp, "help");
    EXPECT_EQ(plain->common.tags.size(), 2U);
}

TEST(DeclaredParameter, FromLiteralsMakesNoHeapCallNorDoesItsParameterProtocol) {
    const long before = heapCalls();
    const ParameterNone all{{"-a", "--all"}, "a help that is longer than a small string could be"};
    const ParameterNumber most{{"-m", "--most"}, "count", 1, 1000, "Show at most so many"};
    const ParameterString text{{"-t", "--text"}, "text", "help"};
    const ParameterUUID id{{"-i", "--id"}, "id", "help"};
    const ParameterFileURL file{{"-f", "--file"}, fileOrFolder, exist, "path", "help"};
    const ParameterProtocol held[] = {all, most, text, id, file};
    const ParameterProtocol copy = held[1];
    const bool isFound = copy.isEqualTo(most);
    EXPECT_EQ(heapCalls(), before);
    EXPECT_TRUE(isFound);
    EXPECT_EQ(held[0].common().tagHelp, all.common.tagHelp);
}

TEST(DeclaredParameter, FromAListIsCopiedWithoutAHeapCall) {
    const ParameterList sort{{"-s", "--sort"}, {"name", "date"}, "order", "help"};
    const ParameterProtocol held = sort;
    const long before = heapCalls();
    const ParameterList copy = sort;
    const ParameterProtocol heldCopy = held;
    EXPECT_EQ(heapCalls(), before);
    EXPECT_EQ(copy.validOptions().begin(), sort.validOptions().begin());
    EXPECT_TRUE(heldCopy.isEqualTo(sort));
}

// ---- tags ----

TEST(TagsInBraces, AreAsManyAsWereGiven) {
    const auto count = [](const ParameterNone& given) { return given.common.tags.size(); };
    EXPECT_EQ(count({{}, ""}), 0U);
    EXPECT_EQ(count({{}, {}}), 0U);
    EXPECT_EQ(count({{""}, ""}), 1U);
    EXPECT_EQ(count({{"a"}, ""}), 1U);
    EXPECT_EQ(count({{"a", "b"}, ""}), 2U);
    EXPECT_EQ(count({{"a", "b", "c"}, ""}), 3U);
    EXPECT_EQ(count({{"a", "b", "c", "d"}, ""}), 4U);
    EXPECT_EQ(count({{"a", "b", "c", "d", "e"}, ""}), 5U);
    EXPECT_EQ(count({{{"a", "b"}}, ""}), 2U);
}

TEST(TagsInBraces, AreMadeFromRunTimeTexts) {
    const std::string string = "q";
    const std::string_view view = string;
    const char* pointer = string.c_str();
    const Text text = "t";
    EXPECT_EQ((ParameterNone{{string}, string}.common.tags), (Tags{"q"}));
    EXPECT_EQ((ParameterNone{{string, "b"}, ""}.common.tags), (Tags{"q", "b"}));
    EXPECT_EQ((ParameterNone{{pointer}, ""}.common.tags), (Tags{"q"}));
    EXPECT_EQ((ParameterNone{{pointer, pointer}, ""}.common.tags), (Tags{"q", "q"}));
    EXPECT_EQ((ParameterNone{{view, view}, ""}.common.tags), (Tags{"q", "q"}));
    EXPECT_EQ((ParameterNone{{text}, text}.common.tags), (Tags{"t"}));
    EXPECT_EQ((ParameterNone{{text, text}, text}.common.tags), (Tags{"t", "t"}));
    EXPECT_EQ((ParameterNone{text, ""}.common.tags), (Tags{"t"}));
}

TEST(TagsFromAVector, AreTheVectorsTexts) {
    const std::vector<Text> texts{"a", "b", "c", "d", "e", "f"};
    const ParameterNone direct{texts, ""};
    const ParameterNone braced{{texts}, ""};
    const Tags tags = texts;
    EXPECT_EQ(direct.common.tags, tags);
    EXPECT_EQ(braced.common.tags, tags);
    EXPECT_EQ(tags.size(), 6U);
    EXPECT_EQ(tags[5], "f");
}

TEST(Tags, AreWalkedSearchedAndRead) {
    const Tags tags{"a", "b", "c"};
    std::string all;
    for (const Text& tag : tags) all += tag;
    EXPECT_EQ(all, "abc");
    EXPECT_EQ(tags[1], "b");
    EXPECT_EQ(tags.front(), "a");
    EXPECT_EQ(std::find(tags.begin(), tags.end(), "c"), tags.begin() + 2);
    EXPECT_EQ(std::vector<Text>(tags.begin(), tags.end()), (std::vector<Text>{"a", "b", "c"}));
}

TEST(Tags, StandCopyMoveAndSelfAssignment) {
    for (const Tags& tags : {Tags{"a"}, Tags{"a", "b", "c"}}) {
        Tags copy = tags;
        Tags& same = copy;
        copy = same;
        EXPECT_EQ(copy, tags);
        Tags moved = std::move(copy);
        EXPECT_EQ(moved, tags);
        copy = moved;
        EXPECT_EQ(copy, tags);
        Tags other{"x", "y", "z", "w"};
        std::swap(copy, other);
        EXPECT_EQ(other, tags);
        EXPECT_EQ(copy.size(), 4U);
    }
}

// ---- list options, in all accepted forms ----

std::vector<Text> wordsOf(const ParameterList& list) {
    std::vector<Text> words;
    for (const ParameterNone& option : list.validOptions()) words.push_back(option.firstTag());
    return words;
}
const std::vector<Text> aAndB{"a", "b"};

TEST(ListOptionsInBraces, AreWords) {
    EXPECT_EQ(wordsOf({{"-s"}, {"a", "b"}, "n", "h"}), aAndB);
    EXPECT_EQ(wordsOf({{"-s"}, {"a"}, "n", "h"}), (std::vector<Text>{"a"}));
    EXPECT_EQ(wordsOf({{"-s"}, {"a", "b", "c"}, "n", "h"}), (std::vector<Text>{"a", "b", "c"}));
}

TEST(ListOptionsInBraces, AreWordsOfRunTime) {
    const std::string string = "s";
    const std::string_view view = string;
    const char* pointer = string.c_str();
    const std::vector<Text> twice{"s", "s"};
    EXPECT_EQ(wordsOf({{"-s"}, {string, string}, "n", "h"}), twice);
    EXPECT_EQ(wordsOf({{"-s"}, {view, view}, "n", "h"}), twice);
    EXPECT_EQ(wordsOf({{"-s"}, {pointer, pointer}, "n", "h"}), twice);
    EXPECT_EQ(wordsOf({{"-s"}, {string, "b"}, "n", "h"}), (std::vector<Text>{"s", "b"}));
    EXPECT_EQ(wordsOf({{"-s"}, {Text("t"), "b"}, "n", "h"}), (std::vector<Text>{"t", "b"}));
}

TEST(ListOptionsInBraces, AreFlags) {
    const ParameterNone a{{"a"}, ""};
    const ParameterNone b{{"b"}, ""};
    EXPECT_EQ(wordsOf({{"-s"}, {a, b}, "n", "h"}), aAndB);
    EXPECT_EQ(wordsOf({{"-s"}, {a}, "n", "h"}), (std::vector<Text>{"a"}));
    EXPECT_EQ(wordsOf({{"-s"}, {ParameterNone{{"a"}, ""}, {{"b"}, ""}}, "n", "h"}), aAndB);
}

TEST(ListOptionsInBraces, AreTagsAndHelpOfEach) {
    EXPECT_EQ(wordsOf({{"-s"}, {{{"a"}, ""}, {{"b"}, "help"}}, "n", "h"}), aAndB);
    EXPECT_EQ(wordsOf({{"-s"}, {{{"a"}, ""}}, "n", "h"}), (std::vector<Text>{"a"}));
    const ParameterList list{{"-s"}, {{{"a", "x"}, "help of a"}, {{"b"}, ""}}, "n", "h"};
    EXPECT_EQ(wordsOf(list), aAndB);
    EXPECT_EQ(list.validOptions()[0].common.tags, (Tags{"a", "x"}));
    EXPECT_EQ(list.validOptions()[0].common.tagHelp, "help of a");
}

TEST(ListOptionsInBraces, MayBeNone) {
    const ParameterList none{{"-s"}, {}, "n", "h"};
    EXPECT_TRUE(none.validOptions().empty());
    EXPECT_EQ(none.validOptions().begin(), none.validOptions().end());
}

TEST(ListOptions, AreAVectorOrKeptAndGivenToSeveralLists) {
    std::vector<ParameterNone> vector{{{"a"}, ""}, {{"b"}, ""}};
    EXPECT_EQ(wordsOf({{"-s"}, vector, "n", "h"}), aAndB);
    EXPECT_EQ(wordsOf({{"-s"}, std::move(vector), "n", "h"}), aAndB);
    const ListOptions kept{"a", "b"};
    const ListOptions copied = {"a", "b"};
    EXPECT_EQ(wordsOf({{"-s"}, kept, "n", "h"}), aAndB);
    EXPECT_EQ(wordsOf({{"-s"}, {kept}, "n", "h"}), aAndB);
    EXPECT_EQ(wordsOf({{"-t"}, copied, "n", "h"}), aAndB);
}

// ---- what else is declared and stored ----

TEST(NumberParameter, TakesAnyWholeNumbersAsBounds) {
    constexpr std::size_t size = 5;
    const ParameterNumber sized{{"-n"}, "count", 0, size, "h"};
    const ParameterNumber wide{{"-n"},
                               "count",
                               std::numeric_limits<std::int64_t>::min(),
                               std::numeric_limits<std::int64_t>::max(),
                               "h"};
    EXPECT_EQ(sized.rangeMax(), 5);
    EXPECT_EQ(wide.rangeMin(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(wide.rangeMax(), std::numeric_limits<std::int64_t>::max());
}

TEST(FileParameter, HasItsCasesInPublicFields) {
    ParameterFileURL file{
        {"-f"}, ParameterFileURL::urlType::file, ParameterFileURL::existState::exist, "path", "h"};
    static_assert(sizeof(file.type) == 1 && sizeof(file.state) == 1);
    EXPECT_EQ(rawValue(file.type), "file");
    file.state = absent;
    switch (file.state) {
        case exist:
        case vague:
            FAIL();
        case absent:
            break;
    }
    EXPECT_EQ(fromRawValue<ParameterFileURL::existState>("absent"), absent);
    EXPECT_EQ(fromRawValue<ParameterFileURL::urlType>(std::string("folder")), folder);
    EXPECT_EQ(fromRawValue<ParameterFileURL::urlType>("Folder"), std::nullopt);
}

TEST(StoredValue, IsGivenAsAnyText) {
    const std::string string = "v";
    ParameterString text{{"-s"}, "n", "h"};
    text.storeUserValue("a");
    EXPECT_EQ(text.common.userValue, "a");
    text.storeUserValue(string);
    EXPECT_EQ(text.common.userValue, "v");
    ParameterProtocol held = text;
    held.storeUserValue(std::string_view("w"));
    EXPECT_EQ(held.common().userValue, "w");
    held.storeUserValue(string.c_str());
    EXPECT_EQ(held.common().userValue, "v");
    held.common().userValue = "z";
    EXPECT_EQ(held.as<ParameterString>()->common.userValue, "z");
}

TEST(CommonDetails, AreAnAggregate) {
    const commonDetails all{"h", {"-p"}, "v", true, "n"};
    const commonDetails named{.tagHelp = "h", .tags = {"-p"}, .userValue = "v"};
    const commonDetails bare{};
    EXPECT_NE(all, named);
    EXPECT_TRUE(named.hasParameter && bare.hasParameter);
    EXPECT_EQ(bare, commonDetails{});
    const std::unordered_set<commonDetails> set{all, named, bare, all};
    EXPECT_EQ(set.size(), 3U);
}

TEST(Kinds, AreAssigned) {
    ParameterNumber number{{"-n"}, "c", 1, 2, "h"};
    const ParameterNumber otherNumber{{"-m"}, "d", 3, 4, "h"};
    number = otherNumber;
    EXPECT_EQ(number.firstTag(), "-m");
    EXPECT_EQ(number.rangeMax(), 4);
    ParameterList list{{"-s"}, {"a"}, "n", "h"};
    ParameterList otherList{{"-t"}, {"b", "c"}, "n", "h"};
    std::swap(list, otherList);
    EXPECT_EQ(list.validOptions().size(), 2U);
    EXPECT_EQ(otherList.firstTag(), "-s");
}

// ---- Parameters in braces ----

TEST(ParametersInBraces, HoldWhatWasGiven) {
    const Parameters one{flag};
    const Parameters copied = {flag};
    const Parameters again{one};
    const Parameters mixed{flag, name, ParameterNone{{"x"}, ""}};
    const Parameters none{};
    EXPECT_EQ(one.size(), 1U);
    EXPECT_EQ(copied.size(), 1U);
    EXPECT_EQ(again.size(), 1U);
    EXPECT_EQ(mixed.size(), 3U);
    EXPECT_TRUE(mixed[1].isEqualTo(name));
    EXPECT_TRUE(none.empty());
}

TEST(ParametersInAVector, AreAddedOneByOneAndFromRanges) {
    const ParameterNone all[] = {{{"a"}, "h"}, {{"b"}, "h"}};
    Parameters list(std::begin(all), std::end(all));
    list.push_back(flag);
    list.emplace_back(name);
    list.push_back(ParameterNone{{"c"}, ""});
    list.insert(list.begin(), limit);
    ASSERT_EQ(list.size(), 6U);
    EXPECT_TRUE(list[0].isEqualTo(limit));
    EXPECT_TRUE(list[2].isEqualTo(all[1]));
    EXPECT_TRUE(list[4].isEqualTo(name));
    list.erase(list.begin() + 1);
    EXPECT_TRUE(list[1].isEqualTo(all[1]));
    const auto found = std::find_if(list.begin(), list.end(),
                                    [](const ParameterProtocol& p) { return p.isEqualTo(name); });
    EXPECT_EQ(found - list.begin(), 3);
}

TEST(DeclaredParameter, IsChosenByACondition) {
    const bool first = heapCalls() < 0;
    const ParameterProtocol chosen = first ? ParameterProtocol(flag) : name;
    const Parameters list = first ? Parameters{flag} : Parameters{};
    EXPECT_TRUE(chosen.isEqualTo(name));
    EXPECT_TRUE(list.empty());
}

}  // namespace
