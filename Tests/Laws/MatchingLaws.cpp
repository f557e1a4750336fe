// Matching against a plain model of its rules: keyed lists, a pending parameter, copies everywhere.

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Optrella/CommandLine.hpp"
#include "Optrella/CommandLine/Dispatch.hpp"
#include "Optrella/CommandLine/Matching.hpp"
#include "Optrella/Help.hpp"
#include "Support/Capture.hpp"
#include "Support/FakePlatform.hpp"

namespace {

using namespace Optrella;
using Internal::Declaration;

// Texts that collide, differ by case only, or differ in their bytes and are the same text.
struct PoolText {
    const char* bytes;
    int meaning;
};
constexpr PoolText pool[] = {{"-a", 0},          {"-A", 1},
                             {"-b", 2},          {"add", 3},
                             {"-\u00E9", 4},     {"-e\u0301", 4},
                             {"\u212A", 5},      {"K", 5},
                             {"k", 6},           {"", 7},
                             {"\xFF", 8},        {"-a\xFF", 9},
                             {"\u00E9\xFF", 10}, {"e\u0301\xFF", 11},
                             {";", 12},          {"\u037E", 12}};
constexpr std::size_t poolSize = std::size(pool);

enum class Kind { flag, text, own };

struct ParameterCase {
    Kind kind;
    std::vector<std::size_t> tags;  // places in the pool; not empty
};

struct DeclarationCase {
    std::vector<ParameterCase> required;
    std::vector<ParameterCase> optional;
};

struct Case {
    std::vector<DeclarationCase> declarations;
    std::vector<std::size_t> arguments;
};

// How a failed law shows its case.
void showValue(const ParameterCase& parameter, std::ostream& os) {
    os << (parameter.kind == Kind::flag ? "flag" : parameter.kind == Kind::text ? "text" : "own");
    for (const std::size_t tag : parameter.tags) os << " '" << pool[tag].bytes << "'";
}
void showValue(const DeclarationCase& declaration, std::ostream& os) {
    os << "required: ";
    rc::show(declaration.required, os);
    os << " optional: ";
    rc::show(declaration.optional, os);
}
void showValue(const Case& shown, std::ostream& os) {
    rc::show(shown.declarations, os);
    os << " arguments:";
    for (const std::size_t argument : shown.arguments) os << " '" << pool[argument].bytes << "'";
}

// From the whole pool, however small the case: a range would shrink with its list.
rc::Gen<std::size_t> places() {
    return rc::gen::resize(rc::kNominalSize, rc::gen::inRange<std::size_t>(0, poolSize));
}

// Tags of one command come from a few places, so that they collide.
rc::Gen<ParameterCase> parameters() {
    return rc::gen::build<ParameterCase>(
        rc::gen::set(&ParameterCase::kind, rc::gen::element(Kind::flag, Kind::text, Kind::own)),
        rc::gen::set(
            &ParameterCase::tags,
            rc::gen::resize(
                3, rc::gen::nonEmpty(rc::gen::container<std::vector<std::size_t>>(places())))));
}

rc::Gen<DeclarationCase> declarations() {
    const auto lists =
        rc::gen::resize(4, rc::gen::container<std::vector<ParameterCase>>(parameters()));
    return rc::gen::build<DeclarationCase>(rc::gen::set(&DeclarationCase::required, lists),
                                           rc::gen::set(&DeclarationCase::optional, lists));
}

rc::Gen<Case> cases() {
    return rc::gen::build<Case>(
        rc::gen::set(
            &Case::declarations,
            rc::gen::resize(5, rc::gen::container<std::vector<DeclarationCase>>(declarations()))),
        rc::gen::set(&Case::arguments,
                     rc::gen::resize(8, rc::gen::container<std::vector<std::size_t>>(places()))));
}

// Arguments that get far: mostly tags of the declaration, and values after those that take one.
std::vector<std::size_t> argumentsFor(const DeclarationCase& declaration) {
    std::vector<std::size_t> arguments;
    std::vector<ParameterCase> given = declaration.required;
    if (!declaration.optional.empty() && *rc::gen::arbitrary<bool>()) {
        given.push_back(*rc::gen::elementOf(declaration.optional));
    }
    if (!given.empty() && *rc::gen::weightedElement<bool>({{1, true}, {3, false}})) {
        given.push_back(*rc::gen::elementOf(given));
    }
    for (const ParameterCase& parameter : given) {
        arguments.push_back(*rc::gen::elementOf(parameter.tags));
        if (parameter.kind != Kind::flag) arguments.push_back(*places());
    }
    if (!arguments.empty() && *rc::gen::weightedElement<bool>({{1, true}, {4, false}})) {
        arguments.pop_back();
    }
    return arguments;
}

// ---- The model ----

struct GivenParameter {
    std::string id;
    std::string value;
    friend bool operator==(const GivenParameter&, const GivenParameter&) = default;
};
std::ostream& operator<<(std::ostream& os, const GivenParameter& given) {
    return os << given.id << "=" << given.value;
}
using Sections = std::map<std::string, std::vector<GivenParameter>>;

struct Seen {
    std::vector<std::string> journal;  // what a tool's own kind saw being stored
    std::string printed;
};

std::string idOf(std::size_t declaration, const char* section, std::size_t place) {
    return std::to_string(declaration) + section + std::to_string(place);
}

struct ModelParameter {
    ParameterCase declared;
    std::string id;
};

std::optional<ModelParameter> modelSearch(const std::vector<ParameterCase>& list,
                                          std::size_t declaration, const char* section,
                                          std::size_t argument) {
    std::optional<ModelParameter> found;
    for (std::size_t i = 0; i < list.size(); ++i) {
        for (const std::size_t tag : list[i].tags) {
            if (pool[tag].meaning == pool[argument].meaning) {
                found = ModelParameter{list[i], idOf(declaration, section, i)};
                break;
            }
        }
    }
    return found;
}

std::optional<Sections> modelCouldRun(const DeclarationCase& declaration, std::size_t number,
                                      const std::vector<std::size_t>& arguments, Seen& seen) {
    Sections table{{"Required", {}}, {"Optional", {}}};
    std::optional<ModelParameter> pending;
    std::string section = "Required";
    for (const std::size_t argument : arguments) {
        if (pending) {
            std::string value = pool[argument].bytes;
            if (pending->declared.kind == Kind::own) {
                seen.journal.push_back(pending->id + "=" + value);
                value = "<" + value + ">";
            }
            table[section].push_back({pending->id, value});
            pending.reset();
            continue;
        }
        pending = modelSearch(declaration.required, number, "r", argument);
        section = "Required";
        if (!pending) {
            pending = modelSearch(declaration.optional, number, "o", argument);
            section = "Optional";
        }
        if (!pending) return std::nullopt;
        if (pending->declared.kind == Kind::flag) {
            table[section].push_back({pending->id, ""});
            pending.reset();
        }
    }
    if (pending) {
        seen.printed += std::string("Missing argument for ") +
                        pool[pending->declared.tags.front()].bytes + "\n";
        return std::nullopt;
    }
    if (table["Required"].size() != declaration.required.size()) return std::nullopt;
    return table;
}

// ---- The same case for the library ----

struct OwnKind {
    commonDetails common;
    std::vector<std::string>* journal;

