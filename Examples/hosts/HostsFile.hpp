// HostsFile.hpp - a hosts file as a value: load it, change its entries, save it safely.
//
// Every line is kept byte by byte unless it is changed itself, lines that nobody understands
// included. Host names are compared without regard to case. Nothing here prints or throws.

#ifndef HOSTS_HOSTSFILE_HPP
#define HOSTS_HOSTSFILE_HPP

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Why something could not be done, for the user to read; nothing when it was done.
using Problem = std::optional<std::string>;

// One line of a hosts file that gives an address its names.
struct Entry {
    std::string address;
    std::vector<std::string> names;
};

// IPv4, or IPv6 with or without a zone (fe80::1%lo0).
[[nodiscard]] bool isAddress(std::string_view text);

// Letters, digits, "-" and "_" in labels of at most 63 characters, together at most 253.
[[nodiscard]] bool isHostName(std::string_view text);

// IPv4 before IPv6, each by number. Equal addresses keep their order.
void sortByAddress(std::vector<Entry>& entries);

// By the first name of each entry. Equal names keep their order.
void sortByName(std::vector<Entry>& entries);

class HostsFile {
public:
    [[nodiscard]] Problem load(const std::string& path);

    // Replaces the file that was loaded, as a whole or not at all; owner, group and mode stay, and
    // of a symbolic link the file that it names is replaced. Refuses to undo what somebody else has
    // written since the file was loaded.
    [[nodiscard]] Problem save() const;

    // Writes a new file. Whatever stands at `path` already is left alone.
    [[nodiscard]] Problem saveCopy(const std::string& path) const;

    // In the order of the file. A line that is no proper entry gives none.
    [[nodiscard]] std::vector<Entry> entries() const;

    [[nodiscard]] std::vector<std::string> addressesOf(std::string_view name) const;

    // Whether the address, however it is written, has the name already.
    [[nodiscard]] bool has(std::string_view address, std::string_view name) const;

    // What is wrong with the file, as "path:line: reason".
    [[nodiscard]] std::vector<std::string> mistakes() const;

    // REQUIRES: an address, and at least one name, all of them proper.
    void add(const Entry& entry);

    // Takes the name out of every entry, and an entry out of the file when no name is left.
    // Returns whether the name was found.
    bool remove(std::string_view name);

    // Takes over the lines of another file; the place of this one stays.
    void takeLinesOf(const HostsFile& other) { lines_ = other.lines_; }

private:
    [[nodiscard]] std::string text() const;

    std::string path_;
    std::string loaded_;              // the whole file as it was found
    std::vector<std::string> lines_;  // each with its line end
};

#endif
