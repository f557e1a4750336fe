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

TEST(Fetch, AParameterThatTakesAValueIsNotTheSameWithoutOne) {
    const Parameters given{with(string, "x")};
    ParameterString noValue = string;
    noValue.common.hasParameter = false;
    EXPECT_FALSE(hasOptional(noValue, given));
    EXPECT_EQ(fetchOptionalString(noValue, given), std::nullopt);
}

TEST(Fetch, AChoiceIsTheChosenOption) {
    EXPECT_EQ(fetchOptionalListOption(list, {with(list, "date")}), (ParameterNone{{"date"}, ""}));
    EXPECT_EQ(fetchListOption(list, {with(list, "name")}).firstTag(), "name");
}

TEST(Fetch, AnUnknownChoiceStopsSilently) {
    EXPECT_SILENT_STOP(fetchOptionalListOption(list, {with(list, "size")}));
}

class FetchURLTest : public Tests::PolicyTest {};

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
