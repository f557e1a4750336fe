// Files.hpp - what the file system says of a path. Paths are bytes; none may hold a NUL.

#ifndef OPTRELLA_PLATFORM_FILES_HPP
#define OPTRELLA_PLATFORM_FILES_HPP

#include <optional>
#include <string>

namespace Optrella::Platform {

// Whether the path leads to anything, a file or a folder; links are followed. One question to the
// file system.
[[nodiscard]] bool fileExists(const char* path) noexcept;

// Whether the path itself is a folder; a link to one is not.
[[nodiscard]] bool isFolder(const char* path) noexcept;

// Absolute, without a "/" at its end unless it is the root; nothing when there is none any more.
[[nodiscard]] std::optional<std::string> currentDirectory();

}  // namespace Optrella::Platform

#endif
