// What declarations cost: no heap call and no copy when they do not fit, two calls for the one that
// does.

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <vector>

#include "HeapCalls.hpp"
#include "Optrella/Optrella.hpp"
#include "Support/Capture.hpp"

using namespace Optrella;

namespace {

void nothing(const Parameters&) {}

// `count` declarations that own the first arguments of a line and then do not fit.
std::vector<CommandLinePossibility> misfits(std::size_t count) {
    const ParameterNone add{{"add", "\u00E4ndern"}, ""};
    const ParameterString text{{"-t", "--text"}, "text", ""};
    const ParameterList mode{{"-m"}, {"a", "b"}, "mode", ""};
    const ParameterNone missing{{"--missing"}, ""};
    return {count,
            CommandLinePossibility(false, {add, text, mode, missing}, {}, "", false, nothing)};
}

long heapCallsOfParse(const std::vector<CommandLinePossibility>& declarations,
                      const std::vector<Text>& line) {
    const long before = heapCalls();
    EXPECT_EQ(parse(declarations, line), parsingError::NoMatchingLine);
    return heapCalls() - before;
}

void expectNoCostOfMisfits(const std::vector<Text>& line) {
    const std::vector<CommandLinePossibility> one = misfits(1);
    const std::vector<CommandLinePossibility> many = misfits(1000);
    Tests::printed([&] { EXPECT_EQ(heapCallsOfParse(one, line), heapCallsOfParse(many, line)); });
}

TEST(AMisfit, CostsNoHeapCallWhenItsFirstArgumentIsUnknown) {
    expectNoCostOfMisfits({"tool", "remove"});
}

TEST(AMisfit, CostsNoHeapCallWhenItOwnsTheFirstArguments) {
    expectNoCostOfMisfits({"tool", "add", "-t", "some longer text than fits anywhere", "-m", "a"});
}

TEST(AMisfit, CostsNoHeapCallForAnArgumentThatIsNotASCII) {
    expectNoCostOfMisfits({"tool", "\u00F6ffnen"});
    expectNoCostOfMisfits({"tool", "add", "-t", "\u00E4\u0301", "\u00F6ffnen"});
}

struct Counted {
    commonDetails common{.tags = {"-c"}, .parameterName = "counted"};
    int* copies;

    explicit Counted(int* counter) : copies(counter) {}
    Counted(const Counted& other) : common(other.common), copies(other.copies) { ++*copies; }
    Counted& operator=(const Counted&) = default;
};

TEST(AMisfit, CostsNoCopyOfAKind) {
    int copies = 0;
    const CommandLinePossibility declaration{
        false, {Counted(&copies), ParameterNone{{"--missing"}, ""}}, {}, "", false, nothing};
    const int before = copies;
    Tests::printed([&] {
        EXPECT_EQ(parse({&declaration, 1}, {"tool", "-c", "x"}), parsingError::NoMatchingLine);
    });
    EXPECT_EQ(copies, before);
}

const ParameterNone add{{"add"}, ""};
const ParameterString name{{"-n", "--name"}, "name", "Its name"};
const ParameterNumber count{{"-c"}, "count", 1, 9, "How many"};
const ParameterList mode{{"-m"}, {"fast", "safe"}, "mode", "How"};
const ParameterFileURL file{
    {"-f"}, ParameterFileURL::urlType::file, ParameterFileURL::existState::exist, "file", "Which"};
const ParameterNone verbose{{"-v"}, "Say more"};

TEST(AFit, CostsTwoHeapCallsOfTheCallerWhateverIsGiven) {
    const CommandLinePossibility declaration{false, {add}, {name, count, mode, file, verbose},
                                             "",    false, nothing};
    const char* const line[] = {"tool", "add",       "-n", "some longer text than fits anywhere",
                                "-c",   "5",         "-m", "safe",
                                "-f",   "/dev/null", "-v", "-v",
                                "-n",   "b",         "-n", "c",
                                "-n",   "d",         "-n", "e"};
    const long before = heapCalls();
    EXPECT_EQ(parse({&declaration, 1}, static_cast<int>(std::size(line)), line),
              parsingError::NoError);
    EXPECT_EQ(heapCalls() - before, 2);
}

// After the one that fits, so many that own all arguments too, and lack one.
long heapCallsOfAFitBefore(std::size_t others) {
    std::vector<CommandLinePossibility> declarations(
        others + 1, CommandLinePossibility(false, {add, ParameterNone{{"--missing"}, ""}},
                                           {verbose}, "", false, nothing));
    declarations[0] = CommandLinePossibility(false, {add}, {verbose}, "", false, nothing);
    std::vector<Text> line(50, "-v");
    line[0] = "tool";
    line[1] = "add";
    const long before = heapCalls();
    EXPECT_EQ(parse(declarations, line), parsingError::NoError);
    return heapCalls() - before;
}

TEST(AMisfit, CostsNoHeapCallAfterAFitOfManyParameters) {
    EXPECT_EQ(heapCallsOfAFitBefore(10), heapCallsOfAFitBefore(100));
}

TEST(ADeclaration, CopiesAParameterOnce) {
    int copies = 0;
    const Counted counted(&copies);
    const CommandLinePossibility declaration{false, {counted}, {add, counted}, "", false, nothing};
    EXPECT_EQ(copies, 2);
}

}  // namespace