    void storeUserValue(Text newValue) {
        journal->push_back(common.tagHelp.str() + "=" + newValue.str());
        common.userValue = "<" + newValue.str() + ">";
    }
};

ParameterProtocol made(const ParameterCase& parameter, const std::string& id,
                       std::vector<std::string>& journal) {
    std::vector<Text> tags;
    for (const std::size_t tag : parameter.tags) tags.emplace_back(std::string(pool[tag].bytes));
    switch (parameter.kind) {
        case Kind::flag:
            return ParameterNone{tags, id};
        case Kind::text:
            return ParameterString{tags, "text", id};
        case Kind::own:
            break;
    }
    return OwnKind{{.tagHelp = id, .tags = tags, .parameterName = "own"}, &journal};
}

struct LibraryCase {
    std::vector<CommandLinePossibility> declarations;
    std::vector<std::string> journal;
    std::vector<GivenParameter> handedOn;
    std::optional<std::size_t> ran;

    static std::vector<GivenParameter> given(const Parameters& parameters) {
        std::vector<GivenParameter> list;
        for (const ParameterProtocol& parameter : parameters) {
            list.push_back({parameter.common().tagHelp.str(), parameter.common().userValue.str()});
        }
        return list;
    }

    explicit LibraryCase(const Case& source) {
        for (std::size_t i = 0; i < source.declarations.size(); ++i) {
            declarations.emplace_back(false, list(source.declarations[i].required, i, "r"),
                                      list(source.declarations[i].optional, i, "o"), Text("help"),
                                      false, [this, i](const Parameters& parameters) {
                                          ran = i;
                                          handedOn = given(parameters);
                                      });
        }
    }
    LibraryCase(const LibraryCase&) = delete;
    LibraryCase& operator=(const LibraryCase&) = delete;

private:
    Parameters list(const std::vector<ParameterCase>& source, std::size_t declaration,
                    const char* section) {
        Parameters parameters;
        for (std::size_t i = 0; i < source.size(); ++i) {
            parameters.push_back(made(source[i], idOf(declaration, section, i), journal));
        }
        return parameters;
    }
};

std::vector<Text> argumentTexts(const Case& source, bool withProgramName) {
    std::vector<Text> texts;
    if (withProgramName) texts.emplace_back("tool");
    for (const std::size_t argument : source.arguments) {
        texts.emplace_back(std::string(pool[argument].bytes));
    }
    return texts;
}

Case drawnCase() {
    Case drawn = *cases();
    if (!drawn.declarations.empty() && *rc::gen::weightedElement<bool>({{3, true}, {1, false}})) {
        drawn.arguments = argumentsFor(*rc::gen::elementOf(drawn.declarations));
    }
    return drawn;
}

// What can be seen of a parse.
struct Parsed {
    parsingError outcome{};
    std::string printed;
    std::optional<std::size_t> ran;

