// A folder for this process alone, gone with everything in it when the object is.
#pragma once

#include <filesystem>

namespace tavctl {

class ScratchFolder {
public:
    // Below the system's folder for temporary files. Raises FailureException.
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

} // namespace tavctl
