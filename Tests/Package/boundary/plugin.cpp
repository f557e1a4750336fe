#include "plugin.hpp"

using namespace Optrella;

Parameters sixKinds() {
    return {ParameterNone({"x"}, ""),
            ParameterString({"x"}, "", ""),
            ParameterUUID({"x"}, "", ""),
            ParameterNumber({"x"}, "", 0, 1, ""),
            ParameterList({"x"}, {"a", "b"}, "", ""),
            ParameterFileURL({"x"}, ParameterFileURL::urlType::file,
                             ParameterFileURL::existState::vague, "", "")};
}
ParameterProtocol sharedKind() { return SharedKind{{.tags = {"x"}}}; }
ParameterProtocol hiddenKind() { return HiddenKind{{.tags = {"x"}}}; }

int countSixKinds(const Parameters& parameters) {
    int count = 0;
    for (const ParameterProtocol& each : parameters) {
        if (each.as<ParameterNone>() != nullptr) count += 1;
        if (each.as<ParameterString>() != nullptr) count += 10;
        if (each.as<ParameterUUID>() != nullptr) count += 100;
        if (each.as<ParameterNumber>() != nullptr) count += 1000;
        if (each.as<ParameterList>() != nullptr) count += 10000;
        if (each.as<ParameterFileURL>() != nullptr) count += 100000;
    }
    return count;
}

const std::type_info& typeOfText() { return typeid(Text); }
const std::type_info& typeOfParameter() { return typeid(ParameterProtocol); }
const void* exitStatusSlot() { return &CommandLineExitStatus::shared(); }
void throwText(const char* text) { throw Text(text); }

std::vector<CommandLinePossibility> commandLines() {
    static const ParameterNone store{{"store"}, ""};
    static const ParameterString value{{"--value"}, "value", ""};
    return {{false, {store, value}, {}, "", false, [](const Parameters& given) {
                 CommandLineExitStatus::shared().exitStatus =
                     static_cast<int>(fetchString(value, given).size());
             }}};
}
