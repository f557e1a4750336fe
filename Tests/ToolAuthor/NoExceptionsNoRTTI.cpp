// A whole tool, with a kind of its own, that is built without exceptions and without RTTI.
//
//     serve --port 8080 [--name NAME]     prints "NAME 8080" and ends with 0
//     serve --port 99999                  prints why not, and the help, and ends with 64

#include <cstdint>
#include <cstdio>
#include <optional>
#include <utility>

#include "Optrella/Optrella.hpp"

#if defined(__cpp_exceptions) || defined(__cpp_rtti)
#error \
    "This tool shows that neither exceptions nor RTTI are needed: build it with -fno-exceptions -fno-rtti."
#endif

using namespace Optrella;

namespace {

struct ParameterPort : ParameterDefaults<ParameterPort> {
    commonDetails common;

    constexpr ParameterPort(Tags tags, Text tagHelp)
        : common{.tagHelp = std::move(tagHelp), .tags = std::move(tags), .parameterName = "port"} {}

    [[nodiscard]] std::optional<Text> validate() const {
        ParameterNumber number{{}, "", 1, 65535, ""};
        number.storeUserValue(common.userValue);
        const std::int64_t value = number.getValue();
        if (value >= number.rangeMin() && value <= number.rangeMax()) return std::nullopt;
        return "it must be a number from 1 to 65535";
    }
};

constinit const ParameterPort port{{"-p", "--port"}, "Listen on this port"};
constinit const ParameterString name{{"-n", "--name"}, "name", "Answer by this name"};

void serve(const Parameters& given) {
    for (const ParameterProtocol& each : given) {
        if (const ParameterPort* found = each.as<ParameterPort>()) {
            const Text shown = fetchOptionalString(name, given).value_or("localhost");
            std::printf("%s %s\n", shown.c_str(), found->common.userValue.c_str());
            CommandLineExitStatus::shared().exitStatus = 0;
        }
    }
}

}  // namespace

int main(int argc, char* argv[]) {
    const CommandLinePossibility commandLines[] = {
        {/* requiresRoot */ false, {port}, {name}, "Serve a page.", /* hidden */ false, serve},
    };
    if (parse(commandLines, argc, argv) != parsingError::NoError) {
        displayHelp(commandLines);
        return 64;
    }
    return CommandLineExitStatus::shared().exitStatus;
}
