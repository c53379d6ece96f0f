// A folder for this process alone, gone with everything in it when the object is, or when the
// process ends early.
#pragma once

#include "platform/earlyEnd.h"

#include <filesystem>
#include <optional>

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
    std::optional<platform::RemovedAtEarlyEnd> removal_;
};

} // namespace tavctl
