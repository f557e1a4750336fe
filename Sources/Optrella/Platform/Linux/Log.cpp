#include "Optrella/Platform/Log.hpp"

#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <cstring>
#include <ctime>
#include <string>

namespace Optrella::Platform {

namespace {

bool isInfoWanted() noexcept {
    // Zero asks and changes nothing; the C library keeps the mask in one plain int.
    const int mask = ::setlogmask(0);  // NOLINT(concurrency-mt-unsafe)
    return (mask & LOG_MASK(LOG_INFO)) != 0;
}

// "Nov 21 09:30:00", local time; in English, whatever the locale.
std::string timeStamp() {
    constexpr const char* months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    char stamp[32];
    static_cast<void>(std::strftime(stamp, sizeof stamp, " %e %H:%M:%S", &local));
    return std::string(months[local.tm_mon]) + stamp;
}

std::string entry(const Log& log, std::string_view label) {
    std::string text = "<";
    text += std::to_string(LOG_USER | LOG_INFO);
    text += '>';
    text += timeStamp();
    text += ' ';
    text += log.subsystem;
    text += '[';
    text += std::to_string(::getpid());
    text += "]: [";
    text += log.category;
    text += "] [**] ";
    text += label;
    text += " <private>";  // nothing can be told here to show private data
    return text;
}

// syslog() would wait for a log daemon that hangs, and openlog() would change what the tool's own
// entries look like: so the entry goes to the log's socket directly.
void send(const std::string& text) noexcept {
    const int log = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (log < 0) return;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, "/dev/log");
    ::sendto(log, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL,
             reinterpret_cast<const sockaddr*>(&address), sizeof address);
    ::close(log);
}

}  // namespace

void logInfo(const Log& log, std::string_view label, std::string_view) {
    if (isInfoWanted()) send(entry(log, label));
}

}  // namespace Optrella::Platform
