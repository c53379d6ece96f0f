// A folder for one test, gone with everything in it when the test ends.
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

namespace testsupport {

class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

    // Writes a file of this name, which is UTF-8, in the folder; answers its path.
    [[nodiscard]] std::filesystem::path file(const std::string& name,
                                             const std::string& content) const;

private:
    std::filesystem::path path_;
};

} // namespace testsupport