    explicit Parsed(const Case& source) {
        LibraryCase library(source);
        printed = Tests::printed(
            [&] { outcome = parse(library.declarations, argumentTexts(source, true)); });
        ran = library.ran;
    }
};

std::vector<std::size_t> drawnOrder(std::size_t count) {
    std::vector<std::size_t> order(count);
    for (std::size_t i = 0; i < count; ++i) {
        order[i] = i;
        std::swap(order[i], order[*rc::gen::inRange<std::size_t>(0, i + 1)]);
    }
    return order;
}

std::multiset<std::string> linesOf(const std::string& text) {
    std::istringstream stream(text);
    std::multiset<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.insert(line);
    return lines;
}

}  // namespace

TEST(MatchingLaws, CouldRunAnswersAsTheModelDoes) {
    EXPECT_TRUE(rc::check("couldRun", [] {
        const Case drawn = drawnCase();
        LibraryCase library(drawn);
        const std::vector<Text> arguments = argumentTexts(drawn, false);
        Internal::Matcher matcher(arguments);
        int fits = 0;
        for (std::size_t i = 0; i < drawn.declarations.size(); ++i) {
            Seen expected;
            const auto model = modelCouldRun(drawn.declarations[i], i, drawn.arguments, expected);
            library.journal.clear();
            std::optional<Internal::Fit> fit;
            const std::string output =
                Tests::printed([&] { fit = matcher.couldRun(library.declarations[i]); });
            if (!matcher.mayFit(library.declarations[i])) RC_ASSERT(!fit && output.empty());
            RC_ASSERT(output == expected.printed);
            RC_ASSERT(library.journal == expected.journal);
            RC_ASSERT(fit.has_value() == model.has_value());
            if (!model) continue;
            ++fits;
            std::vector<GivenParameter> given = model->at("Required");
            const auto& optional = model->at("Optional");
            given.insert(given.end(), optional.begin(), optional.end());
            RC_ASSERT(LibraryCase::given(fit->given) == given);
        }
        RC_CLASSIFY(fits > 0, "something fits");
    }));
}

