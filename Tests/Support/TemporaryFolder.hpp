// TemporaryFolder.hpp - an empty folder that is the current one while this lives.

#ifndef OPTRELLA_TESTS_SUPPORT_TEMPORARYFOLDER_HPP
#define OPTRELLA_TESTS_SUPPORT_TEMPORARYFOLDER_HPP

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace Tests {

class TemporaryFolder {
public:
    TemporaryFolder() {
        if (::mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no folder in /tmp");
        std::filesystem::current_path(path_);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
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
