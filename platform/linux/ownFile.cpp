#include "platform/linux/ownFile.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>

namespace platform {

namespace {

constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;
constexpr mode_t kSharedByGroup = S_ISGID | S_IRGRP | S_IWGRP | S_IXGRP;
constexpr mode_t kReadAndWrite = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH;

// No memory is asked for, so that saving fails of its own reasons only.
constexpr std::size_t kLongestFolder = 1024;

// The permissions of the folder that a path's last name stands in; none when it cannot be told.
mode_t folderPermissions(const char* path) noexcept {
    std::array<char, kLongestFolder> folder{'.'};
    const char* const end = std::strrchr(path, '/');
    if (end != nullptr) {
        const std::size_t size = static_cast<std::size_t>(end - path) + 1;
        if (size >= folder.size())
            return 0;
        std::memcpy(folder.data(), path, size);
    }
    struct stat status = {};
    return stat(folder.data(), &status) == 0 ? status.st_mode : 0;
}

} // namespace

mode_t ownPermissions(const char* path) noexcept {
    struct stat status = {};
    if (lstat(path, &status) == 0 && S_ISLNK(status.st_mode))
        return kOwnerOnly;
    const mode_t folder = folderPermissions(path);
    const bool isShared = (folder & kSharedByGroup) == kSharedByGroup;
    return isShared ? kOwnerOnly | (folder & kReadAndWrite) : kOwnerOnly;
}

Stream streamOf(int descriptor, const char* mode) noexcept {
    if (descriptor < 0)
        return nullptr;
    Stream stream(fdopen(descriptor, mode));
    if (!stream) {
        const int error = errno;
        close(descriptor);
        errno = error;
    }
    return stream;
}

} // namespace platform
