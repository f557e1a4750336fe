#include "Store.hpp"

#include <fstream>
#include <sstream>

// A line a session: name, state, priority, idle days, labels.
Store::Store(const std::string& path) {
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        std::istringstream fields(line);
        std::string name;
        Session session;
        fields >> name >> session.state >> session.priority >> session.idleDays;
        for (std::string label; fields >> label;) session.labels.insert(label);
        if (!name.empty()) sessions[name] = session;
    }
}

bool Store::save(const std::string& path) const {
    std::ofstream file(path);
    for (const auto& [name, session] : sessions) {
        file << name << ' ' << session.state << ' ' << session.priority << ' ' << session.idleDays;
        for (const std::string& label : session.labels) file << ' ' << label;
        file << '\n';
    }
    file.close();
    return file.good();
}
