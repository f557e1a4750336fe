#include "Support/Declarations.hpp"

#include <algorithm>
#include <iterator>
#include <limits>
#include <string_view>

#include "Optrella/CommandLine/Declaration.hpp"

namespace Tests {

using namespace Optrella;

namespace {

// Texts that collide, differ by case only or in their bytes only, join what stands after them, or
// mean something to a kind.
constexpr std::string_view words[] = {"-a",
                                      "-b",
                                      "add",
                                      "x",
                                      "",
                                      "-A",
                                      "-\u00E9",
                                      "-e\u0301",
                                      "\u212A",
                                      "K",
                                      "\u0600",
                                      "\u0301",
                                      "\r",
                                      "\n",
                                      "a\xFF",
                                      "\xC3",
                                      "a|b",
                                      "say \"x\"",
                                      "0",
                                      "-5",
                                      "+7",
                                      "9223372036854775807",
                                      "9223372036854775808",
                                      "-9223372036854775808",
                                      "123e4567-e89b-12d3-a456-426614174000",
                                      "123e4567-e89b-12d3-a456-42661417400g",
                                      "/there",
                                      "../there",
                                      "\U0001F1E9",
                                      "\u0915\u094D"};

constexpr std::uint8_t firstDeclaredTag = 0xC0;
constexpr std::uint8_t firstRawLength = 0xF0;

std::string chosenWord(std::uint8_t choice, Input& input) {
    if (choice >= firstRawLength) return input.bytes(choice - firstRawLength);
    return std::string(words[choice % std::size(words)]);
}

std::vector<std::string> someWords(Input& input, std::size_t fewest, std::size_t most) {
    std::vector<std::string> some(fewest + input.upTo(most - fewest));
    for (std::string& each : some) each = word(input);
    return some;
}

std::int64_t bound(Input& input) {
    switch (const std::uint8_t choice = input.byte()) {
        case 0:
            return std::numeric_limits<std::int64_t>::min();
        case 1:
            return std::numeric_limits<std::int64_t>::max();
        default:
            return static_cast<std::int8_t>(choice);
    }
}

Tags tagsOf(const std::vector<std::string>& tags) {
    return std::vector<Text>(tags.begin(), tags.end());
}

// The arguments of a kind's constructor: those of a case, where its own fields are drawn first if
// there is an input.
class CaseFields {
public:
    CaseFields(ParameterCase& parameter, Input* input) : case_(parameter), input_(input) {}

