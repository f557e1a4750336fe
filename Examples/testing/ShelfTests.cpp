// The tests of shelf: every command line is parsed for real and run on a shelf of the test's own.
// No terminal, no process, no file is needed; any framework of tests would do.

#include "Shelf.hpp"

#include <Optrella/Lint.hpp>
#include <cstdio>

using Optrella::parsingError;
using Optrella::Spelling;
using Optrella::Tool;

namespace {

int failures = 0;

void expect(bool isTrue, const char* behaviour) {
    std::printf("%s: %s\n", isTrue ? "ok" : "FAILED", behaviour);
    if (!isTrue) ++failures;
}

// What becomes of a shelf when a user types a command line after the tool's name.
struct Outcome {
    parsingError result;
    Shelf shelf;
};

Outcome typed(std::vector<std::string> arguments, std::vector<std::string> books = {}) {
    Outcome outcome{parsingError::NoError, {std::move(books), "", 0}};
    arguments.insert(arguments.begin(), "shelf");
    outcome.result = parse(commandLinesOf(outcome.shelf), arguments);
    return outcome;
}

void proofs() {
    // A line that fits two declarations is refused by parse without a word.
    Shelf shelf;
    const Tool tool{
        .name = "shelf", .commandLines = commandLinesOf(shelf), .spelling = Spelling::exact};
    const Optrella::Findings findings = lint(tool);
    for (const auto& each : findings) std::printf("%s\n", each.sentence.c_str());
    expect(findings.empty(), "no line fits two declarations, and each declaration can be reached");
}

void declarations() {
    const std::vector<std::string> shown[] = {{"add", "Emma"}, {"remove", "Emma"},
                                              {"list"},        {"remove", "Emma", "--last"},
                                              {"list", "-s"},  {"list", "--sorted"}};
    bool areAccepted = true;
    for (const auto& arguments : shown) {
        areAccepted = areAccepted && typed(arguments).result == parsingError::NoError;
    }
    expect(areAccepted, "every command line of the documentation is accepted");
    expect(typed({"add"}).result == parsingError::NoMatchingLine, "a book needs its title");
    expect(typed({"add", "Emma", "add", "Emma"}).result == parsingError::NoMatchingLine,
           "one book at a time");
    expect(typed({"list", "--last"}).result == parsingError::NoMatchingLine,
           "an option belongs to its command");
    expect(typed({}).result == parsingError::NoCommandLine, "nothing is a command line of its own");
}

void actions() {
    using Books = std::vector<std::string>;
    expect(typed({"add", "Emma"}, {"Ivanhoe"}).shelf.books == Books{"Ivanhoe", "Emma"},
           "a book is put after the others");
    expect(typed({"add", ""}).shelf.status == 64, "an empty title is refused");
    expect(typed({"remove", "Emma"}, {"Emma", "Ivanhoe", "Emma"}).shelf.books == Books{"Ivanhoe"},
           "all books of a title are removed");
    expect(typed({"remove", "Emma", "--last"}, {"Emma", "Ivanhoe", "Emma"}).shelf.books ==
               Books{"Emma", "Ivanhoe"},
           "the last book of a title is removed");
    const Outcome missing = typed({"remove", "Emma"});
    expect(missing.shelf.printed == "Emma is not on the shelf\n" && missing.shelf.status == 1,
           "a book that is not there is said to be missing");
    expect(typed({"list", "-s"}, {"b", "a"}).shelf.printed == "a\nb\n", "a list can be sorted");
}

}  // namespace

int main() {
    proofs();
    declarations();
    actions();
    return failures == 0 ? 0 : 1;
}
