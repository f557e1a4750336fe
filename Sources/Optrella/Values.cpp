#include "Optrella/Values.hpp"

#include <string>
#include <string_view>

#include "Optrella/Internal/Lines.hpp"
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
bool standsInURLPath(char c) noexcept {
    const bool isAlphanumeric =
        (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    return isAlphanumeric ||
           std::string_view("-._~!$&'()*+,;=:@/").find(c) != std::string_view::npos;
}

void appendPercentEncoded(Internal::Lines& url, std::string_view path) {
    constexpr char digits[] = "0123456789ABCDEF";
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        const char encoded[] = {'%', digits[byte / 16], digits[byte % 16]};
        url.append(standsInURLPath(c) ? std::string_view(&c, 1) : std::string_view(encoded, 3));
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
            if (isLast) out += '/';
        } else {
            out += segment;
        }
    }
    return out;
}

// A path that holds a NUL names nothing.
bool isFolder(const Text& path) noexcept {
    return static_cast<std::string_view>(path).find('\0') == std::string_view::npos &&
           Platform::isFolder(path.c_str());
}

std::string absolute(std::string_view path, std::string_view directory) {
    std::string joined(directory);
    if (!joined.ends_with('/')) joined += '/';
    joined += path;
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

Text UUID::text() const {
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

FileURL FileURL::fromPath(const Text& path) {
    const std::string_view typed = path;
    Text absolutePath = path;
    std::string named(typed);
    if (!typed.starts_with('/')) {
        const std::optional<std::string> directory = Platform::currentDirectory();
        named = withoutDotSegments(absolute(typed, directory.value_or("/")));
        if (directory) absolutePath = typed.empty() ? *directory : absolute(typed, *directory);
    }
    if (!named.ends_with('/') && isFolder(path)) named += '/';
    Internal::Lines url;
    url.append("file://");
    appendPercentEncoded(url, named);
    return {url, absolutePath};
}

}  // namespace Optrella

std::size_t std::hash<Optrella::UUID>::operator()(const Optrella::UUID& uuid) const noexcept {
    return std::hash<std::string_view>()(
        {reinterpret_cast<const char*>(uuid.bytes.data()), uuid.bytes.size()});
}
