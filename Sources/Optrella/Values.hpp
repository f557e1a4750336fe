// Values.hpp - the values that fetch operations hand out beside texts and numbers.
//
// Both are plain values: copy them, compare them, keep them in a set. Nothing here prints or
// throws: lack of memory STOPS the process.

#ifndef OPTRELLA_VALUES_HPP
#define OPTRELLA_VALUES_HPP

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <utility>

#include "Optrella/Export.hpp"
#include "Optrella/Text.hpp"

namespace Optrella {

// A universally unique identifier: 128 bits, in the order in which their text shows them.
struct OPTRELLA_API UUID {
    std::array<std::uint8_t, 16> bytes{};  // all zero unless it was made from a text

    // Returns nothing unless the text is 8-4-4-4-12 hexadecimal digits of either case.
    [[nodiscard]] static std::optional<UUID> fromText(const Text& text) noexcept;
    // Returns the 36 characters, in upper case.
    [[nodiscard]] Text text() const noexcept;

    // Compares the bytes, from first to last.
    friend std::strong_ordering operator<=>(const UUID&, const UUID&) = default;
};

// An absolute path, and the file URL that names it.
class OPTRELLA_API FileURL {
public:
    // Returns the file that `path` names now; a relative path counts from the current directory,
    // and the empty one is that directory. Asks the file system whether the path names a directory.
    [[nodiscard]] static FileURL fromPath(const Text& path) noexcept;

    // Returns "file://" and the absolute path, percent-encoded, with "/" at the end of what was an
    // existing directory. Of a path that was relative, "." and ".." have been taken out, links not
    // looked at. Each call makes the text.
    [[nodiscard]] Text text() const noexcept;
    // Returns the path as it was given, made absolute and otherwise untouched: whatever links it
    // passes, it names the file that was meant. (With no current directory a relative path stays
    // relative.)
    [[nodiscard]] const Text& path() const noexcept { return path_; }

    // Compares the URLs' texts.
    friend bool operator==(const FileURL& left, const FileURL& right) noexcept {
        return left.text() == right.text();
    }

private:
    FileURL(Text path, Text named) noexcept : path_(std::move(path)), named_(std::move(named)) {}

    Text path_;
    Text named_;  // what the text encodes
    bool lacksSlash_ = false;
};

}  // namespace Optrella

template <>
struct OPTRELLA_API std::hash<Optrella::UUID> {
    std::size_t operator()(const Optrella::UUID& uuid) const noexcept;
};
template <>
struct OPTRELLA_API std::hash<Optrella::FileURL> {
    std::size_t operator()(const Optrella::FileURL& url) const noexcept {
        return std::hash<Optrella::Text>()(url.text());
    }
};

#endif
