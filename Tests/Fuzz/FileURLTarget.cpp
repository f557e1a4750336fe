// File URLs of any path, in any current directory, against the rules of RFC 3986.

#include <optional>
#include <string>
#include <string_view>

#include "Law.hpp"
#include "Optrella/Values.hpp"
#include "Support/FakePlatform.hpp"
#include "Support/Input.hpp"

namespace {

using namespace Optrella;
using Tests::Input;
using Tests::law;
using Tests::sameBytes;

bool isAlphanumeric(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// pchar of RFC 3986, 3.3, without percent-encoding, and the slash between segments.
bool standsForItself(char c) {
    constexpr std::string_view unreserved = "-._~";
    constexpr std::string_view subDelims = "!$&'()*+,;=";
    return isAlphanumeric(c) || unreserved.find(c) != std::string_view::npos ||
           subDelims.find(c) != std::string_view::npos || c == ':' || c == '@' || c == '/';
}

int digit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    law(c >= 'A' && c <= 'F', "an escape has two upper-case hexadecimal digits");
    return c - 'A' + 10;
}

// The path of a file URL; a finding when the URL is none, or not in the one way to write it.
std::string decoded(std::string_view url) {
    law(url.starts_with("file:///"), "a file URL is absolute");
    url.remove_prefix(std::string_view("file://").size());
    std::string path;
    while (!url.empty()) {
        if (url.front() == '%') {
            law(url.size() >= 3, "an escape is whole");
            const auto byte = static_cast<char>(digit(url[1]) * 16 + digit(url[2]));
            law(!standsForItself(byte), "nothing is escaped without need");
            path += byte;
            url.remove_prefix(3);
        } else {
            law(standsForItself(url.front()), "what no URL may hold is escaped");
            path += url.front();
            url.remove_prefix(1);
        }
    }
    return path;
}

void removeLastSegment(std::string& output) {
    const std::size_t slash = output.rfind('/');
    output.resize(slash == std::string::npos ? 0 : slash);
}

// RFC 3986, 5.2.4, step by step, for a path that begins with a slash.
std::string withoutDots(std::string input) {
    std::string output;
    while (!input.empty()) {
        if (input.starts_with("/./")) {
            input.erase(0, 2);
        } else if (input == "/.") {
            input = "/";
        } else if (input.starts_with("/../")) {
            input.erase(0, 3);
            removeLastSegment(output);
        } else if (input == "/..") {
            input = "/";
            removeLastSegment(output);
        } else {
            const std::size_t next = input.find('/', 1);
            output += input.substr(0, next);
            input.erase(0, next);
        }
    }
    return output;
}

struct Expected {
    std::string path;
    std::string pathOfURL;
};

Expected expected(const std::string& typed, const std::optional<std::string>& directory) {
    if (typed.starts_with('/')) return {typed, typed};
    const std::string base = directory.value_or("/");
    const std::string joined = (base == "/" ? base : base + "/") + typed;
    const std::string ofURL = withoutDots(joined);
    if (!directory) return {typed, ofURL};
    return {typed.empty() ? *directory : joined, ofURL};
}

// Absolute, without a NUL or a slash at its end, as the system gives it; or none.
std::optional<std::string> currentDirectory(Input& input) {
    const std::size_t choice = input.upTo(20);
    if (choice == 20) return std::nullopt;
    std::string directory = "/" + input.bytes(choice);
    std::erase(directory, '\0');
    while (directory.size() > 1 && directory.ends_with('/')) directory.pop_back();
    return directory;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    Tests::FakePlatform& platform = Tests::platform();
    platform = Tests::FakePlatform();
    platform.currentDirectory = currentDirectory(input);
    const bool isDirectory = input.flag();
    const std::string typed = input.rest();
    const bool canBeDirectory = isDirectory && typed.find('\0') == std::string::npos;
    // Also the path up to a NUL: it must not be what is asked for.
    if (isDirectory) platform.directories = {typed.substr(0, typed.find('\0'))};

    Expected model = expected(typed, platform.currentDirectory);
    if (canBeDirectory && !model.pathOfURL.ends_with('/')) model.pathOfURL += '/';
    const FileURL url = FileURL::fromPath(typed);
    sameBytes(url.path(), model.path, "the path is what was typed, made absolute");
    sameBytes(decoded(url.text()), model.pathOfURL, "the URL decodes to the path");
    law(url.text().isASCII(), "a URL is ASCII");

    const FileURL again = FileURL::fromPath(url.path());
    sameBytes(again.path(), url.path(), "an absolute path stays as it is");
    if (typed.starts_with('/')) {
        const FileURL fromURL = FileURL::fromPath(decoded(url.text()));
        law(again == url && fromURL == url, "the same path gives the same URL");
        law(std::hash<FileURL>()(again) == std::hash<FileURL>()(url), "equal URLs hash alike");
    }
    return 0;
}
