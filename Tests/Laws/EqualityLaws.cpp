// Equality and hashes of texts and parameters, on texts whose spelling and meaning are drawn apart.

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "Optrella/Parameters.hpp"
#include "Optrella/Text.hpp"
#include "Support/Kinds.hpp"

namespace {

using namespace Optrella;

// The spellings of one character each; nothing here joins with its neighbour to another character.
const std::vector<std::vector<std::string>> characters = {
    {"a"},
    {"A"},
    {" "},
    {"K", "\u212A"},
    {";", "\u037E"},
    {"\u00E9", "e\u0301"},
    {"\u1EAD", "\u00E2\u0323", "\u1EA1\u0302", "a\u0302\u0323", "a\u0323\u0302"},
    {"\uAC01", "\uAC00\u11A8", "\u1100\u1161\u11A8"}};

// Two of them mean the same text when the places of their characters are the same.
struct Spelling {
    std::vector<std::size_t> meaning;
    std::string bytes;
    bool isUTF8 = true;

    [[nodiscard]] bool means(const Spelling& other) const {
        return isUTF8 && other.isUTF8 ? meaning == other.meaning : bytes == other.bytes;
    }
};
void showValue(const Spelling& spelling, std::ostream& os) { os << "'" << spelling.bytes << "'"; }

Spelling spelled(std::vector<std::size_t> meaning) {
    Spelling spelling{std::move(meaning), ""};
    for (const std::size_t character : spelling.meaning) {
        spelling.bytes += *rc::gen::elementOf(characters[character]);
    }
    if (*rc::gen::weightedElement<bool>({{1, true}, {9, false}})) {
        spelling.bytes += "\xFF";
        spelling.isUTF8 = false;
    }
    return spelling;
}

// Short and from a few characters, so that many mean the same.
Spelling drawn() {
    // From all of them, however short the text: a range would shrink with its list.
    const auto places =
        rc::gen::resize(rc::kNominalSize, rc::gen::inRange<std::size_t>(0, characters.size()));
    return spelled(*rc::gen::resize(3, rc::gen::container<std::vector<std::size_t>>(places)));
}

Spelling drawnLike(const Spelling& other) {
    const bool isAlike = *rc::gen::weightedElement<bool>({{5, true}, {1, false}});
    return isAlike ? spelled(other.meaning) : drawn();
}

Text text(const Spelling& spelling) { return spelling.bytes; }

std::size_t hashOf(const Text& value) { return std::hash<Text>()(value); }

// ---- Records ----

// What a commonDetails is made from.
struct Details {
    Spelling tagHelp;
    std::vector<Spelling> tags;
    Spelling userValue;
    bool hasParameter;
    Spelling parameterName;

    [[nodiscard]] bool declaresAs(const Details& other) const {
        return hasSameTagsAs(other) && tagHelp.means(other.tagHelp) &&
               hasParameter == other.hasParameter;
    }
    [[nodiscard]] bool isAs(const Details& other) const {
        return declaresAs(other) && userValue.means(other.userValue) &&
               parameterName.means(other.parameterName);
    }

private:
    [[nodiscard]] bool hasSameTagsAs(const Details& other) const {
        if (tags.size() != other.tags.size()) return false;
        for (std::size_t i = 0; i < tags.size(); ++i) {
            if (!tags[i].means(other.tags[i])) return false;
        }
        return true;
    }
};
void showValue(const Details& details, std::ostream& os) {
    os << "{help ";
    showValue(details.tagHelp, os);
    os << ", tags";
    for (const Spelling& tag : details.tags) showValue(tag, os << " ");
    showValue(details.userValue, os << ", value ");
    os << (details.hasParameter ? ", takes " : ", takes no ");
    showValue(details.parameterName, os);
    os << "}";
}

Details drawnDetails() {
    std::vector<Spelling> tags;
    const int count = *rc::gen::inRange(0, 4);
    for (int i = 0; i < count; ++i) tags.push_back(drawn());
    return {drawn(), tags, drawn(), *rc::gen::arbitrary<bool>(), drawn()};
}

Details drawnLike(const Details& other) {
    std::vector<Spelling> tags;
    for (const Spelling& tag : other.tags) tags.push_back(drawnLike(tag));
    if (*rc::gen::weightedElement<bool>({{1, true}, {9, false}})) tags.push_back(drawn());
    const bool isOpposite = *rc::gen::weightedElement<bool>({{1, true}, {9, false}});
    return {drawnLike(other.tagHelp), tags, drawnLike(other.userValue),
            other.hasParameter != isOpposite, drawnLike(other.parameterName)};
}

commonDetails made(const Details& details) {
    std::vector<Text> tags;
    for (const Spelling& tag : details.tags) tags.push_back(text(tag));
    return {text(details.tagHelp), tags, text(details.userValue), details.hasParameter,
            text(details.parameterName)};
}

struct OwnKind {
    commonDetails common;
};

// One of each of the library's kinds, and one of a tool's own.
const Parameters& samples() {
    static const Parameters samples = [] {
        Parameters all = Tests::oneOfEachKind();
        all.push_back(OwnKind{});
        return all;
    }();
    return samples;
}

// Of any kind with any details: `common` can be written to.
ParameterProtocol parameter(std::size_t kind, const Details& details) {
    ParameterProtocol made = samples()[kind];
    made.common() = ::made(details);
    return made;
}

struct AnyParameter {
    std::size_t kind;
    Details details;

