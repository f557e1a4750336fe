#include "Optrella/Fetch.hpp"

#include <gtest/gtest.h>

#include <vector>

#include "Optrella/Fetch/Search.hpp"
#include "Support/Death.hpp"
#include "Support/FakePlatform.hpp"

namespace {

using namespace Optrella;
using enum ParameterFileURL::urlType;
using enum ParameterFileURL::existState;

const ParameterNone flag{{"-f", "--flag"}, "A flag"};
const ParameterString string{{"-s", "--string"}, "text", "A text"};
const ParameterUUID uuid{{"-u"}, "id", "A UUID"};
const ParameterNumber number{{"-n"}, "n", 1, 10, "A number"};
const ParameterList list{{"-l"}, {"name", "date"}, "order", "A choice"};
const ParameterFileURL path{{"-p"}, file, vague, "path", "A path"};

template <class Kind>
Kind with(Kind kind, const Text& value) {
    kind.storeUserValue(value);
    return kind;
}

TEST(Fetch, FindsNothingInAnEmptyList) {
    const Parameters empty;
    EXPECT_FALSE(hasOptional(string, empty));
    EXPECT_FALSE(fetchOptionalNone(flag, empty));
    EXPECT_EQ(fetchOptionalString(string, empty), std::nullopt);
    EXPECT_EQ(fetchOptionalUUID(uuid, empty), std::nullopt);
    EXPECT_EQ(fetchOptionalNumber(number, empty), std::nullopt);
    EXPECT_EQ(fetchOptionalListOption(list, empty), std::nullopt);
    EXPECT_EQ(fetchOptionalURL(path, empty), std::nullopt);
}

TEST(Fetch, NonOptionalOperationsStopSilentlyWhenNothingWasGiven) {
    const Parameters given{with(flag, "")};
    EXPECT_SILENT_STOP(fetchString(string, given));
    EXPECT_SILENT_STOP(fetchUUID(uuid, given));
    EXPECT_SILENT_STOP(fetchNumber(number, given));
    EXPECT_SILENT_STOP(fetchListOption(list, given));
    EXPECT_SILENT_STOP(fetchURL(path, given));
}

TEST(Fetch, AFlagIsThereOrNot) {
    const ParameterNone other{{"-g"}, ""};
    const Parameters given{flag};
    EXPECT_TRUE(hasOptional(flag, given));
    EXPECT_TRUE(fetchOptionalNone(flag, given));
    EXPECT_FALSE(hasOptional(other, given));
    EXPECT_FALSE(fetchOptionalNone(other, given));
}

TEST(Fetch, HasOptionalTakesAnyKind) {
    const Parameters given{string, uuid, number, list, path};
    for (const ParameterProtocol& parameter : given) EXPECT_TRUE(hasOptional(parameter, given));
    EXPECT_FALSE(hasOptional(flag, given));
}

TEST(Fetch, UserValueAndParameterNameOfTheAskedOnePlayNoPart) {
    ParameterString asked = with(string, "other");
    asked.common.parameterName = "other";
    EXPECT_EQ(fetchOptionalString(asked, {with(string, "x")}), "x");
    EXPECT_TRUE(hasOptional(asked, {with(string, "x")}));
}

TEST(Fetch, HelpOrderOfTagsAndHasParameterOfTheAskedOneDo) {
    const Parameters given{with(string, "x")};
    ParameterString noValue = string;
    noValue.common.hasParameter = false;
    EXPECT_FALSE(hasOptional(ParameterString{{"-s", "--string"}, "text", "Another"}, given));
    EXPECT_FALSE(hasOptional(ParameterString{{"--string", "-s"}, "text", "A text"}, given));
    EXPECT_FALSE(hasOptional(noValue, given));
    EXPECT_EQ(fetchOptionalString(noValue, given), std::nullopt);
}

TEST(Fetch, AnEqualDeclarationOfAnotherCommandFindsTheParameter) {
    const ParameterString elsewhere{{"-s", "--string"}, "text", "A text"};
    EXPECT_EQ(fetchString(elsewhere, {with(string, "x")}), "x");
}

TEST(Fetch, TheSameTagsOfAnotherKindAreNotFound) {
    ParameterUUID twin{{"-s", "--string"}, "text", "A text"};
    EXPECT_EQ(fetchOptionalUUID(twin, {with(string, "x")}), std::nullopt);
    EXPECT_SILENT_STOP(fetchUUID(twin, {with(string, "x")}));
}

TEST(Fetch, OfAParameterGivenTwiceTheFirstCounts) {
    EXPECT_EQ(fetchOptionalString(string, {with(string, "a"), flag, with(string, "b")}), "a");
}

TEST(Fetch, AnEmptyTextIsPresent) {
    EXPECT_EQ(fetchOptionalString(string, {with(string, "")}), "");
    EXPECT_EQ(fetchString(string, {with(string, "")}), "");
}

TEST(Fetch, ATextComesExactlyAsTyped) {
    EXPECT_EQ(fetchString(string, {with(string, " \xFF\n ")}), " \xFF\n ");
}

TEST(Fetch, AUUIDIsReadFromItsText) {
    const Parameters given{with(uuid, "8f14e45f-ceea-467f-a0e6-9d3f1c2b7a55")};
    EXPECT_EQ(fetchOptionalUUID(uuid, given)->text(), "8F14E45F-CEEA-467F-A0E6-9D3F1C2B7A55");
    EXPECT_EQ(fetchUUID(uuid, given).text(), "8F14E45F-CEEA-467F-A0E6-9D3F1C2B7A55");
}

TEST(Fetch, ATextThatIsNoUUIDBecomesTheAllZeroOne) {
    for (const char* text : {"xyz", "", "8f14e45fceea467fa0e69d3f1c2b7a55"}) {
        EXPECT_EQ(fetchOptionalUUID(uuid, {with(uuid, text)}), UUID{}) << text;
        EXPECT_EQ(fetchUUID(uuid, {with(uuid, text)}).text(),
                  "00000000-0000-0000-0000-000000000000");
    }
}

TEST(Fetch, ANumberIsConvertedAndATextThatIsNoneGivesMinusOne) {
    EXPECT_EQ(fetchOptionalNumber(number, {with(number, "500")}), 500);
    EXPECT_EQ(fetchNumber(number, {with(number, "-7")}), -7);
    EXPECT_EQ(fetchOptionalNumber(number, {with(number, "five")}), -1);
    EXPECT_EQ(fetchNumber(number, {with(number, "")}), -1);
}

TEST(Fetch, AChoiceIsTheChosenOption) {
    EXPECT_EQ(fetchOptionalListOption(list, {with(list, "date")}), (ParameterNone{{"date"}, ""}));
    EXPECT_EQ(fetchListOption(list, {with(list, "name")}).firstTag(), "name");
}

TEST(Fetch, AChoiceOfTheGivenParameterNotOfTheAskedOneDecides) {
    const ParameterList asked{{"-l"}, {"other"}, "order", "A choice"};
    EXPECT_EQ(fetchListOption(asked, {with(list, "date")}).firstTag(), "date");
}

TEST(Fetch, AnUnknownChoiceStopsSilently) {
    EXPECT_SILENT_STOP(fetchOptionalListOption(list, {with(list, "size")}));
}

class FetchURLTest : public Tests::PolicyTest {};

TEST_F(FetchURLTest, IsTheURLOfThePath) {
    EXPECT_EQ(fetchOptionalURL(path, {with(path, "a")})->text(), "file:///here/a");
    EXPECT_EQ(fetchURL(path, {with(path, "/b")}).path(), "/b");
}

TEST_F(FetchURLTest, TestsNothing) {
    EXPECT_EQ(
        fetchURL(ParameterFileURL{{"-p"}, folder, exist, "path", "A path"}, {with(path, "missing")})
            .text(),
        "file:///here/missing");
    EXPECT_TRUE(Tests::platform().existenceQuestions.empty());
}

// A kind of a tool's own that equals every text parameter, but is asked only as an element.
struct Chameleon {
    commonDetails common{.tags = {"-c"}};
    [[nodiscard]] bool isEqualTo(const ParameterProtocol& other) const {
        return other.as<ParameterString>() != nullptr;
    }
};

TEST(FetchOptionalValidParameter, AsksTheElementNotTheWantedOne) {
    const Parameters given{flag, Chameleon()};
    EXPECT_EQ(Internal::fetchOptionalValidParameter(ParameterProtocol(string).view(), given),
              &given[1]);
    EXPECT_TRUE(hasOptional(string, given));
    EXPECT_FALSE(hasOptional(Chameleon(), {string}));
}

TEST(FetchOptionalValidParameter, AsksNoElementAfterTheFirstEqualOne) {
    struct Counted {
        commonDetails common;
        int* questions;
        [[nodiscard]] bool isEqualTo(const ParameterProtocol&) const { return ++*questions > 0; }
    };
    int first = 0;
    int second = 0;
    const Parameters given{Counted{{}, &first}, Counted{{}, &second}};
    EXPECT_EQ(Internal::fetchOptionalValidParameter(ParameterProtocol(string).view(), given),
              given.data());
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 0);
}

