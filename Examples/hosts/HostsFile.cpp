#include "HostsFile.hpp"

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <system_error>
#include <utility>

namespace {

// ---- Text ----

char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::string lowered(std::string_view text) {
    std::string result(text);
    for (char& c : result) c = lowered(c);
    return result;
}

bool isSameName(std::string_view left, std::string_view right) {
    return lowered(left) == lowered(right);
}

// The bytes of the address, the highest first, and its zone; empty when the text is no address.
std::string addressKey(std::string_view text) {
    const std::size_t zone = std::min(text.find('%'), text.size());
    const std::string number(text.substr(0, zone));
    // A NUL would hide what follows it from inet_pton.
    if (number.find('\0') != std::string::npos) return "";
    char bytes[sizeof(in6_addr)];
    if (inet_pton(AF_INET6, number.c_str(), bytes) == 1 && zone + 1 != text.size()) {
        return std::string(bytes, sizeof(in6_addr)).append(text.substr(zone));
    }
    if (inet_pton(AF_INET, number.c_str(), bytes) == 1 && zone == text.size()) {
        return {bytes, sizeof(in_addr)};
    }
    return "";
}

bool isLabelCharacter(char c) {
    const char lower = lowered(c);
    // "_" is in no standard, but in many hosts files.
    return (lower >= 'a' && lower <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
}

bool isLabel(std::string_view label) {
    return !label.empty() && label.size() <= 63 && label.front() != '-' && label.back() != '-' &&
           std::all_of(label.begin(), label.end(), isLabelCharacter);
}

// Views of the words before a comment: the address, then the names.
std::vector<std::string_view> wordsOf(std::string_view line) {
    static constexpr std::string_view whitespace = " \t\r\n";
    line = line.substr(0, line.find('#'));
    std::vector<std::string_view> words;
    std::size_t end = 0;
    for (;;) {
        const std::size_t begin = line.find_first_not_of(whitespace, end);
        if (begin == std::string_view::npos) return words;
        end = std::min(line.find_first_of(whitespace, begin), line.size());
        words.push_back(line.substr(begin, end - begin));
    }
}

bool isEntry(const std::vector<std::string_view>& words) {
    return words.size() >= 2 && isAddress(words.front());
}

Problem mistakeIn(const std::vector<std::string_view>& words) {
    if (words.empty()) return std::nullopt;
    if (!isAddress(words.front())) return std::string(words.front()) + " is not an address";
    if (words.size() < 2) return std::string(words.front()) + " has no name";
    const auto wrong = std::find_if_not(words.begin() + 1, words.end(), isHostName);
    if (wrong == words.end()) return std::nullopt;
    return std::string(*wrong) + " is not a host name";
}

const char* endOf(std::string_view word) { return word.data() + word.size(); }

// The line without the name, wherever it stands; the rest is as it was.
std::string lineWithout(std::string_view name, std::string line) {
    for (;;) {
        const std::vector<std::string_view> words = wordsOf(line);
        const auto found =
            std::find_if(words.begin() + 1, words.end(),
                         [name](std::string_view word) { return isSameName(word, name); });
        if (found == words.end()) return line;
        // The next name moves up to the place of this one, so that columns stay aligned.
        const bool isLast = found + 1 == words.end();
        const char* begin = isLast ? endOf(found[-1]) : found[0].data();
        const char* end = isLast ? endOf(found[0]) : found[1].data();
        line.erase(static_cast<std::size_t>(begin - line.data()),
                   static_cast<std::size_t>(end - begin));
    }
}

std::vector<std::string> linesOf(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t size = std::min(text.find('\n'), text.size() - 1) + 1;
        lines.emplace_back(text.substr(0, size));
        text.remove_prefix(size);
    }
    return lines;
}

// ---- Files ----

// Says why the last system call failed.
std::string cannot(const char* action, const std::string& path) {
    const std::string reason = std::generic_category().message(errno);
    return std::string("Cannot ") + action + " " + path + ": " + reason;
}

// An open file, closed at the end of the scope.
class File {
public:
    explicit File(int descriptor) : descriptor_(descriptor) {}
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() {
        if (isOpen()) ::close(descriptor_);
    }

    [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }
    [[nodiscard]] int descriptor() const { return descriptor_; }

    [[nodiscard]] bool readAll(std::string& text) const {
        char block[4096];
        for (;;) {
            const ssize_t count = ::read(descriptor_, block, sizeof block);
            if (count <= 0) return count == 0;
            text.append(block, static_cast<std::size_t>(count));
        }
    }

    // Returns when the text has reached the disk.
    [[nodiscard]] bool writeAll(std::string_view text) const {
        while (!text.empty()) {
            const ssize_t count = ::write(descriptor_, text.data(), text.size());
            if (count < 0) return false;
            text.remove_prefix(static_cast<std::size_t>(count));
        }
        return sync();
    }

    [[nodiscard]] bool sync() const { return ::fsync(descriptor_) == 0; }

    [[nodiscard]] bool takeOwnerAndMode(const struct stat& model) const {
        struct stat own;
        if (::fstat(descriptor_, &own) != 0) return false;
        const bool isOwned = own.st_uid == model.st_uid && own.st_gid == model.st_gid;
        if (!isOwned && ::fchown(descriptor_, model.st_uid, model.st_gid) != 0) return false;
        // Last, because a change of owner takes rights away.
        return ::fchmod(descriptor_, model.st_mode & 07777) == 0;
    }

private:
    int descriptor_;
};

// Deletes a file at the end of the scope, unless it is kept.
class Unfinished {
public:
    explicit Unfinished(std::string path) : path_(std::move(path)) {}
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;
    ~Unfinished() {
        if (!isKept_) ::unlink(path_.c_str());
    }

