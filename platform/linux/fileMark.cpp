#include "platform/fileMark.h"

#include <sys/stat.h>

namespace platform {

std::optional<FileMark> markOfFile(const std::filesystem::path& path) noexcept {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        return std::nullopt;
    constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;
    return FileMark{static_cast<std::uint64_t>(status.st_mtim.tv_sec) * kNanosecondsPerSecond +
                        static_cast<std::uint64_t>(status.st_mtim.tv_nsec),
                    static_cast<std::uint64_t>(status.st_size), status.st_ino};
}

} // namespace platform