TEST(Fetch, AnEqualElementOfAnotherKindCountsAsNotFound) {
    const Parameters given{Chameleon(), with(string, "x")};
    EXPECT_EQ(fetchOptionalString(string, given), std::nullopt);
    EXPECT_SILENT_STOP(fetchString(string, given));
}

TEST(Fetch, AnEqualElementOfAnotherKindIsNoFlag) {
    struct Anything {
        commonDetails common;
        [[nodiscard]] bool isEqualTo(const ParameterProtocol&) const { return true; }
    };
    EXPECT_FALSE(fetchOptionalNone(flag, {Anything(), flag}));
}

TEST(FetchAll, FindsNothingInAListWithoutTheParameter) {
    const Parameters given{flag, with(ParameterString{{"-o"}, "text", "Another"}, "x")};
    EXPECT_EQ(fetchAllStrings(string, given), std::vector<Text>{});
    EXPECT_EQ(fetchAllUUIDs(uuid, given), std::vector<UUID>{});
    EXPECT_EQ(fetchAllNumbers(number, given), std::vector<std::int64_t>{});
    EXPECT_EQ(fetchAllListOptions(list, given).size(), 0U);
    EXPECT_EQ(fetchAllURLs(path, given), std::vector<FileURL>{});
}

TEST(FetchAll, GivesTheValuesInTheOrderOfTheArguments) {
    const Parameters given{with(string, "b"), flag,
                           with(string, "a"), with(number, "7"),
                           with(string, "b"), with(number, "x")};
    EXPECT_EQ(fetchAllStrings(string, given), (std::vector<Text>{"b", "a", "b"}));
    EXPECT_EQ(fetchAllNumbers(number, given), (std::vector<std::int64_t>{7, -1}));
}

TEST(FetchAll, GivesWhatTheSingleOperationsGive) {
    const Parameters given{with(uuid, "no"), with(list, "date"), with(path, "/a b")};
    EXPECT_EQ(fetchAllUUIDs(uuid, given), std::vector{fetchUUID(uuid, given)});
    ASSERT_EQ(fetchAllListOptions(list, given).size(), 1U);
    EXPECT_EQ(fetchAllListOptions(list, given)[0].firstTag(), "date");
    EXPECT_EQ(fetchAllURLs(path, given), std::vector{fetchURL(path, given)});
}

TEST(FetchAll, LeavesOutAnEqualElementOfAnotherKind) {
    EXPECT_EQ(fetchAllStrings(string, {Chameleon(), with(string, "x"), Chameleon()}),
              std::vector<Text>{"x"});
}

TEST(Fetch, ChangesNeitherTheAskedOneNorTheList) {
    const Parameters given{with(string, "x")};
    const commonDetails before = string.common;
    EXPECT_EQ(fetchString(string, given), "x");
    EXPECT_EQ(string.common, before);
    EXPECT_EQ(given[0].common().userValue, "x");
}

}  // namespace
