// The last-write time out of what the system tells of a file. Private to this folder.
#pragma once

#include "platform/file.h"

#include <sys/stat.h>

namespace platform {

inline FileTime lastWriteTimeOf(const struct stat& status) noexcept {
    constexpr FileTime kNanosecondsPerSecond = 1'000'000'000;
    return static_cast<FileTime>(status.st_mtim.tv_sec) * kNanosecondsPerSecond +
           static_cast<FileTime>(status.st_mtim.tv_nsec);
}

} // namespace platform
