#include "Optrella/Platform/Log.hpp"

#include <os/log.h>

#include <string>

namespace Optrella::Platform {

namespace {

// The system keeps it until the process ends; it is asked for once.
os_log_t handleOf(const Log& log) {
    static const os_log_t handle = os_log_create(log.subsystem, log.category);
    return handle;
}

}  // namespace

void logInfo(const Log& log, std::string_view label, std::string_view message) {
    const os_log_t handle = handleOf(log);
    if (!os_log_type_enabled(handle, OS_LOG_TYPE_INFO)) return;
    // As C strings: the log shows nothing after a NUL.
    const std::string labelText(label);
    const std::string messageText(message);
    os_log_with_type(handle, OS_LOG_TYPE_INFO, "[**] %{public}s %s", labelText.c_str(),
                     messageText.c_str());
}

}  // namespace Optrella::Platform
