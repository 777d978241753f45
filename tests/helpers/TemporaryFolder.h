// A place for a test's files.

#pragma once

#include <stdlib.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

namespace rkt::tests {

/// A new folder that goes, with all in it, at the end of the object's life.
class TemporaryFolder {
public:
    /// @throws std::system_error
    TemporaryFolder() {
        std::string name = std::filesystem::temp_directory_path() / "korvogit-test-XXXXXX";
        if (mkdtemp(name.data()) == nullptr) {
            throw std::system_error(errno, std::generic_category(), "mkdtemp");
        }
        path_ = name;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

}  // namespace rkt::tests