TEST(MatchingLaws, ParseRunsTheOneFitOfTheModel) {
    EXPECT_TRUE(rc::check("parse", [] {
        const Case drawn = drawnCase();
        RC_PRE(!drawn.arguments.empty());
        LibraryCase library(drawn);
        Seen expected;
        std::vector<std::pair<std::size_t, Sections>> fits;
        for (std::size_t i = 0; i < drawn.declarations.size(); ++i) {
            const auto fit = modelCouldRun(drawn.declarations[i], i, drawn.arguments, expected);
            if (fit) fits.emplace_back(i, *fit);
        }
        const std::vector<Text> line = argumentTexts(drawn, true);
        if (fits.empty()) {
            expected.printed += Internal::rendered(std::span(line).subspan(1)) +
                                " is not a valid command line.\n Please refer to the help below.\n";
        }
        parsingError outcome{};
        const std::string output =
            Tests::printed([&] { outcome = parse(library.declarations, line); });
        RC_ASSERT(output == expected.printed);
        RC_ASSERT(library.journal == expected.journal);
        if (fits.size() != 1) {
            RC_ASSERT(outcome == parsingError::NoMatchingLine);
            RC_ASSERT(!library.ran);
            return;
        }
        RC_ASSERT(outcome == parsingError::NoError);
        RC_ASSERT(library.ran == fits.front().first);
        std::vector<GivenParameter> handedOn = fits.front().second.at("Required");
        const auto& optional = fits.front().second.at("Optional");
        handedOn.insert(handedOn.end(), optional.begin(), optional.end());
        RC_ASSERT(library.handedOn == handedOn);
        RC_TAG("one fit");
    }));
}

TEST(MatchingLaws, DeclarationsStayAsTheyWere) {
    EXPECT_TRUE(rc::check("declarations", [] {
        const Case drawn = drawnCase();
        LibraryCase library(drawn);
        const LibraryCase untouched(drawn);
        static_cast<void>(Tests::printed(
            [&] { static_cast<void>(parse(library.declarations, argumentTexts(drawn, true))); }));
        for (std::size_t i = 0; i < library.declarations.size(); ++i) {
            const auto& before = untouched.declarations[i];
            const auto& after = library.declarations[i];
            for (const auto section : {&Declaration::required, &Declaration::optional}) {
                const Internal::KeptList left = section(before);
                const Internal::KeptList right = section(after);
                RC_ASSERT(left.size() == right.size());
                for (std::size_t j = 0; j < left.size(); ++j) {
                    RC_ASSERT(left[j].common() == right[j].common());
                }
            }
        }
    }));
}

TEST(MatchingLaws, TheOrderOfDeclarationsDecidesNothing) {
    EXPECT_TRUE(rc::check("order", [] {
        const Case drawn = drawnCase();
        RC_PRE(!drawn.declarations.empty());
        const std::vector<std::size_t> order = drawnOrder(drawn.declarations.size());
        Case reordered{{}, drawn.arguments};
        for (const std::size_t place : order) {
            reordered.declarations.push_back(drawn.declarations[place]);
        }
        const Parsed before(drawn);
        const Parsed after(reordered);
        RC_ASSERT(after.outcome == before.outcome);
        RC_ASSERT(linesOf(after.printed) == linesOf(before.printed));
        RC_ASSERT(after.ran.has_value() == before.ran.has_value());
        if (before.ran) RC_ASSERT(order[*after.ran] == *before.ran);
        RC_CLASSIFY(before.ran.has_value(), "one fit");
    }));
}

TEST(MatchingLaws, HelpIsTheSameAfterAParse) {
    EXPECT_TRUE(rc::check("help", [] {
        const Case drawn = drawnCase();
        LibraryCase library(drawn);
        const auto help = [&] {
            return Tests::printed([&] { displayHelp(library.declarations); });
        };
        const std::string before = help();
        static_cast<void>(Tests::printed(
            [&] { static_cast<void>(parse(library.declarations, argumentTexts(drawn, true))); }));
        RC_ASSERT(help() == before);
    }));
}
