// Whether a tool, its plugin and the library, three shared objects with hidden visibility, take
// each other's kinds, texts and types for the same.

#include <cstdio>

#include "plugin.hpp"

using namespace Optrella;

namespace {

int faults = 0;

void expect(bool holds, const char* what) {
    if (holds) return;
    std::printf("not so: %s\n", what);
    ++faults;
}

// As the plugin's sixKinds, made here.
Parameters ownSixKinds() {
    return {ParameterNone({"x"}, ""),
            ParameterString({"x"}, "", ""),
            ParameterUUID({"x"}, "", ""),
            ParameterNumber({"x"}, "", 0, 1, ""),
            ParameterList({"x"}, {"a", "b"}, "", ""),
            ParameterFileURL({"x"}, ParameterFileURL::urlType::file,
                             ParameterFileURL::existState::vague, "", "")};
}

void compareKinds() {
    const Parameters own = ownSixKinds();
    const Parameters others = sixKinds();
    for (std::size_t i = 0; i < own.size(); ++i) {
        for (std::size_t j = 0; j < others.size(); ++j) {
            expect(own[i].isSameKindAs(others[j]) == (i == j), "one kind on both sides");
            expect(own[i].isEqualTo(others[j]) == (i == j), "equal parameters of one kind");
            expect(others[j].isEqualTo(own[i]) == (i == j), "equal parameters of one kind, turned");
        }
    }
    expect(countSixKinds(own) == 111111, "the plugin sees the tool's kinds");
    expect(countSixKinds(others) == 111111, "the plugin sees its own kinds");
    expect(others[4].as<ParameterList>() != nullptr, "the tool sees the plugin's list");
    expect(others[4].as<ParameterNone>() == nullptr, "a list is no flag");

    const ParameterProtocol shared = SharedKind{{.tags = {"x"}}};
    const ParameterProtocol hidden = HiddenKind{{.tags = {"x"}}};
    expect(shared.isEqualTo(sharedKind()), "a kind that is marked is one");
    expect(sharedKind().as<SharedKind>() != nullptr, "a kind that is marked can be seen");
    expect(!hidden.isSameKindAs(hiddenKind()), "a kind that is hidden is another on each side");
    expect(hidden.isEqualTo(hidden), "and yet equals itself");
}

// By address: by name they would be the same even where they are not.
void compareTypes() {
    expect(&typeid(Text) == &typeOfText(), "one type of texts");
    expect(&typeid(ParameterProtocol) == &typeOfParameter(), "one type of parameters");
    expect(&CommandLineExitStatus::shared() == exitStatusSlot(), "one exit status");
    try {
        throwText("e\u0301");
        expect(false, "the plugin throws");
    } catch (const Text& text) {
        expect(text == "\u00e9", "texts are compared as Unicode means it");
    }
}

void runPlugin() {
    const char* const arguments[] = {"tool", "store", "--value", "four"};
    expect(parse(commandLines(), 4, arguments) == parsingError::NoError, "the plugin's line fits");
    expect(CommandLineExitStatus::shared().exitStatus == 4, "its action has run");
}

}  // namespace

int main() {
    compareKinds();
    compareTypes();
    runPlugin();
    if (faults == 0) std::printf("all at one\n");
    return faults == 0 ? 0 : 1;
}
