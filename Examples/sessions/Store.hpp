// Store.hpp - the sessions of a machine, as the file sessions.txt keeps them.

#ifndef SESSIONS_STORE_HPP
#define SESSIONS_STORE_HPP

#include <map>
#include <set>
#include <string>

struct Session {
    std::string state = "active";  // or "locked"
    long long priority = 0;
    long long idleDays = 0;
    std::set<std::string> labels{};
};

class Store {
public:
    // Reads a file; of one that does not exist or cannot be read there are no sessions.
    explicit Store(const std::string& path = "sessions.txt");

    // Writes all to a file, and returns whether that was possible.
    [[nodiscard]] bool save(const std::string& path = "sessions.txt") const;

    std::map<std::string, Session> sessions;  // by name
};

#endif
