// Parameter kinds of a tool's own: what they replace is used, the rest is the default. And what a
// ParameterProtocol does with them and with the six.

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "HeapCalls.hpp"
#include "Optrella/Fetch.hpp"
#include "Optrella/Parameters.hpp"
#include "Support/Kinds.hpp"

using namespace Optrella;

namespace {

// ---- kinds of every make ----

struct Plain {
    commonDetails common;
};

struct WithConstructor {
    commonDetails common;

    constexpr WithConstructor(Tags tags, Text tagHelp)
        : common{.tagHelp = std::move(tagHelp), .tags = std::move(tags), .parameterName = "port"} {}
};

struct WithDefaults : ParameterDefaults<WithDefaults> {
    commonDetails common;

    constexpr WithDefaults(Tags tags, Text tagHelp)
        : common{.tagHelp = std::move(tagHelp), .tags = std::move(tags), .parameterName = "port"} {}
};

struct Big {
    commonDetails common;
    std::array<char, 500> more{};
};

struct alignas(64) Aligned {
    commonDetails common;
};

struct ThrowingMove {
    commonDetails common;

    explicit ThrowingMove(commonDetails details) : common(std::move(details)) {}
    ThrowingMove(const ThrowingMove&) = default;
    ThrowingMove(ThrowingMove&& other) noexcept(false) : common(std::move(other.common)) {}
    ThrowingMove& operator=(const ThrowingMove&) = default;
};

struct Final final {
    commonDetails common;

