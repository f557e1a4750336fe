#include "Optrella/Parameters.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <unordered_set>

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

TEST(CommonDetails, EqualityLooksAtEachField) {
    const commonDetails common{"help", {"-a", "-b"}, "value", true, "name"};
    EXPECT_EQ(common, commonDetails(common));
    commonDetails other = common;
    other.tagHelp = "Help";
    EXPECT_NE(common, other);
    other = common;
    other.tags = {"-b", "-a"};
    EXPECT_NE(common, other);
    other = common;
    other.tags = {"-a"};
    EXPECT_NE(common, other);
    other = common;
    other.userValue = "";
    EXPECT_NE(common, other);
    other = common;
    other.hasParameter = false;
    EXPECT_NE(common, other);
    other = common;
    other.parameterName = "nam";
    EXPECT_NE(common, other);
}

TEST(CommonDetails, EqualRecordsHashAlikeEvenWhenTheirTextsAreOnlyEquivalent) {
    const commonDetails composed{"\u00E9", {"\u212A"}, "\u00C5", true, "\uAC00"};
    const commonDetails decomposed{"e\u0301", {"K"}, "A\u030A", true, "\u1100\u1161"};
    ASSERT_EQ(composed, decomposed);
    EXPECT_EQ(std::hash<commonDetails>()(composed), std::hash<commonDetails>()(decomposed));
}

TEST(CommonDetails, EachFieldAndTheBoundariesOfTagsChangeTheHash) {
    const commonDetails common{"help", {"ab", "c"}, "value", true, "name"};
    std::unordered_set<std::size_t> hashes{hashValue(common)};
    commonDetails other = common;
    other.tagHelp = "other";
    hashes.insert(hashValue(other));
    other = common;
    other.tags = {"a", "bc"};
    hashes.insert(hashValue(other));
    other.tags = {"abc"};
    hashes.insert(hashValue(other));
    other = common;
    other.userValue = "other";
    hashes.insert(hashValue(other));
    other = common;
    other.hasParameter = false;
    hashes.insert(hashValue(other));
    other = common;
    other.parameterName = "other";
    hashes.insert(hashValue(other));
    EXPECT_EQ(hashes.size(), 7U);
}

TEST(CommonDetails, UnseededHashIsTheOneOfSeedZeroAndASeedChangesIt) {
    const commonDetails common{"help", {"-a"}, "", true, "name"};
    EXPECT_EQ(std::hash<commonDetails>()(common), hashValue(common, 0));
    EXPECT_EQ(hashValue(common, 7), hashValue(common, 7));
    EXPECT_NE(hashValue(common, 7), hashValue(common, 0));
}

TEST(ParameterNone, EqualityLeavesOutUserValueAndParameterName) {
    const ParameterNone flag{{"-f"}, "help"};
    ParameterNone other = storing(flag, "x");
    other.common.parameterName = "name";
    EXPECT_EQ(flag, other);
}

TEST(ParameterNone, EqualityLooksAtTagsHelpAndHasParameter) {
    const ParameterNone flag{{"-f", "-g"}, "help"};
    EXPECT_NE(flag, (ParameterNone{{"-g", "-f"}, "help"}));
    EXPECT_NE(flag, (ParameterNone{{"-f", "-g"}, "helq"}));
    ParameterNone takesValue = flag;
    takesValue.common.hasParameter = true;
    EXPECT_NE(flag, takesValue);
}

TEST(ParameterNone, HashFollowsAllOfCommonAndSoNotEquality) {
    const ParameterNone flag{{"-f"}, "help"};
    const ParameterNone given = storing(flag, "x");
    ASSERT_EQ(flag, given);
    EXPECT_EQ(std::hash<ParameterNone>()(flag), std::hash<commonDetails>()(flag.common));
    EXPECT_EQ(hashValue(flag, 3), hashValue(flag.common, 3));
    EXPECT_NE(std::hash<ParameterNone>()(flag), std::hash<ParameterNone>()(given));
}

