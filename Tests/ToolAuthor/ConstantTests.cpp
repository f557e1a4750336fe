// Declarations that the compiler makes: they do what the same declarations do that are made at run
// time, and cost the start of a tool nothing. That this file compiles is part of the test.

#include <gtest/gtest.h>

#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "HeapCalls.hpp"
#include "Optrella/Optrella.hpp"
#include "Support/Capture.hpp"

using namespace Optrella;

namespace {

// ---- A tool of constants ----

struct Port {
    int highest = 65535;
    commonDetails common;

    constexpr Port(Tags tags, Text tagHelp)
        : common{std::move(tagHelp), std::move(tags), "", true, "port"} {}
    [[nodiscard]] std::optional<Text> validate() const {
        if (std::stoi(common.userValue.str()) <= highest) return std::nullopt;
        return "too high";
    }
};

constexpr ParameterNone list{{"list", "ls"}, "List what there is"};
constexpr ParameterNone hidden{{"hidden"}, ""};
constexpr ParameterString name{{"-n", "--name"}, "name", "Its name"};
constexpr ParameterNumber count{{"-c"}, "count", 1, 9, "How many"};
constexpr ParameterUUID id{{"--id"}, "id", "Which one"};
constexpr ParameterNone orders[] = {{{"name"}, ""}, {{"date", "d"}, "By date"}, {{"é"}, ""}};
constexpr ParameterList order{{"-o", "--order"}, orders, "order", "Sort by this"};
constexpr ParameterFileURL file{
    {"-f"}, ParameterFileURL::urlType::file, ParameterFileURL::existState::exist, "file", "A file"};
constexpr Port port{{"-p", "--größe"}, "Where"};

std::string seen;

void show(const Parameters& given) {
    seen = fetchOptionalString(name, given).value_or("").str() + ' ' +
           std::to_string(fetchOptionalNumber(count, given).value_or(0)) + ' ';
    if (const auto chosen = fetchOptionalListOption(order, given)) seen += chosen->firstTag().str();
    if (const auto url = fetchOptionalURL(file, given)) seen += url->path().str();
    if (hasOptional(port, given)) seen += "port";
}

constinit const CommandLinePossibility constants[] = {
    {false, {list}, {name, count, id, order, file, port}, "Lists", false, show},
    {false, {hidden}, {}, "Is not shown", true, [](const Parameters&) { seen = "hidden"; }},
    {false, {}, {}, "", false, [](const auto&) { return 5; }},
};

// The same, made at run time.
std::vector<CommandLinePossibility> copies() {
    const std::vector<ParameterNone> choices(std::begin(orders), std::end(orders));
    const ParameterList sameOrder{{"-o", "--order"}, choices, "order", "Sort by this"};
    return {{false, {list}, {name, count, id, sameOrder, file, port}, "Lists", false, show},
            {false, {hidden}, {}, "Is not shown", true, [](const Parameters&) { seen = "hidden"; }},
            {false, {}, {}, "", false, [](const auto&) { return 5; }}};
}

struct Outcome {
    std::string printed;
    std::string given;
    parsingError result;

    friend bool operator==(const Outcome&, const Outcome&) = default;
};

Outcome outcome(CommandList tool, const std::vector<Text>& line) {
    seen.clear();
    Outcome outcome;
    outcome.printed = Tests::printed([&] { outcome.result = parse(tool, line); });
    outcome.given = seen;
    return outcome;
}

TEST(ConstantDeclarations, AreListedAsCopiesAre) {
    const std::string listing = Tests::printed([] { displayHelp(constants); });
    EXPECT_EQ(listing, Tests::printed([] { displayHelp(copies()); }));
    EXPECT_NE(listing.find("Must be one of: name, date, é"), std::string::npos);
}

TEST(ConstantDeclarations, FitAsCopiesDo) {
    const std::vector<std::vector<Text>> lines = {
        {"tool", "list", "-n", "some", "-c", "5", "-o", "date", "-f", "/", "-p", "80"},
        {"tool", "ls", "--größe", "80"},
        {"tool", "ls", "--gro\u0308ße", "80"},
        {"tool", "ls", "-o", "e\u0301"},
        {"tool", "hidden"},
        {"tool", "list", "-p", "65536"},
        {"tool", "list", "-o", "size"},
        {"tool", "list", "-o"},
        {"tool", "else"},
    };
    for (const std::vector<Text>& line : lines) {
        EXPECT_EQ(outcome(constants, line), outcome(copies(), line)) << line[1];
    }
    EXPECT_EQ(outcome(constants, lines[0]).given, "some 5 date/port");
    EXPECT_EQ(outcome(constants, lines[4]).given, "hidden");
    EXPECT_EQ(outcome(constants, lines[5]).printed,
              "Validation of parameter -p failed : too high\n");
}

TEST(ConstantDeclarations, AreCopiedWithoutTheHeap) {
    const long before = heapCalls();
    const CommandLinePossibility copy = constants[0];
    EXPECT_EQ(heapCalls(), before);
    EXPECT_EQ(outcome({&copy, 1}, {"tool", "ls", "-n", "x"}).given, "x 0 ");
}

TEST(ConstantDeclarations, OfMixedKindsAreOneTypeWithOthers) {
    std::string captured;
    const CommandLinePossibility mixed[] = {
        constants[0],
        {false, {hidden}, {}, "", false, [&captured](const Parameters&) { captured = "yes"; }}};
    EXPECT_EQ(outcome(mixed, {"tool", "hidden"}).result, parsingError::NoError);
    EXPECT_EQ(captured, "yes");
    EXPECT_EQ(outcome(mixed, {"tool", "list"}).result, parsingError::NoError);
}

TEST(ConstantChoices, AreViewedAndEqualToCopiedOnes) {
    EXPECT_EQ(order.validOptions().begin(), orders);
    const ListOptions copied(std::vector<ParameterNone>(std::begin(orders), std::end(orders)));
    EXPECT_NE(copied.begin(), orders);
    ASSERT_EQ(order.validOptions().size(), copied.size());
    for (std::size_t i = 0; i < copied.size(); ++i) {
        EXPECT_EQ(order.validOptions()[i].common, copied[i].common);
    }
}

TEST(NamedChoices, ThatAreMadeAtRunTimeAreCopied) {
    std::optional<ListOptions> options;
    {
        const ParameterNone words[] = {{{std::string("first")}, ""}, {{std::string("second")}, ""}};
        options.emplace(words);
        EXPECT_NE(options->begin(), words);
    }
    ASSERT_EQ(options->size(), 2U);
    EXPECT_EQ((*options)[1].firstTag(), "second");
}

// ---- Declarations that are made at run time ----

struct alignas(64) Aligned : ParameterDefaults<Aligned> {
    static inline bool areAllAligned = true;
    commonDetails common{.tags = {"-a"}, .parameterName = "aligned"};

