#include "Optrella/CommandLine/Validation.hpp"

#include <cstdlib>
#include <utility>

#include "Optrella/Elevation/PromptForPassword.hpp"
#include "Optrella/Platform/Concealment.hpp"
#include "Optrella/Platform/StartArguments.hpp"
#include "Optrella/Text/Print.hpp"

namespace Optrella::Internal {

bool validateParameters(const Parameters& given) {
    bool isValid = true;
    for (const ParameterProtocol& parameter : given) {
        const std::optional<Text> message = parameter.validate();
        if (!message) continue;
        printLine({"Validation of parameter ", parameter.firstTag(), " failed : ", *message});
        isValid = false;
    }
    return isValid;
}

bool validatePermissions(bool requiresRoot) {
    if (!requiresRoot) return true;
    // The group alone decides, not the process's user id.
    constexpr std::int64_t groupOfRoot = 0;
    if (PromptForPassword::validateGroupMembership(groupOfRoot)) return true;
    // From before there is a password, until the command has ended: it lies in a pipe as well.
    const Platform::Concealment concealment;
    if (std::optional<Platform::Password> password = PromptForPassword::prompt()) {
        PromptForPassword::rerun(*std::move(password), Platform::startArguments());
        // The tool has run, as root: this process has nothing left to do, whatever came of it.
        std::exit(0);  // NOLINT(concurrency-mt-unsafe)
    }
    printLine({"Requested command line must be run as root. Try using sudo."});
    return false;
}

}  // namespace Optrella::Internal