    [[nodiscard]] bool standsFor(const AnyParameter& other) const {
        return kind == other.kind && details.declaresAs(other.details);
    }
    [[nodiscard]] ParameterProtocol made() const { return parameter(kind, details); }
};
void showValue(const AnyParameter& shown, std::ostream& os) {
    os << "kind " << shown.kind << " ";
    showValue(shown.details, os);
}

std::size_t drawnKind() { return *rc::gen::inRange<std::size_t>(0, samples().size()); }

AnyParameter drawnParameter() { return {drawnKind(), drawnDetails()}; }

AnyParameter drawnLike(const AnyParameter& other) {
    const bool isSameKind = *rc::gen::weightedElement<bool>({{5, true}, {1, false}});
    const std::size_t kind = isSameKind ? other.kind : drawnKind();
    return {kind, drawnLike(other.details)};
}

// What was drawn, for the message of a failed law.
template <class... Drawn>
std::string shown(const Drawn&... values) {
    std::ostringstream os;
    ((showValue(values, os), os << "\n"), ...);
    return os.str();
}

}  // namespace

TEST(TextLaws, EqualTextsAreThoseThatMeanTheSame) {
    EXPECT_TRUE(rc::check([] {
        const Spelling left = drawn();
        const Spelling right = drawnLike(left);
        RC_LOG(shown(left, right));
        const bool isEqual = text(left) == text(right);
        RC_ASSERT(isEqual == left.means(right));
        RC_CLASSIFY(isEqual && left.bytes != right.bytes, "equal, and spelled differently");
    }));
}

TEST(TextLaws, EqualityIsAnEquivalence) {
    EXPECT_TRUE(rc::check([] {
        const Spelling first = drawn();
        const Spelling second = drawnLike(first);
        const Spelling third = drawnLike(second);
        RC_LOG(shown(first, second, third));
        const Text a = text(first);
        const Text b = text(second);
        const Text c = text(third);
        RC_ASSERT(a == a);
        RC_ASSERT((a == b) == (b == a));
        if (a == b && b == c) {
            RC_ASSERT(a == c);
            RC_TAG("a chain of equals");
        }
    }));
}

TEST(TextLaws, EqualTextsHashAlike) {
    EXPECT_TRUE(rc::check([] {
        const Spelling left = drawn();
        const Spelling right = drawnLike(left);
        RC_LOG(shown(left, right));
        RC_ASSERT((hashOf(text(left)) == hashOf(text(right))) == left.means(right));
    }));
}

TEST(CommonDetailsLaws, EqualityIsThatOfEachField) {
    EXPECT_TRUE(rc::check([] {
        const Details left = drawnDetails();
        const Details right = drawnLike(left);
        RC_LOG(shown(left, right));
        const bool isEqual = made(left) == made(right);
        RC_ASSERT(isEqual == left.isAs(right));
        RC_ASSERT((made(right) == made(left)) == isEqual);
        RC_CLASSIFY(isEqual, "equal");
    }));
}

TEST(CommonDetailsLaws, EqualOnesHashAlikeForEverySeed) {
    EXPECT_TRUE(rc::check([] {
        const Details left = drawnDetails();
        const Details right = drawnLike(left);
        const auto seed = *rc::gen::arbitrary<std::size_t>();
        RC_LOG(shown(left, right));
        RC_ASSERT((hashValue(made(left), seed) == hashValue(made(right), seed)) ==
                  left.isAs(right));
        RC_ASSERT(std::hash<commonDetails>()(made(left)) == hashValue(made(left), 0));
    }));
}

TEST(ParameterLaws, IsEqualToHoldsForTheSameKindAndDeclaration) {
    EXPECT_TRUE(rc::check([] {
        const AnyParameter left = drawnParameter();
        const AnyParameter right = drawnLike(left);
        RC_LOG(shown(left, right));
        const bool isEqual = left.made().isEqualTo(right.made());
        RC_ASSERT(isEqual == left.standsFor(right));
        RC_CLASSIFY(isEqual, "equal");
    }));
}

TEST(ParameterLaws, IsEqualToIsAnEquivalence) {
    EXPECT_TRUE(rc::check([] {
        const AnyParameter first = drawnParameter();
        const AnyParameter second = drawnLike(first);
        const AnyParameter third = drawnLike(second);
        RC_LOG(shown(first, second, third));
        const ParameterProtocol a = first.made();
        const ParameterProtocol b = second.made();
        const ParameterProtocol c = third.made();
        RC_ASSERT(a.isEqualTo(a));
        RC_ASSERT(a.isEqualTo(b) == b.isEqualTo(a));
        if (a.isEqualTo(b) && b.isEqualTo(c)) {
            RC_ASSERT(a.isEqualTo(c));
            RC_TAG("a chain of equals");
        }
    }));
}

TEST(ParameterLaws, IsEqualToIgnoresTheUsersValue) {
    EXPECT_TRUE(rc::check([] {
        const AnyParameter declared = drawnParameter();
        const Spelling value = drawn();
        RC_LOG(shown(declared, value));
        ParameterProtocol given = declared.made();
        given.storeUserValue(text(value));
        RC_ASSERT(given.common().userValue == text(value));
        RC_ASSERT(given.isEqualTo(declared.made()));
        RC_ASSERT(declared.made().isEqualTo(given));
    }));
}

TEST(FlagLaws, EqualityIgnoresWhatTheHashDoesNot) {
    EXPECT_TRUE(rc::check([] {
        const Details left = drawnDetails();
        const Details right = drawnLike(left);
        RC_LOG(shown(left, right));
        ParameterNone a({}, "");
        ParameterNone b({}, "");
        a.common = made(left);
        b.common = made(right);
        RC_ASSERT((a == b) == left.declaresAs(right));
        RC_ASSERT((hashValue(a) == hashValue(b)) == left.isAs(right));
        RC_ASSERT(std::hash<ParameterNone>()(a) == hashValue(a.common));
        RC_CLASSIFY(a == b && hashValue(a) != hashValue(b), "equal, with another hash");
    }));
}