TEST(IsEqualTo, HoldsBetweenADeclarationAndItsFilledInCopy) {
    const ParameterString name{{"-n", "--name"}, "item", "The name"};
    for (const char* value : {"", "x", "-n", "\n"}) {
        EXPECT_TRUE(name.isEqualTo(storing(name, value))) << value;
        EXPECT_TRUE(storing(name, value).isEqualTo(name)) << value;
    }
}

TEST(IsEqualTo, FailsBetweenDifferentKindsWithTheSameCommon) {
    ParameterNone none{{"-x"}, "help"};
    ParameterString string{{"-x"}, "name", "help"};
    ParameterUUID uuid{{"-x"}, "name", "help"};
    ParameterNumber number{{"-x"}, "name", 1, 2, "help"};
    ParameterList list{{"-x"}, {"a"}, "name", "help"};
    ParameterFileURL url{{"-x"}, file, exist, "name", "help"};
    none.common = string.common;
    const Parameters kinds{none, string, uuid, number, list, url};
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        for (std::size_t j = 0; j < kinds.size(); ++j) {
            ASSERT_EQ(kinds[i].common(), kinds[j].common());
            EXPECT_EQ(kinds[i].isEqualTo(kinds[j]), i == j) << i << " and " << j;
        }
    }
}

TEST(IsEqualTo, LooksAtTheOrderOfTagsHelpAndHasParameterAlone) {
    const ParameterString name{{"-n", "--name"}, "item", "The name"};
    EXPECT_FALSE(name.isEqualTo(ParameterString{{"--name", "-n"}, "item", "The name"}));
    EXPECT_FALSE(name.isEqualTo(ParameterString{{"-n"}, "item", "The name"}));
    EXPECT_FALSE(name.isEqualTo(ParameterString{{"-n", "--name"}, "item", "The namf"}));
    EXPECT_TRUE(name.isEqualTo(ParameterString{{"-n", "--name"}, "other", "The name"}));
    ParameterString flag = name;
    flag.common.hasParameter = false;
    EXPECT_FALSE(name.isEqualTo(flag));
}

