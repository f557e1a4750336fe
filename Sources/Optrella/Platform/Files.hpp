// Files.hpp - what the file system says of a path. Paths are bytes; none may hold a NUL.

#ifndef OPTRELLA_PLATFORM_FILES_HPP
#define OPTRELLA_PLATFORM_FILES_HPP

#include <optional>
#include <string>

namespace Optrella::Platform {

// Returns whether the path leads to anything, a file or a directory; links are followed. Asks the
// file system once.
[[nodiscard]] bool fileExists(const char* path) noexcept;

// Returns whether the path itself is a directory; a link to one is not.
[[nodiscard]] bool isDirectory(const char* path) noexcept;

// Returns the current directory: absolute, without a "/" at its end unless it is the root; nothing
// when there is none any more.
[[nodiscard]] std::optional<std::string> currentDirectory();

}  // namespace Optrella::Platform

#endif
