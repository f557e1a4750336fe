#include "ToolCalls.hpp"

#include <Optrella/Complete.hpp>
#include <Optrella/Description.hpp>
#include <Optrella/Explain.hpp>
#include <Optrella/HelpPage.hpp>
#include <Optrella/Lint.hpp>
#include <Optrella/ManualPage.hpp>
#include <Optrella/Tool.hpp>
#include <optional>

namespace Behaviour {

namespace {

using namespace Optrella;

json listed(const std::vector<Text>& values) {
    json list = json::array();
    for (const Text& each : values) list.push_back(text(each));
    return list;
}

// ---- The tool ----

CommandLinePossibility declaration(const json& description) {
    return {boolean(at(description, "requiresRoot")), parameters(at(description, "required")),
            parameters(at(description, "optional")),  bytes(at(description, "help")),
            boolean(at(description, "hidden")),       [](const Parameters&) {}};
}

std::vector<CommandLinePossibility> declarations(const json& aCase) {
    const json& descriptions = at(aCase, "declarations");
    if (!descriptions.is_array()) throw NoCase("declarations: not a list");
    std::vector<CommandLinePossibility> declarations;
    for (const json& each : descriptions) declarations.push_back(declaration(each));
    return declarations;
}

// The first declared parameter that takes a value and has this first tag; one that nobody declares
// where there is none.
ParameterProtocol parameterOf(const Text& tag, const json& aCase) {
    for (const json& declaration : at(aCase, "declarations")) {
        for (const char* list : {"required", "optional"}) {
            for (const ParameterProtocol& each : parameters(at(declaration, list))) {
                const commonDetails& common = each.common();
                const bool isMeant =
                    common.hasParameter && !common.tags.empty() && common.tags.front() == tag;
                if (isMeant) return each;
            }
        }
    }
    return ParameterString(tag, "", "");
}

Takes takesOf(const json& word) {
    if (word == "one") return Takes::one;
    if (word == "many") return Takes::many;
    if (word == "rest") return Takes::rest;
    throw NoCase("no such takes: " + word.dump());
}

Spelling spellingOf(const json& word) {
    if (word == "exact") return Spelling::exact;
    if (word == "conventional") return Spelling::conventional;
    throw NoCase("no such spelling: " + word.dump());
}

}  // namespace

Tool toolOf(const json& aCase) {
    Tool tool;
    tool.commandLines = declarations(aCase);
    const json description = aCase.value("tool", json::object());
    if (description.contains("name")) tool.name = bytes(description["name"]);
    if (description.contains("version")) tool.version = bytes(description["version"]);
    if (description.contains("summary")) tool.summary = bytes(description["summary"]);
    if (description.contains("spelling")) tool.spelling = spellingOf(description["spelling"]);
    if (description.contains("manualSection")) tool.manualSection = description["manualSection"];
    for (const json& each : description.value("operands", json::array())) {
        const ParameterProtocol parameter = parameterOf(bytes(at(each, "tag")), aCase);
        tool.operands.emplace_back(parameter, takesOf(each.value("takes", json("one"))));
    }
    for (const json& each : description.value("repeated", json::array())) {
        tool.repeated.emplace_back(parameterOf(bytes(each), aCase));
    }
    return tool;
}

namespace {

// ---- explain ----

const char* nameOf(Outcome outcome) {
    switch (outcome) {
        case Outcome::runs:
            return "runs";
        case Outcome::nothingGiven:
            return "nothingGiven";
        case Outcome::nothingFits:
            return "nothingFits";
        case Outcome::severalFit:
            return "severalFit";
        case Outcome::parameterMissing:
            return "parameterMissing";
        case Outcome::valueRejected:
            return "valueRejected";
    }
    return "unknown";
}

const char* nameOf(UnknownArgument why) {
    switch (why) {
        case UnknownArgument::notACommand:
            return "notACommand";
        case UnknownArgument::notKnown:
            return "notKnown";
        case UnknownArgument::notExpected:
            return "notExpected";
        case UnknownArgument::takesNoValue:
            return "takesNoValue";
    }
    return "unknown";
}

json described(const Attempt& attempt) {
    json rejected = json::array();
    for (const RejectedValue& each : attempt.rejected) {
        rejected.push_back({{"parameter", text(each.parameter)}, {"message", text(each.message)}});
    }
    return {{"declaration", attempt.declaration},
            {"fits", attempt.fits},
            {"accepted", attempt.accepted},
            {"unknown", attempt.unknown ? json(*attempt.unknown) : json()},
            {"why", attempt.why ? json(nameOf(*attempt.why)) : json()},
            {"valueMissing", orNull(attempt.valueMissing)},
            {"missing", listed(attempt.missing)},
            {"repeated", listed(attempt.repeated)},
            {"rejected", rejected},
            {"near", listed(attempt.near)}};
}

// ---- helpPage ----

Emphasis emphasisOf(const json& word) {
    if (word == "none") return Emphasis::none;
    if (word == "terminal") return Emphasis::terminal;
    throw NoCase("no such emphasis: " + word.dump());
}

// ---- complete ----

const char* nameOf(Offer::Kind kind) {
    switch (kind) {
        case Offer::Kind::tag:
            return "tag";
        case Offer::Kind::choice:
            return "choice";
        case Offer::Kind::value:
            return "value";
        case Offer::Kind::path:
            return "path";
    }
    return "unknown";
}

}  // namespace

json callExplain(const json& aCase) {
    const Tool tool = toolOf(aCase);
    const std::vector<Text> arguments = texts(at(aCase, "arguments"));
    const Explanation explanation = explain(tool, arguments);
    json attempts = json::array();
    for (const Attempt& each : explanation.attempts) attempts.push_back(described(each));
    return {{"outcome", nameOf(explanation.outcome)},
            {"root", explanation.needsRoot},
            {"attempts", attempts},
            {"words", listed(words(tool, arguments, explanation))}};
}

json callComplete(const json& aCase) {
    const bool areAll = aCase.contains("all") && boolean(aCase["all"]);
    json offers = json::array();
    for (const Offer& each :
         complete(toolOf(aCase), texts(at(aCase, "before")), bytes(at(aCase, "current")),
                  areAll ? Offers::all : Offers::reduced)) {
        offers.push_back({{"kind", nameOf(each.kind)},
                          {"word", orNull(each.word)},
                          {"help", text(each.help)},
                          {"name", text(each.name)}});
    }
    return {{"offers", offers}};
}

json callLint(const json& aCase) {
    json findings = json::array();
    for (const Finding& each : lint(toolOf(aCase), Notes::included)) {
        findings.push_back({{"rule", text(rawValue(each.rule))},
                            {"severity", text(rawValue(each.severity))},
                            {"declarations", each.declarations},
                            {"parameters", listed(each.parameters)},
                            {"witness", each.witness ? listed(*each.witness) : json()},
                            {"sentence", text(each.sentence)}});
    }
    return {{"findings", findings}};
}

json callDescription(const json& aCase) { return {{"value", text(description(toolOf(aCase)))}}; }

json callHelpPage(const json& aCase) {
    const Tool tool = toolOf(aCase);
    const std::size_t width = aCase.value("width", std::size_t{80});
    const Emphasis emphasis = emphasisOf(aCase.value("emphasis", json("none")));
    if (!aCase.contains("page")) return {{"value", text(helpPage(tool, width, emphasis))}};
    const auto page = aCase["page"].get<std::vector<std::size_t>>();
    for (const std::size_t each : page) {
        if (each >= tool.commandLines.size()) throw NoCase("page: no such declaration");
    }
    return {{"value", text(helpPage(tool, page, width, emphasis))}};
}

json callManualPage(const json& aCase) { return {{"value", text(manualPage(toolOf(aCase)))}}; }

}  // namespace Behaviour