    Tags tags() { return tagsOf(case_.tags); }
    Text text(std::string_view key) { return key == "tagHelp" ? case_.help : case_.name; }
    std::int64_t number(const char* key) {
        if (input_ != nullptr) case_.fields.numbers[key] = bound(*input_);
        return case_.fields.numbers.at(key);
    }
    ListOptions options(const char*) {
        if (input_ != nullptr) {
            case_.fields.options.resize(input_->upTo(3));
            for (auto& option : case_.fields.options) option = someWords(*input_, 1, 3);
        }
        std::vector<ParameterNone> options;
        for (const std::vector<std::string>& option : case_.fields.options) {
            options.push_back({tagsOf(option), "of an option"});
        }
        return options;
    }
    template <class Case>
    Case word(const char* key, const Cases<Case>& cases) {
        if (input_ != nullptr) {
            case_.fields.words[key] = cases[input_->upTo(cases.size() - 1)].first;
        }
        const std::string& word = case_.fields.words.at(key);
        return std::find_if(cases.begin(), cases.end(),
                            [&](const auto& each) { return each.first == word; })
            ->second;
    }

private:
    ParameterCase& case_;
    Input* input_;
};

template <std::size_t Size>
OwnKind<Size> own(const ParameterCase& parameter) {
    OwnKind<Size> kind;
    kind.common.tags = tagsOf(parameter.tags);
    kind.common.tagHelp = parameter.help;
    kind.common.parameterName = parameter.name;
    return kind;
}

ParameterProtocol madeOfKind(ParameterCase& parameter, Input* input) {
    if (parameter.kind == ownKind) return own<1>(parameter);
    if (parameter.kind == largeKind) return own<200>(parameter);
    std::optional<ParameterProtocol> made;
    forEachKind([&]<class Kind>() {
        if (parameter.kind != numberOf<Kind>) return;
        CaseFields fields(parameter, input);
        made = KindEntry<Kind>::made(fields);
    });
    return *made;
}

ParameterCase parameter(Input& input, bool hasTags) {
    const std::uint8_t choice = input.byte();
    ParameterCase drawn{};
    drawn.kind = choice % kinds;
    // `common` belongs to the tool: a flag may be made to take a value, and the other way round.
    const bool isChanged = choice >= 0xC0;
    drawn.takesValue = (drawn.kind != numberOf<ParameterNone>) != isChanged;
    drawn.tags = someWords(input, hasTags ? 1 : 0, 4);
    drawn.name = word(input);
    drawn.help = word(input);
    static_cast<void>(madeOfKind(drawn, &input));
    return drawn;
}

std::vector<ParameterCase> parameters(Input& input, bool haveTags) {
    std::vector<ParameterCase> list;
    for (std::size_t count = input.upTo(3); count > 0; --count) {
        list.push_back(parameter(input, haveTags));
    }
    return list;
}

Parameters made(const std::vector<ParameterCase>& cases) {
    Parameters list;
    for (const ParameterCase& each : cases) list.push_back(made(each));
    return list;
}

bool areSameBytes(const Text& left, const Text& right) {
    return static_cast<std::string_view>(left) == static_cast<std::string_view>(right);
}

bool areIdentical(const ParameterProtocol& left, const ParameterProtocol& right) {
    const commonDetails& l = left.common();
    const commonDetails& r = right.common();
    return left.isEqualTo(right) && l.hasParameter == r.hasParameter &&
           areSameBytes(l.tagHelp, r.tagHelp) && areSameBytes(l.userValue, r.userValue) &&
           areSameBytes(l.parameterName, r.parameterName) &&
           std::equal(l.tags.begin(), l.tags.end(), r.tags.begin(), r.tags.end(), areSameBytes);
}

}  // namespace

std::vector<std::string>& storedValues() {
    static std::vector<std::string> values;
    return values;
}

std::string word(Input& input) {
    const std::uint8_t choice = input.byte();
    return chosenWord(choice, input);
}

std::vector<CommandCase> commands(Input& input, bool requiredHaveTags) {
    std::vector<CommandCase> commands(input.upTo(4));
    for (CommandCase& command : commands) {
        const std::uint8_t flags = input.byte();
        command.requiresRoot = (flags & 1) != 0;
        command.hidden = (flags & 2) != 0;
        command.help = word(input);
        command.required = parameters(input, requiredHaveTags);
        command.optional = parameters(input, false);
    }
    return commands;
}

std::vector<std::string> arguments(Input& input, const std::vector<CommandCase>& commands) {
    std::vector<std::string> declared;
    for (const CommandCase& command : commands) {
        for (const auto* list : {&command.required, &command.optional}) {
            for (const ParameterCase& each : *list) {
                declared.insert(declared.end(), each.tags.begin(), each.tags.end());
            }
        }
    }
    std::vector<std::string> arguments(input.upTo(12));
    for (std::string& argument : arguments) {
        const std::uint8_t choice = input.byte();
        const bool isDeclared =
            choice >= firstDeclaredTag && choice < firstRawLength && !declared.empty();
        argument = isDeclared ? declared[(choice - firstDeclaredTag) % declared.size()]
                              : chosenWord(choice, input);
    }
    return arguments;
}

ParameterProtocol made(const ParameterCase& parameter) {
    ParameterCase drawn = parameter;
    ParameterProtocol kind = madeOfKind(drawn, nullptr);
    kind.common().hasParameter = parameter.takesValue;
    kind.common().parameterName = parameter.name;
    return kind;
}

std::vector<CommandLinePossibility> made(const std::vector<CommandCase>& commands, const Run& run) {
    std::vector<CommandLinePossibility> list;
    for (std::size_t i = 0; i < commands.size(); ++i) {
        const CommandCase& from = commands[i];
        list.emplace_back(from.requiresRoot, made(from.required), made(from.optional), from.help,
                          from.hidden, [run, i](const Parameters& given) { run(i, given); });
    }
    return list;
}

bool areIdentical(const CommandLinePossibility& left, const CommandLinePossibility& right) {
    using Internal::Declaration;
    const auto same = [](Internal::KeptList l, Internal::KeptList r) {
        return std::equal(l.begin(), l.end(), r.begin(), r.end(), [](const auto& a, const auto& b) {
            return areIdentical(ParameterProtocol(a), ParameterProtocol(b));
        });
    };
    return same(Declaration::required(left), Declaration::required(right)) &&
           same(Declaration::optional(left), Declaration::optional(right)) &&
           areSameBytes(Declaration::help(left), Declaration::help(right)) &&
           Declaration::hidden(left) == Declaration::hidden(right) &&
           Declaration::requiresRoot(left) == Declaration::requiresRoot(right);
}

}  // namespace Tests
