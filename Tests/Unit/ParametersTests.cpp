#include "Optrella/Parameters.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Support/Death.hpp"
#include "Support/FakePlatform.hpp"

namespace {

using namespace Optrella;
using enum ParameterFileURL::urlType;
using enum ParameterFileURL::existState;
using Tests::platform;

template <class Kind>
Kind storing(Kind kind, const Text& value) {
    kind.storeUserValue(value);
    return kind;
}

std::vector<std::string> strings(const Tags& tags) {
    std::vector<std::string> texts;
    for (const Text& tag : tags) texts.push_back(tag.str());
    return texts;
}

// ---- Common details and the default operations ----

TEST(ParameterNone, ConstructorKeepsTagsInOrderAndHelpAndLeavesTheRestEmpty) {
    const ParameterNone flag{{"-f", "--force"}, "Do not ask"};
    EXPECT_EQ(strings(flag.common.tags), (std::vector<std::string>{"-f", "--force"}));
    EXPECT_EQ(flag.common.tagHelp, "Do not ask");
    EXPECT_EQ(flag.common.userValue, "");
    EXPECT_FALSE(flag.common.hasParameter);
    EXPECT_EQ(flag.common.parameterName, "");
}

TEST(CommonDetails, MadeWithoutFieldsHasNoTextsNoTagsAndTakesAValue) {
    const commonDetails common;
    EXPECT_EQ(common.tagHelp, "");
    EXPECT_TRUE(common.tags.empty());
    EXPECT_EQ(common.userValue, "");
    EXPECT_TRUE(common.hasParameter);
    EXPECT_EQ(common.parameterName, "");
}

TEST(CommonDetails, UnseededHashIsTheOneOfSeedZeroAndASeedChangesIt) {
    const commonDetails common{"help", {"-a"}, "", true, "name"};
    EXPECT_EQ(std::hash<commonDetails>()(common), hashValue(common, 0));
    EXPECT_EQ(hashValue(common, 7), hashValue(common, 7));
    EXPECT_NE(hashValue(common, 7), hashValue(common, 0));
}

TEST(ParameterNone, EqualityLooksAtWhetherAValueFollowsButNotAtItsName) {
    const ParameterNone flag{{"-f"}, "help"};
    ParameterNone other = flag;
    other.common.parameterName = "name";
    EXPECT_EQ(flag, other);
    other.common.hasParameter = true;
    EXPECT_NE(flag, other);
    EXPECT_FALSE(flag.isEqualTo(other));
}

TEST(ParameterNone, HashIsThatOfItsCommonDetails) {
    const ParameterNone flag{{"-f"}, "help"};
    EXPECT_EQ(std::hash<ParameterNone>()(flag), std::hash<commonDetails>()(flag.common));
    EXPECT_EQ(hashValue(flag, 3), hashValue(flag.common, 3));
}

TEST(StoreUserValue, ChangesTheUserValueAndNothingElse) {
    const ParameterFileURL declared{{"-f"}, folder, absent, "path", "help"};
    for (const char* value : {"x", ""}) {
        const ParameterFileURL given = storing(declared, value);
        commonDetails expected = declared.common;
        expected.userValue = value;
        EXPECT_EQ(given.common, expected);
        EXPECT_EQ(given.type, folder);
        EXPECT_EQ(given.state, absent);
    }
}

// ---- Tags ----

TEST(Tags, KeepAnyNumberOfTextsThroughCopiesAndMoves) {
    for (std::size_t count = 0; count <= 7; ++count) {
        std::vector<Text> texts;
        for (std::size_t i = 0; i < count; ++i) texts.push_back("tag " + std::to_string(i));
        const Tags tags(texts);
        Tags copy = tags;
        Tags moved = std::move(copy);
        Tags assigned{"x", "y", "z"};
        assigned = moved;
        Tags few{"x"};
        few = std::move(moved);
        EXPECT_EQ(tags.size(), count);
        EXPECT_EQ(assigned, tags);
        EXPECT_EQ(few, tags);
        EXPECT_EQ(strings(few), std::vector<std::string>(texts.begin(), texts.end()));
    }
}

TEST(Tags, MayBeAssignedFromManyWhenTheyAreFewAndTheOtherWayRound) {
    const auto heap = [](const char* text) { return Text(std::string(text)); };  // can leak
    Tags few{heap("a"), heap("b")};
    Tags many{heap("x"), heap("y"), heap("z")};
    const Tags before = few;
    few = many;
    many = before;
    EXPECT_EQ(strings(few), (std::vector<std::string>{"x", "y", "z"}));
    EXPECT_EQ(strings(many), (std::vector<std::string>{"a", "b"}));
    few = std::move(many);
    EXPECT_EQ(few, before);
}

TEST(Tags, MovedFromIsEmptyAndCanBeUsedAgain) {
    Tags many{"a", "b", "c", "d"};
    const Tags taken = std::move(many);
    EXPECT_TRUE(many.empty());
    many = {"x", "y"};
    EXPECT_EQ(many[1], "y");
    EXPECT_EQ(taken.size(), 4U);
}

TEST(Tags, CopiesAreIndependent) {
    const Tags tags{"a", "b", "c"};
    Tags copy = tags;
    *copy.begin() = "other";
    EXPECT_EQ(tags.front(), "a");
    EXPECT_EQ(copy.front(), "other");
}

TEST(Tags, DifferFromTheirBeginning) {
    EXPECT_FALSE(Tags("a") == Tags("a", "b"));
    EXPECT_FALSE(Tags("a", "b") == Tags("a"));
    EXPECT_FALSE(Tags() == Tags(""));
}

TEST(Tags, FewOrManyMayBeChangedInPlace) {
    Tags few{"a", "b"};
    Tags many{"a", "b", "c"};
    few.end()[-1] = "last";
    many.end()[-1] = "last";
    EXPECT_EQ(strings(few), (std::vector<std::string>{"a", "last"}));
    EXPECT_EQ(strings(many), (std::vector<std::string>{"a", "b", "last"}));
}

TEST(Tags, StopSilentlyAfterTheLast) {
    const Tags tags{"a"};
    EXPECT_SILENT_STOP(tags[1]);
    EXPECT_SILENT_STOP(Tags().front());
}

// ---- The kinds that take a value ----

TEST(ValueKinds, ConstructorsSetHasParameterAndAnEmptyUserValue) {
    const Parameters kinds{ParameterString{{"-x", "-y"}, "name", "help"},
                           ParameterUUID{{"-x", "-y"}, "name", "help"},
                           ParameterNumber{{"-x", "-y"}, "name", 1, 2, "help"},
                           ParameterList{{"-x", "-y"}, {"a"}, "name", "help"},
                           ParameterFileURL{{"-x", "-y"}, file, exist, "name", "help"}};
    const commonDetails expected{"help", {"-x", "-y"}, "", true, "name"};
    for (const ParameterProtocol& parameter : kinds) EXPECT_EQ(parameter.common(), expected);
}

TEST(ParameterNumber, IsMinusOneForWhatIsNoNumberOf64Bits) {
    const auto value = [](const char* text) {
        return storing(ParameterNumber{{"-n"}, "n", 1, 10, ""}, text).getValue();
    };
    EXPECT_EQ(value("+42"), 42);
    EXPECT_EQ(value("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
    for (const char* text :
         {"", "-", "word", "4 2", "9223372036854775808", "99999999999999999999"}) {
        EXPECT_EQ(value(text), -1) << text;
    }
}

// ---- Lists ----

ParameterList sortOrder(ListOptions options, const Text& word) {
    return storing(ParameterList{{"-s"}, std::move(options), "order", "Sort order"}, word);
}

TEST(ParameterList, AcceptsAChoiceAndReturnsItsOption) {
    const ParameterList mode =
        sortOrder({ParameterNone{{"read"}, "Look"}, ParameterNone{{"write"}, "Change"}}, "write");
    EXPECT_EQ(mode.validate(), std::nullopt);
    EXPECT_EQ(mode.getValue(), (ParameterNone{{"write"}, "Change"}));
}

TEST(ParameterList, ValidateNamesEveryChoiceHoweverManyThereAre) {
    std::vector<ParameterNone> options;
    std::string message = "Item x is not a valid option. It must be one of: ";
    for (int i = 0; i < 1000; ++i) {
        options.push_back({{std::to_string(i)}, ""});
        message += (i > 0 ? ", " : "") + std::to_string(i);
    }
    EXPECT_EQ(sortOrder(options, "x").validate(), message);
}

TEST(ParameterList, MessageWithoutOptionsEndsInOneOf) {
    EXPECT_EQ(sortOrder(std::vector<ParameterNone>(), "x").validate(),
              "Item x is not a valid option. It must be one of");
}

TEST(ParameterList, TheChosenOptionIsTheDeclaredOneWithoutWhatTheUserTyped) {
    EXPECT_EQ(sortOrder({"a"}, "a").getValue().common.userValue, "");
}

// ---- Paths ----

class ParameterFileURLTest : public Tests::PolicyTest {
protected:
    static std::optional<Text> validated(ParameterFileURL::urlType type,
                                         ParameterFileURL::existState state, const Text& path) {
        return storing(ParameterFileURL{{"-f"}, type, state, "path", ""}, path).validate();
    }
};

TEST_F(ParameterFileURLTest, VagueAcceptsAnythingWithoutAskingTheFileSystem) {
    platform().existingPaths = {"p"};
    for (const char* path : {"", "p", "missing", "\xFF"}) {
        EXPECT_EQ(validated(file, vague, path), std::nullopt);
    }
    EXPECT_TRUE(platform().existenceQuestions.empty());
}

TEST_F(ParameterFileURLTest, ExistAndAbsentAskExactlyOnceForThePathAsTyped) {
    EXPECT_NE(validated(file, exist, "~/ a/../\xFF"), std::nullopt);
    EXPECT_EQ(platform().existenceQuestions, (std::vector<std::string>{"~/ a/../\xFF"}));
    EXPECT_EQ(validated(file, absent, "b"), std::nullopt);
    EXPECT_EQ(platform().existenceQuestions, (std::vector<std::string>{"~/ a/../\xFF", "b"}));
}

TEST_F(ParameterFileURLTest, AbsentRefusesWhatExists) {
    platform().existingPaths = {"p"};
    EXPECT_EQ(validated(file, absent, "p"), "p must not exist");
}

TEST_F(ParameterFileURLTest, APathThatHoldsANULDoesNotExist) {
    platform().existingPaths = {"here"};
    const std::string path("here\0x", 6);
    EXPECT_EQ(validated(file, exist, path), path + " does not exist");
    EXPECT_EQ(validated(file, absent, path), std::nullopt);
}

TEST(PathEnumerations, HaveTheirNamesAsRawValues) {
    EXPECT_EQ(rawValue(file), "file");
    EXPECT_EQ(rawValue(folder), "folder");
    EXPECT_EQ(rawValue(fileOrFolder), "fileOrFolder");
    EXPECT_EQ(rawValue(exist), "exist");
    EXPECT_EQ(rawValue(absent), "absent");
    EXPECT_EQ(rawValue(vague), "vague");
}

TEST(PathEnumerationsDeathTest, OtherValuesStopTheProcess) {
    constexpr auto noType = static_cast<ParameterFileURL::urlType>(3);
    constexpr auto noState = static_cast<ParameterFileURL::existState>(3);
    EXPECT_SILENT_STOP(rawValue(noType));
    EXPECT_SILENT_STOP(rawValue(noState));
    EXPECT_SILENT_STOP(ParameterFileURL({"-f"}, file, noState, "path", "").validate());
}

TEST(PathEnumerations, AreOneByteWideAndHash) {
    static_assert(sizeof(ParameterFileURL::urlType) == 1);
    static_assert(sizeof(ParameterFileURL::existState) == 1);
    EXPECT_EQ((std::unordered_set{file, folder, file}).size(), 2U);
    EXPECT_EQ((std::unordered_set{exist, absent, vague, vague}).size(), 3U);
}

// ---- ParameterProtocol ----

TEST(ParameterProtocol, SizesStayWhatADeclarationWasMeasuredWith) {
    static_assert(sizeof(Text) == 16);
    static_assert(sizeof(commonDetails) == 96);
    static_assert(sizeof(ParameterNumber) == 112);
    static_assert(sizeof(ParameterProtocol) == 128);
}

}  // namespace