TEST(IsEqualTo, LeavesOutTheFieldsOfTheKind) {
    EXPECT_TRUE(
        (ParameterNumber{{"-n"}, "n", 1, 2, ""}).isEqualTo(ParameterNumber{{"-n"}, "n", 3, 4, ""}));
    EXPECT_TRUE((ParameterList{{"-l"}, {"a"}, "n", ""})
                    .isEqualTo(ParameterList{{"-l"}, {"b", "c"}, "n", ""}));
    EXPECT_TRUE((ParameterFileURL{{"-f"}, file, exist, "n", ""})
                    .isEqualTo(ParameterFileURL{{"-f"}, folder, absent, "n", ""}));
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

TEST(DefaultValidate, AcceptsEveryTextOfAFlagAStringANumberAndAUUID) {
    const Parameters kinds{ParameterNone{{"-x"}, ""}, ParameterString{{"-x"}, "", ""},
                           ParameterNumber{{"-x"}, "", 1, 10, ""}, ParameterUUID{{"-x"}, "", ""}};
    for (ParameterProtocol parameter : kinds) {
        for (const char* value : {"", "500", "xyz", "\xFF", "-1"}) {
            parameter.storeUserValue(value);
            EXPECT_EQ(parameter.validate(), std::nullopt) << value;
        }
    }
}

TEST(FirstTag, IsThePrimaryOne) {
    EXPECT_EQ((ParameterNone{{"-f", "--force"}, ""}).firstTag(), "-f");
    EXPECT_EQ(ParameterProtocol(ParameterUUID{{"--id", "-i", "-u"}, "id", ""}).firstTag(), "--id");
}

TEST(FirstTag, StopsSilentlyWithoutTags) {
    const ParameterNone flag{{}, "help"};
    EXPECT_SILENT_STOP(flag.firstTag());
    EXPECT_SILENT_STOP(ParameterProtocol(flag).firstTag());
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

// ---- Strings, numbers, UUIDs ----

TEST(ValueKinds, ConstructorsSetHasParameterAndAnEmptyUserValue) {
    const Parameters kinds{ParameterString{{"-x", "-y"}, "name", "help"},
                           ParameterUUID{{"-x", "-y"}, "name", "help"},
                           ParameterNumber{{"-x", "-y"}, "name", 1, 2, "help"},
                           ParameterList{{"-x", "-y"}, {"a"}, "name", "help"},
                           ParameterFileURL{{"-x", "-y"}, file, exist, "name", "help"}};
    const commonDetails expected{"help", {"-x", "-y"}, "", true, "name"};
    for (const ParameterProtocol& parameter : kinds) EXPECT_EQ(parameter.common(), expected);
}

TEST(ParameterNumber, KeepsBothBoundsAndTheDefaultOfMinusOne) {
    const ParameterNumber number{{"-n"}, "n", -5, 10, ""};
    EXPECT_EQ(number.rangeMin(), -5);
    EXPECT_EQ(number.rangeMax(), 10);
    EXPECT_EQ(number.defaultValue(), -1);
}

TEST(ParameterNumber, ReadsAnOptionalSignAndDigits) {
    const struct {
        const char* text;
        std::int64_t value;
    } cases[] = {{"42", 42},
                 {"+42", 42},
                 {"-42", -42},
                 {"0", 0},
                 {"-0", 0},
                 {"+0", 0},
                 {"007", 7},
                 {"00000000000000000000000000000000000042", 42},
                 {"-1", -1},
                 {"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
                 {"-9223372036854775808", std::numeric_limits<std::int64_t>::min()}};
    for (const auto& [text, value] : cases) {
        EXPECT_EQ(storing(ParameterNumber{{"-n"}, "n", 1, 10, ""}, text).getValue(), value) << text;
    }
}

TEST(ParameterNumber, GivesTheDefaultForAnyOtherText) {
    for (const char* text : {"",
                             "+",
                             "-",
                             " 42",
                             "42 ",
                             "4 2",
                             "\t42",
                             "42\n",
                             "1e3",
                             "0x10",
                             "3.0",
                             "--5",
                             "+-5",
                             "-+5",
                             "5-",
                             "1_000",
                             "1,000",
                             "word",
                             "\u0661\u0662",
                             "\uFF14\uFF12",
                             "4\u0301",
                             "9223372036854775808",
                             "-9223372036854775809",
                             "99999999999999999999999",
                             "\xFF"}) {
        EXPECT_EQ(storing(ParameterNumber{{"-n"}, "n", 1, 10, ""}, text).getValue(), -1) << text;
    }
    EXPECT_EQ(storing(ParameterNumber{{"-n"}, "n", 1, 10, ""}, std::string("42\0", 3)).getValue(),
              -1);
}

TEST(ParameterNumber, ReturnsANumberOutsideItsBoundsAsItStands) {
    const ParameterNumber number = storing(ParameterNumber{{"-n"}, "n", 1, 10, ""}, "500");
    EXPECT_EQ(number.getValue(), 500);
    EXPECT_EQ(number.validate(), std::nullopt);
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

TEST(ParameterList, TellsCasesApart) {
    EXPECT_EQ(sortOrder({"read", "write"}, "Write").validate(),
              "Item Write is not a valid option. It must be one of: read, write");
}

TEST(ParameterList, ComparesFirstTagsOnly) {
    const ListOptions options{ParameterNone{{"a", "x"}, ""}, ParameterNone{{"b"}, ""}};
    EXPECT_EQ(sortOrder(options, "x").validate(),
              "Item x is not a valid option. It must be one of: a, b");
}

TEST(ParameterList, MessageForASingleOptionHasNoSeparator) {
    EXPECT_EQ(sortOrder({"a"}, "x").validate(),
              "Item x is not a valid option. It must be one of: a");
}

TEST(ParameterList, MessageWithoutOptionsEndsInOneOf) {
    EXPECT_EQ(sortOrder({}, "x").validate(), "Item x is not a valid option. It must be one of");
}

TEST(ParameterList, ComparesAnEmptyWordLikeAnyOther) {
    EXPECT_EQ(sortOrder({"a"}, "").validate(), "Item  is not a valid option. It must be one of: a");
    EXPECT_EQ(sortOrder({"a", ""}, "").validate(), std::nullopt);
}

TEST(ParameterList, TakesACanonicallyEquivalentWord) {
    const ParameterList list = sortOrder({"caf\u00E9"}, "cafe\u0301");
    EXPECT_EQ(list.validate(), std::nullopt);
    EXPECT_EQ(list.getValue().firstTag(), "caf\u00E9");
}

TEST(ParameterList, MessageShowsTheWordAsItStands) {
    EXPECT_EQ(sortOrder({"a"}, "x\n\"\xFF").validate(),
              "Item x\n\"\xFF is not a valid option. It must be one of: a");
}

TEST(ParameterList, MessageLosesUserPerceivedCharacters) {
    // U+0600 takes the comma after it into its own character.
    EXPECT_EQ(sortOrder({"a\u0600"}, "x").validate(),
              "Item x is not a valid option. It must be one of: a");
}

TEST(ParameterList, ReturnsTheFirstOfEqualOptions) {
    const ListOptions options{ParameterNone{{"a"}, "first"}, ParameterNone{{"a"}, "second"}};
    EXPECT_EQ(sortOrder(options, "a").getValue().common.tagHelp, "first");
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

TEST(ParameterList, TheChosenOptionIsTheDeclaredOneWithoutWhatTheUserTyped) {
    EXPECT_EQ(sortOrder({"a"}, "a").getValue().common.userValue, "");
}

TEST(ParameterList, ValidateStopsSilentlyAtAnOptionWithoutTags) {
    const ListOptions options{ParameterNone{{"a"}, ""}, ParameterNone{{}, ""}};
    EXPECT_SILENT_STOP(sortOrder(options, "x").validate());
}

TEST(ParameterList, ValidateDoesNotReachAnOptionAfterTheChoice) {
    const ListOptions options{ParameterNone{{"a"}, ""}, ParameterNone{{}, ""}};
    EXPECT_EQ(sortOrder(options, "a").validate(), std::nullopt);
    EXPECT_EQ(sortOrder(options, "a").getValue().firstTag(), "a");
}

TEST(ParameterList, GetValueStopsSilentlyWithoutAMatchingOption) {
    EXPECT_SILENT_STOP(sortOrder({"a"}, "x").getValue());
    EXPECT_SILENT_STOP(sortOrder({}, "x").getValue());
    EXPECT_SILENT_STOP(sortOrder({ParameterNone{{}, ""}}, "x").getValue());
}

TEST(ListOptions, KeepTheirOrderAndAreSharedByCopies) {
    const ParameterList list{{"-s"}, {"name", "date", "size"}, "order", ""};
    const ParameterList copy = list;
    ASSERT_EQ(copy.validOptions().size(), 3U);
    EXPECT_EQ(copy.validOptions()[0].firstTag(), "name");
    EXPECT_EQ(copy.validOptions()[2].firstTag(), "size");
    EXPECT_EQ(copy.validOptions().begin(), list.validOptions().begin());
}

TEST(ListOptions, MayBeNone) {
    const ListOptions none = std::vector<ParameterNone>();
    EXPECT_TRUE(none.empty());
    EXPECT_EQ(none.begin(), none.end());
}

// ---- Paths ----

class ParameterFileURLTest : public Tests::PolicyTest {
protected:
    static std::optional<Text> validated(ParameterFileURL::urlType type,
                                         ParameterFileURL::existState state, const Text& path) {
        return storing(ParameterFileURL{{"-f"}, type, state, "path", ""}, path).validate();
    }
};

TEST_F(ParameterFileURLTest, ExistAcceptsWhatExistsWhateverTheType) {
    platform().existingPaths = {"here"};
    for (const auto type : {file, folder, fileOrFolder}) {
        EXPECT_EQ(validated(type, exist, "here"), std::nullopt);
    }
}

TEST_F(ParameterFileURLTest, ExistRefusesWhatIsMissing) {
    EXPECT_EQ(validated(file, exist, "p"), "p does not exist");
    EXPECT_EQ(validated(file, exist, ""), " does not exist");
}

TEST_F(ParameterFileURLTest, AbsentRefusesWhatExists) {
    platform().existingPaths = {"p"};
    EXPECT_EQ(validated(file, absent, "p"), "p must not exist");
}

TEST_F(ParameterFileURLTest, AbsentAcceptsWhatIsMissing) {
    EXPECT_EQ(validated(folder, absent, "p"), std::nullopt);
}

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

TEST_F(ParameterFileURLTest, APathThatHoldsANULDoesNotExist) {
    platform().existingPaths = {"here"};
    const std::string path("here\0x", 6);
    EXPECT_EQ(validated(file, exist, path), path + " does not exist");
    EXPECT_EQ(validated(file, absent, path), std::nullopt);
}

TEST_F(ParameterFileURLTest, TypeAndStateMayBeChanged) {
    ParameterFileURL path{{"-f"}, file, exist, "path", ""};
    path.type = fileOrFolder;
    path.state = vague;
    EXPECT_EQ(path.type, fileOrFolder);
    EXPECT_EQ(path.validate(), std::nullopt);
}

TEST_F(ParameterFileURLTest, GetValueIsTheURLOfTheStoredPath) {
    const FileURL url =
        storing(ParameterFileURL{{"-f"}, file, exist, "path", ""}, "a b").getValue();
    EXPECT_EQ(url.text(), "file:///here/a%20b");
    EXPECT_EQ(url.path(), "/here/a b");
}

TEST(URLType, CaseAndTextBelongTogether) {
    for (const auto& [type, text] : {std::pair{file, "file"}, std::pair{folder, "folder"},
                                     std::pair{fileOrFolder, "fileOrFolder"}}) {
        EXPECT_EQ(rawValue(type), text);
        EXPECT_EQ(fromRawValue<ParameterFileURL::urlType>(text), type);
    }
}

TEST(URLType, NoOtherTextIsACase) {
    for (const char* text : {"File", "files", "fil", "", " file", "FOLDER", "exist"}) {
        EXPECT_EQ(fromRawValue<ParameterFileURL::urlType>(text), std::nullopt) << text;
    }
}

TEST(ExistState, CaseAndTextBelongTogether) {
    for (const auto& [state, text] :
         {std::pair{exist, "exist"}, std::pair{absent, "absent"}, std::pair{vague, "vague"}}) {
        EXPECT_EQ(rawValue(state), text);
        EXPECT_EQ(fromRawValue<ParameterFileURL::existState>(text), state);
    }
}

TEST(ExistState, NoOtherTextIsACase) {
    for (const char* text : {"Exist", "exists", "exis", "", "vague ", "file"}) {
        EXPECT_EQ(fromRawValue<ParameterFileURL::existState>(text), std::nullopt) << text;
    }
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

TEST(ParameterProtocol, CopiesAreIndependent) {
    const ParameterProtocol declared = ParameterString{{"-n"}, "name", ""};
    ParameterProtocol copy = declared;
    copy.storeUserValue("x");
    copy.common().tags = {"-m"};
    EXPECT_EQ(declared.common().userValue, "");
    EXPECT_EQ(declared.firstTag(), "-n");
    EXPECT_EQ(copy.as<ParameterString>()->common.userValue, "x");
}

TEST(ParameterProtocol, AsIsNullForAnotherKind) {
    const ParameterProtocol parameter = ParameterString{{"-n"}, "name", ""};
    EXPECT_NE(parameter.as<ParameterString>(), nullptr);
    EXPECT_EQ(parameter.as<ParameterUUID>(), nullptr);
}

TEST(ParameterProtocol, AsksTheKindsOwnValidate) {
    ParameterProtocol list = ParameterList{{"-l"}, {"a"}, "name", ""};
    list.storeUserValue("b");
    EXPECT_EQ(list.validate(), "Item b is not a valid option. It must be one of: a");
}

}  // namespace