    [[nodiscard]] std::optional<Text> validate() const { return "final"; }
};

template <class Value>
struct Templated {
    commonDetails common;
    Value value{};
};

struct CommonLast {
    int before = 0;
    commonDetails common;
};

struct Base {
    commonDetails common;
};
struct Derived : Base {};

// ---- each kept as a value ----

template <class Kind>
Kind declaredKind() {
    if constexpr (std::is_constructible_v<Kind, Tags, Text>) {
        return Kind{{"-p"}, "help"};
    } else if constexpr (std::is_same_v<Kind, Derived>) {
        return Derived{{{.tagHelp = "help", .tags = {"-p"}}}};
    } else if constexpr (std::is_same_v<Kind, ThrowingMove>) {
        return ThrowingMove(commonDetails{.tagHelp = "help", .tags = {"-p"}});
    } else {
        Kind kind{};
        kind.common = {.tagHelp = "help", .tags = {"-p"}};
        return kind;
    }
}

template <class Kind>
class OwnKind : public testing::Test {
protected:
    Kind declared = declaredKind<Kind>();
};

using EveryMake =
    testing::Types<Plain, WithConstructor, WithDefaults, Big, Aligned, ThrowingMove, Final,
                   Templated<int>, Templated<std::string>, CommonLast, Base, Derived>;
TYPED_TEST_SUITE(OwnKind, EveryMake);

TYPED_TEST(OwnKind, IsFoundAgainByItsDeclaration) {
    ParameterProtocol given = this->declared;
    given.storeUserValue("80");
    const Parameters list{ParameterNone{{"-x"}, ""}, given};
    EXPECT_TRUE(given.isEqualTo(this->declared));
    EXPECT_TRUE(hasOptional(this->declared, list));
    EXPECT_EQ(given.common().userValue, "80");
    EXPECT_EQ(given.firstTag(), "-p");
}

TYPED_TEST(OwnKind, IsGivenBackToWhoNamesItAndToNobodyElse) {
    const ParameterProtocol held = this->declared;
    ASSERT_NE(held.as<TypeParam>(), nullptr);
    EXPECT_EQ(held.as<TypeParam>()->common, this->declared.common);
    EXPECT_EQ(held.as<ParameterString>(), nullptr);
    EXPECT_EQ(held.as<Templated<char>>(), nullptr);
}

TYPED_TEST(OwnKind, EqualsNoOtherKindOfTheSameCommon) {
    Templated<char> lookalike;
    lookalike.common = this->declared.common;
    EXPECT_FALSE(ParameterProtocol(this->declared).isEqualTo(lookalike));
    EXPECT_FALSE(ParameterProtocol(lookalike).isEqualTo(this->declared));
}

// ---- ParameterProtocol as a value, holding each of the six kinds and each of a tool's own ----

class ParameterValue : public testing::TestWithParam<ParameterProtocol> {
protected:
    ParameterProtocol declared = GetParam();
    // Of another kind than all but one of the parameters, and equal to none.
    ParameterProtocol other = ParameterUUID{{"-o"}, "other", "other"};
};

TEST_P(ParameterValue, IsEqualToItsCopyAfterStoring) {
    ParameterProtocol given = declared;
    given.storeUserValue("z");
    EXPECT_TRUE(given.isEqualTo(declared));
    EXPECT_TRUE(declared.isEqualTo(given));
    EXPECT_TRUE(hasOptional(declared, {other, given}));
    EXPECT_FALSE(given.isEqualTo(other));
}

TEST_P(ParameterValue, HasIndependentCopies) {
    ParameterProtocol copy = declared;
    copy.storeUserValue("z");
    copy.common().tags = {"t"};
    EXPECT_EQ(declared.common().userValue, "");
    EXPECT_EQ(declared.common(), GetParam().common());
    EXPECT_EQ(copy.firstTag(), "t");
}

TEST_P(ParameterValue, IsAssignedOverAnyKind) {
    ParameterProtocol assigned = other;
    assigned = declared;
    EXPECT_TRUE(assigned.isEqualTo(declared));
    EXPECT_TRUE(assigned.isSameKindAs(declared));
    assigned = other;
    EXPECT_TRUE(assigned.isEqualTo(other));
}

TEST_P(ParameterValue, SurvivesSelfAssignment) {
    ParameterProtocol& same = declared;
    declared = same;
    EXPECT_TRUE(declared.isEqualTo(GetParam()));
    declared = std::move(same);
    EXPECT_TRUE(declared.isEqualTo(GetParam()));
}

TEST_P(ParameterValue, CanBeAssignedAfterItWasMovedFrom) {
    const ParameterProtocol taken = std::move(declared);
    EXPECT_TRUE(taken.isEqualTo(GetParam()));
    declared = taken;
    EXPECT_TRUE(declared.isEqualTo(GetParam()));
}

TEST_P(ParameterValue, IsSwapped) {
    std::swap(declared, other);
    EXPECT_TRUE(other.isEqualTo(GetParam()));
    EXPECT_FALSE(declared.isEqualTo(GetParam()));
}

TEST_P(ParameterValue, IsCopiedThroughConst) {
    const ParameterProtocol constant = declared;
    const ParameterProtocol braced{constant};
    const ParameterProtocol moved{std::move(constant)};  // NOLINT: copies, as it must
    EXPECT_TRUE(braced.isEqualTo(constant));
    EXPECT_TRUE(moved.isEqualTo(constant));
    EXPECT_EQ(constant.common(), declared.common());
}

TEST_P(ParameterValue, StaysItselfInAGrowingVector) {
    Parameters list;
    for (int i = 0; i < 20; ++i) {
        list.push_back(i % 2 == 0 ? declared : other);
        list.back().storeUserValue(std::to_string(i));
    }
    list.erase(list.begin(), list.begin() + 2);
    for (std::size_t i = 0; i < list.size(); ++i) {
        EXPECT_TRUE(list[i].isEqualTo(i % 2 == 0 ? declared : other));
        EXPECT_EQ(list[i].common().userValue, std::to_string(i + 2));
    }
}

template <class... Kinds>
Parameters oneOfEvery(testing::Types<Kinds...>) {
    return {declaredKind<Kinds>()...};
}

INSTANTIATE_TEST_SUITE_P(OfEachKind, ParameterValue, testing::ValuesIn(Tests::oneOfEachKind()));
INSTANTIATE_TEST_SUITE_P(OfEveryMake, ParameterValue, testing::ValuesIn(oneOfEvery(EveryMake())));

// ---- declaring ----

constinit const Plain constantPlain{.common = {.tagHelp = "h", .tags = {"-p"}}};
constinit const WithConstructor constantWithConstructor{{"-p"}, "h"};
constinit const WithDefaults constantWithDefaults{{"-p"}, "h"};

TEST(OwnKindDeclaration, IsAConstantAndMakesNoHeapCall) {
    const long before = heapCalls();
    const ParameterProtocol held[] = {constantPlain, constantWithConstructor, constantWithDefaults};
    EXPECT_EQ(heapCalls(), before);
    EXPECT_EQ(held[0].firstTag(), "-p");
    EXPECT_EQ(held[2].common().parameterName, "port");
}

TEST(OwnKindDeclaration, HasTheDefaultOperationsAsMembersByInheritance) {
    WithDefaults port{{"-p"}, "h"};
    EXPECT_EQ(port.validate(), std::nullopt);
    EXPECT_EQ(port.firstTag(), "-p");
    port.storeUserValue("80");
    EXPECT_EQ(port.common.userValue, "80");
    EXPECT_TRUE(port.isEqualTo(constantWithDefaults));
    EXPECT_FALSE(port.isEqualTo(constantWithConstructor));
}

TEST(OwnKindDeclaration, HoldsAParameterListOfItsOwn) {
    struct Group {
        commonDetails common;
        Parameters members;
    };
    const ParameterProtocol held = Group{{.tags = {"-g"}}, {constantPlain, constantWithDefaults}};
    const ParameterProtocol copy = held;
    EXPECT_EQ(copy.as<Group>()->members.size(), 2U);
}

// ---- replaced operations ----

template <class Kind>
ParameterProtocol heldWith(Text value) {
    Kind kind{};
    kind.common.tags = {"-p"};
    ParameterProtocol held = kind;
    held.storeUserValue(std::move(value));
    return held;
}

struct Port {
    commonDetails common;

