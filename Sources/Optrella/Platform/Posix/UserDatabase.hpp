// UserDatabase.hpp - records of the user database, by the functions that every system has.

#ifndef OPTRELLA_PLATFORM_POSIX_USERDATABASE_HPP
#define OPTRELLA_PLATFORM_POSIX_USERDATABASE_HPP

#include <cerrno>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Optrella::Platform {

// Calls one of the getXX_r functions with a buffer that grows until the record fits. The record's
// texts stand in the buffer. Null when there is no such record, or on any failure.
template <class Record, class LookUp>
const Record* findRecord(Record& record, std::vector<char>& buffer, LookUp lookUp) {
    constexpr std::size_t largest = std::size_t{16} << 20;
    for (buffer.resize(1024); buffer.size() <= largest; buffer.resize(buffer.size() * 2)) {
        Record* result = nullptr;
        int error = lookUp(&record, buffer.data(), buffer.size(), &result);
        while (error == EINTR) error = lookUp(&record, buffer.data(), buffer.size(), &result);
        if (error != ERANGE) return error == 0 ? result : nullptr;
    }
    return nullptr;
}

// Returns the name that a user id has; nothing when it has none, or on any failure.
[[nodiscard]] std::optional<std::string> nameOfUser(unsigned id);

}  // namespace Optrella::Platform

#endif
