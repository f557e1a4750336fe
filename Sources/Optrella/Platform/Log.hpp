// Log.hpp - one entry in the system's log, at the info level.

#ifndef OPTRELLA_PLATFORM_LOG_HPP
#define OPTRELLA_PLATFORM_LOG_HPP

#include <string_view>

namespace Optrella::Platform {

// Where entries come from. A process has one, which stays what it is.
struct Log {
    const char* subsystem;
    const char* category;
};

// Records the entry "[**] LABEL MESSAGE" when entries of the info level are wanted, and formats
// nothing otherwise. The label is public, the message private: who reads the log sees it only where
// the system has been told to show private data. Never waits and never fails: an entry that the log
// does not take is lost.
void logInfo(const Log& log, std::string_view label, std::string_view message);

}  // namespace Optrella::Platform

#endif