    Aligned() = default;
    Aligned(const Aligned& other) : ParameterDefaults<Aligned>(other), common(other.common) {
        areAllAligned &= isAligned(this) && isAligned(&other);
    }
    Aligned& operator=(const Aligned&) = default;
    ~Aligned() = default;

private:
    static bool isAligned(const Aligned* place) {
        return reinterpret_cast<std::uintptr_t>(place) % alignof(Aligned) == 0;
    }
};

struct Alive : ParameterDefaults<Alive> {
    static inline int number = 0;
    commonDetails common{.tags = {"-l"}, .parameterName = "alive"};

    Alive() { ++number; }
    Alive(const Alive& other) : ParameterDefaults<Alive>(other), common(other.common) { ++number; }
    Alive& operator=(const Alive&) = default;
    ~Alive() { --number; }
};

TEST(ADeclaration, KeepsAnyNumberOfParameters) {
    Parameters many;
    for (int i = 0; i < 40; ++i) {
        many.emplace_back(ParameterString({"-" + std::to_string(i)}, "value", ""));
    }
    std::string value;
    const CommandLinePossibility declaration{false,
                                             many,
                                             {list, list, list, list, list, list, list, list, list,
                                              list, list, list, list, list, list, list, list, name},
                                             "",
                                             false,
                                             [&value](const Parameters& given) {
                                                 value = given[39].common().userValue.str() +
                                                         fetchOptionalString(name, given)->str();
                                             }};
    std::vector<Text> line = {"tool"};
    for (int i = 0; i < 40; ++i) {
        line.emplace_back("-" + std::to_string(i));
        line.emplace_back(std::to_string(i * i));
    }
    line.insert(line.end(), {"-n", "last"});
    EXPECT_EQ(outcome({&declaration, 1}, line).result, parsingError::NoError);
    EXPECT_EQ(value, "1521last");
}

TEST(ADeclaration, KeepsAnAlignedKindAligned) {
    const CommandLinePossibility declaration{false, {list}, {count, Aligned()}, "", false, show};
    EXPECT_EQ(outcome({&declaration, 1}, {"tool", "list", "-a", "x"}).result,
              parsingError::NoError);
    EXPECT_TRUE(Aligned::areAllAligned);
}

TEST(ADeclaration, ThatWasMovedFromStillFits) {
    std::string captured;
    const auto capture = [&captured](const Parameters&) { captured += "yes"; };
    CommandLinePossibility first{false, {list}, {Alive()}, "", false, capture};
    { const CommandLinePossibility second = std::move(first); }
    EXPECT_EQ(outcome({&first, 1}, {"tool", "list", "-l", "x"}).result, parsingError::NoError);
    EXPECT_EQ(captured, "yes");
}

TEST(ADeclaration, SharesItsParametersWithCopiesAndDestroysThemWithTheLast) {
    const int before = Alive::number;
    {
        std::vector<CommandLinePossibility> first;
        first.push_back({false, {Alive(), list}, {}, "", false, show});
        EXPECT_EQ(Alive::number, before + 1);
        const CommandLinePossibility second = first.front();
        EXPECT_EQ(Alive::number, before + 1);
        first.clear();
        EXPECT_EQ(Alive::number, before + 1);
        EXPECT_EQ(outcome({&second, 1}, {"tool", "list", "-l", "x"}).result, parsingError::NoError);
    }
    EXPECT_EQ(Alive::number, before);
}

}  // namespace
