#include "Calls.hpp"

#include <Optrella/Elevation/PromptForPassword.hpp>
#include <optional>
#include <thread>
#include <type_traits>

#include "Support/Kinds.hpp"
#include "ToolCalls.hpp"

namespace Behaviour {

namespace {

using namespace Optrella;

json listed(const Tags& tags) {
    json list = json::array();
    for (const Text& each : tags) list.push_back(text(each));
    return list;
}

// ---- Fetching ----

enum class Fetch { optional, stopping };

Fetch fetchOf(const json& aCase) {
    const auto found = aCase.find("fetch");
    if (found == aCase.end() || *found == "optional") return Fetch::optional;
    if (*found == "stopping") return Fetch::stopping;
    throw NoCase("no such fetch: " + found->dump());
}

json written(const std::string& value) { return text(value); }
json written(std::int64_t value) { return value; }

template <class Kind>
json fetched(const Kind& type, const Parameters& given, Fetch fetch) {
    using Entry = Tests::KindEntry<Kind>;
    if constexpr (std::is_same_v<Kind, ParameterNone>) {
        return Entry::fetchOptional(type, given);
    } else {
        if (fetch == Fetch::stopping) return written(Entry::observed(Entry::fetch(type, given)));
        const auto value = Entry::fetchOptional(type, given);
        return value ? written(Entry::observed(*value)) : json();
    }
}

json fetchedValue(const ParameterProtocol& type, const Parameters& given, Fetch fetch) {
    json value;
    Tests::forEachKind([&]<class Kind>() {
        if (const Kind* kind = type.as<Kind>()) value = fetched(*kind, given, fetch);
    });
    return value;
}

// ---- Parse ----

struct Run {
    std::optional<std::size_t> declaration;
    std::thread::id thread;
    json parameters = json::array();
    json fetched = json::array();
};

void recordGiven(Run& run, const Parameters& given) {
    for (const ParameterProtocol& each : given) {
        run.parameters.push_back({{"kind", Tests::nameOfKind(each)},
                                  {"tags", listed(each.common().tags)},
                                  {"userValue", text(each.common().userValue)}});
    }
}

void fetchAll(Run& run, const Parameters& declared, const Parameters& given, Fetch fetch) {
    for (const ParameterProtocol& type : declared) {
        const bool has = hasOptional(type, given);
        run.fetched.push_back({{"has", has}, {"value", fetchedValue(type, given, fetch)}});
    }
}

// Its action writes what it sees into `run`.
CommandLinePossibility declaration(const json& description, std::size_t index, Fetch fetch,
                                   Run& run) {
    Parameters required = parameters(at(description, "required"));
    Parameters optional = parameters(at(description, "optional"));
    const auto action = [=, &run](const Parameters& given) {
        run.declaration = index;
        run.thread = std::this_thread::get_id();
        recordGiven(run, given);
        fetchAll(run, required, given, fetch);
        fetchAll(run, optional, given, fetch);
    };
    return {boolean(at(description, "requiresRoot")),
            required,
            optional,
            bytes(at(description, "help")),
            boolean(at(description, "hidden")),
            action};
}

std::vector<CommandLinePossibility> declarations(const json& aCase, Fetch fetch, Run& run) {
    const json& descriptions = at(aCase, "declarations");
    if (!descriptions.is_array()) throw NoCase("declarations: not a list");
    std::vector<CommandLinePossibility> declarations;
    for (const json& description : descriptions) {
        declarations.push_back(declaration(description, declarations.size(), fetch, run));
    }
    return declarations;
}

json callParse(const json& aCase) {
    Run run;
    const auto commandLines = declarations(aCase, fetchOf(aCase), run);
    const parsingError result = parse(commandLines, texts(at(aCase, "arguments")));
    const bool ran = run.declaration.has_value();
    return {{"result", text(rawValue(result))},
            {"ran", ran ? json(*run.declaration) : json()},
            {"worker", ran && run.thread != std::this_thread::get_id()},
            {"parameters", run.parameters},
            {"fetched", run.fetched}};
}

json callRunTool(const json& aCase) {
    Run run;
    Tool tool = toolOf(aCase);
    tool.commandLines = declarations(aCase, fetchOf(aCase), run);
    const int status = runTool(tool, texts(at(aCase, "arguments")));
    const bool ran = run.declaration.has_value();
    return {{"status", status},
            {"ran", ran ? json(*run.declaration) : json()},
            {"worker", ran && run.thread != std::this_thread::get_id()},
            {"parameters", run.parameters},
            {"fetched", run.fetched}};
}

json callDisplayHelp(const json& aCase) {
    Run run;
    displayHelp(declarations(aCase, Fetch::optional, run));
    return json::object();
}

// ---- One parameter ----

json callValidate(const json& aCase) {
    return {{"message", orNull(parameter(at(aCase, "parameter")).validate())}};
}

json callGetValue(const json& aCase) {
    const ParameterProtocol held = parameter(at(aCase, "parameter"));
    std::optional<json> value;
    Tests::forEachKind([&]<class Kind>() {
        if constexpr (requires(const Kind& kind) { kind.getValue(); }) {
            if (const Kind* kind = held.as<Kind>()) {
                value = written(Tests::KindEntry<Kind>::observed(kind->getValue()));
            }
        }
    });
    if (!value) throw NoCase("no getValue: " + Tests::nameOfKind(held));
    return {{"value", *value}};
}

json callFirstTag(const json& aCase) {
    return {{"value", text(parameter(at(aCase, "parameter")).firstTag())}};
}

// ---- Two parameters ----

json callIsEqualTo(const json& aCase) {
    const ParameterProtocol left = parameter(at(aCase, "left"));
    return {{"equal", left.isEqualTo(parameter(at(aCase, "right")))}};
}

json callCommonEqual(const json& aCase) {
    const commonDetails left = parameter(at(aCase, "left")).common();
    const commonDetails right = parameter(at(aCase, "right")).common();
    return {{"equal", left == right}, {"sameHash", hashValue(left) == hashValue(right)}};
}

ParameterNone flagAt(const json& aCase, const char* key) {
    const ParameterProtocol held = parameter(at(aCase, key));
    const auto* flag = held.as<ParameterNone>();
    if (flag == nullptr) throw NoCase(std::string(key) + ": not a flag");
    return *flag;
}

json callFlagEqual(const json& aCase) {
    const ParameterNone left = flagAt(aCase, "left");
    const ParameterNone right = flagAt(aCase, "right");
    return {{"equal", left == right}, {"sameHash", hashValue(left) == hashValue(right)}};
}

// ---- Texts ----

const char* nameOf(parsingError error) {
    switch (error) {
        case parsingError::NoError:
            return "NoError";
        case parsingError::MissingParameter:
            return "MissingParameter";
        case parsingError::NoMatchingLine:
            return "NoMatchingLine";
        case parsingError::NoCommandLine:
            return "NoCommandLine";
    }
    return "unknown";
}

const char* nameOf(ParameterFileURL::urlType type) {
    switch (type) {
        case ParameterFileURL::urlType::file:
            return "file";
        case ParameterFileURL::urlType::folder:
            return "folder";
        case ParameterFileURL::urlType::fileOrFolder:
            return "fileOrFolder";
    }
    return "unknown";
}

const char* nameOf(ParameterFileURL::existState state) {
    switch (state) {
        case ParameterFileURL::existState::exist:
            return "exist";
        case ParameterFileURL::existState::absent:
            return "absent";
        case ParameterFileURL::existState::vague:
            return "vague";
    }
    return "unknown";
}

template <class Case>
json nameOfCase(const Text& rawValue) {
    const std::optional<Case> found = fromRawValue<Case>(rawValue);
    return found ? json(nameOf(*found)) : json();
}

json callRawValue(const json& aCase) {
    const json& type = at(aCase, "type");
    const Text text = bytes(at(aCase, "text"));
    if (type == "parsingError") return {{"case", nameOfCase<parsingError>(text)}};
    if (type == "urlType") return {{"case", nameOfCase<ParameterFileURL::urlType>(text)}};
    if (type == "existState") return {{"case", nameOfCase<ParameterFileURL::existState>(text)}};
    throw NoCase("no such type: " + type.dump());
}

json callRemoveFirstLine(const json& aCase) {
    const std::string string = bytes(at(aCase, "text"));
    const auto rest = PromptForPassword::removeFirstLine(string);
    return {{"value", rest ? text(*rest) : json()}};
}

json callRelay(const json& aCase) {
    PromptForPassword::OutputRelay relay;
    for (const Text& block : texts(at(aCase, "blocks"))) relay.handle(block);
    return json::object();
}

json callOutputErrorMessage(const json& aCase) {
    outputErrorMessage(bytes(at(aCase, "text")));
    return json::object();
}

struct Call {
    const char* name;
    json (*make)(const json& aCase);
};

constexpr Call calls[] = {
    {"parse", callParse},
    {"displayHelp", callDisplayHelp},
    {"validate", callValidate},
    {"getValue", callGetValue},
    {"firstTag", callFirstTag},
    {"isEqualTo", callIsEqualTo},
    {"commonEqual", callCommonEqual},
    {"flagEqual", callFlagEqual},
    {"rawValue", callRawValue},
    {"removeFirstLine", callRemoveFirstLine},
    {"relay", callRelay},
    {"outputErrorMessage", callOutputErrorMessage},
    {"explain", callExplain},
    {"complete", callComplete},
    {"lint", callLint},
    {"description", callDescription},
    {"helpPage", callHelpPage},
    {"manualPage", callManualPage},
    {"runTool", callRunTool},
};

}  // namespace

json called(const json& aCase) {
    const json& name = at(aCase, "call");
    for (const Call& call : calls) {
        if (name == call.name) return call.make(aCase);
    }
    throw NoCase("no such call: " + name.dump());
}

}  // namespace Behaviour
