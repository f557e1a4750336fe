// TemporaryDirectory.hpp - an empty directory that is the current one while this lives.

#ifndef OPTRELLA_TESTS_SUPPORT_TEMPORARYDIRECTORY_HPP
#define OPTRELLA_TESTS_SUPPORT_TEMPORARYDIRECTORY_HPP

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace Tests {

class TemporaryDirectory {
public:
    TemporaryDirectory() {
        if (::mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no directory in /tmp");
        std::filesystem::current_path(path_);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory() {
        std::filesystem::current_path(before_);
        std::filesystem::remove_all(path_);
    }

    // Absolute, without links, without anything that a URL escapes.
    [[nodiscard]] const std::string& path() const { return path_; }

private:
    std::filesystem::path before_ = std::filesystem::current_path();
    std::string path_ = std::filesystem::canonical("/tmp") / "Optrella-XXXXXX";
};

}  // namespace Tests

#endif