    void keep() { isKept_ = true; }

private:
    std::string path_;
    bool isKept_ = false;
};

Problem readFile(const std::string& path, std::string& text) {
    const File file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.isOpen() || !file.readAll(text)) return cannot("read", path);
    return std::nullopt;
}

// The file itself, with all symbolic links followed; empty when there is none.
std::string withoutLinks(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                           &std::free);
    return real ? real.get() : "";
}

// REQUIRES: an absolute path.
std::string directoryOf(const std::string& path) {
    return path.substr(0, std::max<std::size_t>(path.rfind('/'), 1));
}

}  // namespace

bool isAddress(std::string_view text) { return !addressKey(text).empty(); }

bool isHostName(std::string_view text) {
    if (text.size() > 253) return false;
    for (;;) {
        const std::size_t dot = text.find('.');
        if (!isLabel(text.substr(0, dot))) return false;
        if (dot == std::string_view::npos) return true;
        text.remove_prefix(dot + 1);
    }
}

void sortByAddress(std::vector<Entry>& entries) {
    const auto key = [](const Entry& entry) {
        std::string bytes = addressKey(entry.address);
        return std::pair(bytes.size() > sizeof(in_addr), std::move(bytes));
    };
    std::stable_sort(entries.begin(), entries.end(), [&key](const Entry& left, const Entry& right) {
        return key(left) < key(right);
    });
}

void sortByName(std::vector<Entry>& entries) {
    std::stable_sort(entries.begin(), entries.end(), [](const Entry& left, const Entry& right) {
        return lowered(left.names.front()) < lowered(right.names.front());
    });
}

Problem HostsFile::load(const std::string& path) {
    std::string text;
    if (Problem problem = readFile(path, text)) return problem;
    path_ = path;
    lines_ = linesOf(text);
    loaded_ = std::move(text);
    return std::nullopt;
}

Problem HostsFile::save() const {
    const std::string target = withoutLinks(path_);
    struct stat old;
    if (target.empty() || ::stat(target.c_str(), &old) != 0) return cannot("replace", path_);
    if (!S_ISREG(old.st_mode)) return "Cannot replace " + path_ + ": it is not a regular file";

    // In the same directory, because only there a rename replaces the file in one step.
    std::string temporary = target + ".XXXXXX";
    const File file(::mkstemp(temporary.data()));
    if (!file.isOpen()) return cannot("write in", directoryOf(target));
    Unfinished unfinished(temporary);
    if (!file.takeOwnerAndMode(old)) return cannot("keep owner and mode of", path_);
    if (!file.writeAll(text())) return cannot("replace", path_);

    std::string now;
    if (Problem problem = readFile(target, now)) return problem;
    if (now != loaded_) return "Cannot replace " + path_ + ": it has been changed meanwhile";
    if (::rename(temporary.c_str(), target.c_str()) != 0) return cannot("replace", path_);
    unfinished.keep();

    // The new name, too, must have reached the disk.
    const File directory(::open(directoryOf(target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!directory.isOpen() || !directory.sync()) return cannot("write", directoryOf(target));
    return std::nullopt;
}

Problem HostsFile::saveCopy(const std::string& path) const {
    const File file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
    if (!file.isOpen()) return cannot("write", path);
    Unfinished unfinished(path);
    if (!file.writeAll(text())) return cannot("write", path);
    unfinished.keep();
    return std::nullopt;
}

std::vector<Entry> HostsFile::entries() const {
    std::vector<Entry> entries;
    for (const std::string& line : lines_) {
        const std::vector<std::string_view> words = wordsOf(line);
        if (!isEntry(words)) continue;
        entries.push_back({std::string(words.front()), {words.begin() + 1, words.end()}});
    }
    return entries;
}

std::vector<std::string> HostsFile::addressesOf(std::string_view name) const {
    std::vector<std::string> addresses;
    for (const Entry& entry : entries()) {
        const bool isNamed =
            std::any_of(entry.names.begin(), entry.names.end(),
                        [name](const std::string& other) { return isSameName(other, name); });
        if (isNamed) addresses.push_back(entry.address);
    }
    return addresses;
}

bool HostsFile::has(std::string_view address, std::string_view name) const {
    const std::vector<std::string> addresses = addressesOf(name);
    return std::any_of(addresses.begin(), addresses.end(), [address](const std::string& other) {
        return addressKey(other) == addressKey(address);
    });
}

std::vector<std::string> HostsFile::mistakes() const {
    std::vector<std::string> mistakes;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const Problem mistake = mistakeIn(wordsOf(lines_[i]));
        if (mistake) mistakes.push_back(path_ + ":" + std::to_string(i + 1) + ": " + *mistake);
    }
    return mistakes;
}

void HostsFile::add(const Entry& entry) {
    if (!lines_.empty() && lines_.back().back() != '\n') lines_.back() += '\n';
    std::string line = entry.address;
    char separator = '\t';
    for (const std::string& name : entry.names) {
        line += std::exchange(separator, ' ');
        line += name;
    }
    lines_.push_back(line + "\n");
}

bool HostsFile::remove(std::string_view name) {
    bool isFound = false;
    std::vector<std::string> kept;
    for (const std::string& line : lines_) {
        const std::string rest = isEntry(wordsOf(line)) ? lineWithout(name, line) : line;
        const bool isChanged = rest != line;
        if (!isChanged || isEntry(wordsOf(rest))) kept.push_back(rest);
        isFound = isFound || isChanged;
    }
    lines_ = std::move(kept);
    return isFound;
}

std::string HostsFile::text() const {
    std::string text;
    for (const std::string& line : lines_) text += line;
    return text;
}
