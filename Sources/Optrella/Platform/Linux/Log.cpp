#include "Optrella/Platform/Log.hpp"

#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <string>
#include <string_view>

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

// Returns false when the log's socket is of another kind.
bool sendTo(int kind, std::string_view text) noexcept {
    const int log = ::socket(AF_UNIX, kind | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (log < 0) return true;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, "/dev/log");
    const bool isConnected =
        ::connect(log, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    const bool isOfAnotherKind = !isConnected && errno == EPROTOTYPE;
    if (isConnected) ::send(log, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    ::close(log);
    return !isOfAnotherKind;
}

// syslog() would wait for a log daemon that hangs, and openlog() would change what the tool's own
// entries look like: so the entry goes to the log's socket directly. Most daemons take datagrams;
// in a stream a NUL ends each entry.
void send(const std::string& text) noexcept {
    if (!sendTo(SOCK_DGRAM, text)) sendTo(SOCK_STREAM, {text.c_str(), text.size() + 1});
}

}  // namespace

void logInfo(const Log& log, std::string_view label, std::string_view) {
    if (isInfoWanted()) send(entry(log, label));
}

}  // namespace Optrella::Platform