    [[nodiscard]] std::optional<Text> validate() const {
        if (common.userValue == "80") return std::nullopt;
        return "no port";
    }
};

TEST(OwnValidate, IsUsedInPlaceOfTheDefault) {
    EXPECT_EQ(heldWith<Port>("80").validate(), std::nullopt);
    EXPECT_EQ(heldWith<Port>("81").validate(), "no port");
    EXPECT_EQ(heldWith<Plain>("81").validate(), std::nullopt);
    EXPECT_EQ(heldWith<Final>("81").validate(), "final");
}

struct PortWithDefaults : ParameterDefaults<PortWithDefaults> {
    commonDetails common;

    [[nodiscard]] std::optional<Text> validate() const { return "own"; }
};

TEST(OwnValidate, HidesTheInheritedDefault) {
    EXPECT_EQ(PortWithDefaults().validate(), "own");
    EXPECT_EQ(heldWith<PortWithDefaults>("").validate(), "own");
}

struct Overloaded {
    commonDetails common;

    [[nodiscard]] std::optional<Text> validate() const { return "right"; }
    [[nodiscard]] bool validate(int) const { return false; }
};

TEST(OwnValidate, MayHaveOverloads) { EXPECT_EQ(heldWith<Overloaded>("").validate(), "right"); }

struct AnotherName {
    commonDetails common;

    [[nodiscard]] std::optional<Text> Validate() const { return "never asked"; }
};

TEST(OwnValidate, OfAnotherSpellingIsAnotherOperation) {
    EXPECT_EQ(heldWith<AnotherName>("").validate(), std::nullopt);
}

struct DerivedPort : Port {};

TEST(OwnValidate, IsInherited) {
    EXPECT_EQ(heldWith<DerivedPort>("81").validate(), "no port");
    EXPECT_TRUE(heldWith<DerivedPort>("81").isEqualTo(heldWith<DerivedPort>("80")));
    EXPECT_FALSE(heldWith<DerivedPort>("80").isEqualTo(heldWith<Port>("80")));
}

struct ByTagAlone {
    commonDetails common;

    [[nodiscard]] bool isEqualTo(const ParameterProtocol& other) const {
        return other.common().tags == common.tags;
    }
};

TEST(OwnIsEqualTo, IsUsedInPlaceOfTheDefault) {
    const ParameterProtocol byTag = heldWith<ByTagAlone>("");
    const ParameterNone flag{{"-p"}, "another help"};
    EXPECT_TRUE(byTag.isEqualTo(flag));
    EXPECT_FALSE(byTag.isEqualTo(ParameterNone{{"-q"}, ""}));
    EXPECT_FALSE(ParameterProtocol(flag).isEqualTo(byTag));
}

struct Doubling {
    commonDetails common;

    void storeUserValue(Text newValue) { common.userValue = newValue.str() + newValue.str(); }
};
struct DoublingByReference {
    commonDetails common;

    void storeUserValue(const Text& newValue) {
        common.userValue = newValue.str() + newValue.str();
    }
};
struct DoublingByView {
    commonDetails common;

    void storeUserValue(std::string_view value) {
        common.userValue = std::string(value) + std::string(value);
    }
};
struct DoublingByMove {
    commonDetails common;

    void storeUserValue(Text newValue) { common.userValue = newValue.str().append(newValue); }
};

TEST(OwnStoreUserValue, IsUsedInPlaceOfTheDefault) {
    EXPECT_EQ(heldWith<Doubling>("q").common().userValue, "qq");
    EXPECT_EQ(heldWith<DoublingByReference>("q").common().userValue, "qq");
    EXPECT_EQ(heldWith<DoublingByView>("q").common().userValue, "qq");
    EXPECT_EQ(heldWith<DoublingByMove>("q").common().userValue, "qq");
}

TEST(OwnStoreUserValue, IsKnownToReplaceTheDefault) {
    EXPECT_FALSE(heldWith<Doubling>("").storesByDefault());
    EXPECT_TRUE(heldWith<Plain>("").storesByDefault());
    EXPECT_TRUE(heldWith<PortWithDefaults>("").storesByDefault());
    EXPECT_TRUE(ParameterProtocol(ParameterString{{"-s"}, "n", "h"}).storesByDefault());
}

// ---- a kind whose copy fails ----

struct Uncopyable : std::runtime_error {
    Uncopyable() : std::runtime_error("no copy") {}
};
struct FailingCopy {
    commonDetails common{.tags = {"-p"}};
    bool fails = false;

    FailingCopy() = default;
    FailingCopy(const FailingCopy& other) : common(other.common), fails(other.fails) {
        if (fails) throw Uncopyable();
    }
    FailingCopy(FailingCopy&&) noexcept = default;
    FailingCopy& operator=(const FailingCopy&) = default;
    FailingCopy& operator=(FailingCopy&&) noexcept = default;
};

TEST(OwnKindWhoseCopyFails, LeavesTheAssignedParameterAsItWas) {
    FailingCopy failing;
    failing.fails = true;
    const ParameterProtocol held = std::move(failing);
    ParameterProtocol assigned = ParameterNone{{"-x"}, ""};
    EXPECT_THROW(assigned = held, Uncopyable);
    EXPECT_EQ(assigned.firstTag(), "-x");
    Parameters list{assigned};
    EXPECT_THROW(list.push_back(held), Uncopyable);
    EXPECT_EQ(list.size(), 1U);
}

}  // namespace
