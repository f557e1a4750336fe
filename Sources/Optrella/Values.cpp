#include "Optrella/Values.hpp"

#include <string>
#include <string_view>

#include "Optrella/Platform/Files.hpp"

namespace Optrella {

namespace {

constexpr bool isDashPosition(std::size_t position) noexcept {
    return position == 8 || position == 13 || position == 18 || position == 23;
}

std::optional<std::uint8_t> hexadecimalDigit(char c) noexcept {
    if (c >= '0' && c <= '9') return static_cast<std::uint8_t>(c - '0');
    if (c >= 'a' && c <= 'f') return static_cast<std::uint8_t>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F') return static_cast<std::uint8_t>(c - 'A' + 10);
    return std::nullopt;
}

// The characters of an RFC 3986 path: unreserved, sub-delims, ":", "@", and the "/" between.
constexpr bool standsInURLPath(char c) noexcept {
    const bool isAlphanumeric =
        (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    return isAlphanumeric ||
           std::string_view("-._~!$&'()*+,;=:@/").find(c) != std::string_view::npos;
}

void appendPercentEncoded(std::string& url, std::string_view path) {
    constexpr char digits[] = "0123456789ABCDEF";
    while (!path.empty()) {
        std::size_t run = 0;
        while (run < path.size() && standsInURLPath(path[run])) ++run;
        url.append(path.substr(0, run));
        path.remove_prefix(run);
        if (path.empty()) return;
        const auto byte = static_cast<unsigned char>(path.front());
        const char encoded[] = {'%', digits[byte / 16], digits[byte % 16]};
        url.append(encoded, sizeof encoded);
        path.remove_prefix(1);
    }
}

// Takes "." and ".." out of an absolute path as RFC 3986, 5.2.4, does: on the text alone.
std::string withoutDotSegments(std::string_view path) {
    std::string out;
    out.reserve(path.size());
    while (!path.empty()) {
        const std::size_t end = path.find('/', 1);
        const std::string_view segment = path.substr(0, end);  // with its "/" in front
        const bool isLast = end == std::string_view::npos;
        path.remove_prefix(segment.size());
        if (segment == "/." || segment == "/..") {
            if (segment == "/..") out.resize(out.empty() ? 0 : out.rfind('/'));
            if (isLast) out.append("/");
        } else {
            out.append(segment);
        }
    }
    return out;
}

// A path that holds a NUL names nothing.
bool isDirectory(const Text& path) noexcept {
    return static_cast<std::string_view>(path).find('\0') == std::string_view::npos &&
           Platform::isDirectory(path.c_str());
}

std::string absolute(std::string_view path, std::string_view directory) {
    std::string joined(directory);
    if (!joined.ends_with('/')) joined.append("/");
    joined.append(path);
    return joined;
}

}  // namespace

std::optional<UUID> UUID::fromText(const Text& text) noexcept {
    const std::string_view characters = text;
    if (characters.size() != 36) return std::nullopt;
    UUID uuid;
    std::size_t digits = 0;
    for (std::size_t i = 0; i < characters.size(); ++i) {
        if (isDashPosition(i)) {
            if (characters[i] != '-') return std::nullopt;
            continue;
        }
        const std::optional<std::uint8_t> digit = hexadecimalDigit(characters[i]);
        if (!digit) return std::nullopt;
        std::uint8_t& byte = uuid.bytes[digits / 2];
        byte = static_cast<std::uint8_t>(byte * 16 + *digit);
        ++digits;
    }
    return uuid;
}

Text UUID::text() const noexcept {
    constexpr char digits[] = "0123456789ABCDEF";
    char text[36];
    std::size_t size = 0;
    for (const std::uint8_t byte : bytes) {
        if (isDashPosition(size)) text[size++] = '-';
        text[size++] = digits[byte / 16];
        text[size++] = digits[byte % 16];
    }
    return std::string_view(text, size);
}

FileURL FileURL::fromPath(const Text& path) noexcept {
    const std::string_view typed = path;
    FileURL url(path, path);
    if (!typed.starts_with('/')) {
        const std::optional<std::string> directory = Platform::currentDirectory();
        const std::string joined = absolute(typed, directory ? *directory : "/");
        if (directory) url.path_ = typed.empty() ? *directory : joined;
        url.named_ = withoutDotSegments(joined);
    }
    const std::string_view named = url.named_;
    url.lacksSlash_ = !named.ends_with('/') && isDirectory(path);
    return url;
}

Text FileURL::text() const noexcept {
    std::string url("file://");
    appendPercentEncoded(url, named_);
    if (lacksSlash_) url.append("/");
    return url;
}

}  // namespace Optrella

std::size_t std::hash<Optrella::UUID>::operator()(const Optrella::UUID& uuid) const noexcept {
    return std::hash<std::string_view>()(
        {reinterpret_cast<const char*>(uuid.bytes.data()), uuid.bytes.size()});
}
