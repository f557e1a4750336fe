// listen - kinds of parameters of a tool's own: a port, and a span of time that may be repeated.

#include <sysexits.h>

#include <Optrella/Optrella.hpp>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

using namespace Optrella;

namespace {

// A number within bounds. The library's own kind of numbers tests none.
struct ParameterPort {
    commonDetails common;

    constexpr ParameterPort(Tags tags, Text tagHelp)
        : common{.tagHelp = tagHelp, .tags = tags, .parameterName = "port"} {}

    [[nodiscard]] std::optional<std::int64_t> number() const {
        ParameterNumber number{{}, "", 1, 65535, ""};
        number.storeUserValue(common.userValue);
        const std::int64_t value = number.getValue();
        if (value < number.rangeMin() || value > number.rangeMax()) return std::nullopt;
        return value;
    }

    // What this returns is shown after the parameter's first tag, and the action is not called.
    [[nodiscard]] std::optional<Text> validate() const {
        if (number()) return std::nullopt;
        return Text(common.userValue.str() + " is not a port");
    }
};

// A span of time: 90s, 15m, 2h.
struct ParameterTime {
    commonDetails common;

    constexpr ParameterTime(Tags tags, Text tagHelp)
        : common{.tagHelp = tagHelp, .tags = tags, .parameterName = "time"} {}

    [[nodiscard]] std::optional<std::int64_t> seconds() const {
        std::string digits = common.userValue.str();
        if (digits.empty() || digits.front() == '-') return std::nullopt;
        const char unit = digits.back();
        digits.pop_back();
        ParameterNumber number{{}, "", 0, 100'000, ""};
        number.storeUserValue(digits);
        const std::int64_t value = number.getValue();
        if (value < number.rangeMin() || value > number.rangeMax()) return std::nullopt;
        switch (unit) {
            case 's':
                return value;
            case 'm':
                return value * 60;
            case 'h':
                return value * 3600;
            default:
                return std::nullopt;
        }
    }

    [[nodiscard]] std::optional<Text> validate() const {
        if (seconds()) return std::nullopt;
        return Text(common.userValue.str() + " is not a time, such as 90s, 15m or 2h");
    }
};

constexpr ParameterPort listen{{"listen"}, "Port to listen on"};
constexpr ParameterTime until{{"--for"}, "How long; may be repeated, and adds up"};

// What a fetch operation does for the library's kinds. A copy of what was declared equals it.
template <class Kind, class Visit>
void forEachGiven(const Kind& declared, const Parameters& given, Visit visit) {
    for (const ParameterProtocol& parameter : given) {
        if (parameter.isEqualTo(declared)) visit(*parameter.as<Kind>());
    }
}

void listenOnPort(const Parameters& given) {
    std::int64_t seconds = 0;
    forEachGiven(until, given, [&](const ParameterTime& time) { seconds += *time.seconds(); });
    forEachGiven(listen, given, [&](const ParameterPort& port) {
        std::printf("listening on port %d", static_cast<int>(*port.number()));
    });
    if (hasOptional(until, given)) std::printf(" for %lld s", static_cast<long long>(seconds));
    std::printf("\n");
}

constinit const CommandLinePossibility commandLines[] = {
    {/* requiresRoot */ false,
     {listen},
     {until},
     "Answer requests.",
     /* hidden */ false,
     listenOnPort},
};

}  // namespace

int main(int argc, char* argv[]) {
    if (parse(commandLines, argc, argv) == parsingError::NoError) return 0;
    displayHelp(commandLines);
    return EX_USAGE;
}
