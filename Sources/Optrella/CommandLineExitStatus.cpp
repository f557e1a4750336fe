#include "Optrella/CommandLineExitStatus.hpp"

#include <optional>
#include <string>

#include "Optrella/CommandLineExitStatus/LogSubsystem.hpp"
#include "Optrella/Platform/Log.hpp"
#include "Optrella/Platform/Process.hpp"
#include "Optrella/Platform/StandardStreams.hpp"

namespace Optrella {

namespace Internal {

const Text& subsystem() {
    // Never destroyed: a destructor of the tool's may still report an error when the process ends.
    static const Text& text = *new Text([]() -> Text {
        const std::optional<std::string> identifier = Platform::bundleIdentifier();
        if (identifier) return *identifier;
        return "com.brenvale.package.Optrella";
    }());
    return text;
}

}  // namespace Internal

namespace {

// The last component of a path; the directories above it are nobody's business in a log.
constexpr const char* fileName(const char* path) noexcept {
    const char* name = path;
    for (const char* c = path; *c != '\0'; ++c) {
        if (*c == '/') name = c + 1;
    }
    return name;
}

const Platform::Log& log() {
    static constexpr const char* category = fileName(__FILE__);
    static const Platform::Log log{Internal::subsystem().c_str(), category};
    return log;
}

}  // namespace

void outputErrorMessage(const Text& message) noexcept {
    Platform::logInfo(log(), "outputErrorMessage(message:)", message);
    Platform::writeStandardError(message);
    Platform::writeStandardError("\n");
}

}  // namespace Optrella
