#include "platform/linux/openFile.h"

#include "platform/linux/interruption.h"
#include "platform/linux/trustedLinks.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <string>

namespace platform {

namespace {

constexpr unsigned kNullDeviceMajor = 1;
constexpr unsigned kNullDeviceMinor = 3;

// 0, or why this is none of what is accepted.
int reasonToRefuse(const struct stat& status, BesideFiles accepted) noexcept {
    if (S_ISREG(status.st_mode))
        return 0;
    if (S_ISDIR(status.st_mode))
        return EISDIR;
    const bool isNull =
        S_ISCHR(status.st_mode) && status.st_rdev == makedev(kNullDeviceMajor, kNullDeviceMinor);
    return isNull && accepted == BesideFiles::theNullDevice ? 0 : EMEDIUMTYPE;
}

int openOnce(const char* path, int flags, mode_t permissions) noexcept {
    return pastInterruptions(
        [&] { return open(path, flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, permissions); });
}

// What comes to stand at the path while its links are looked at is not followed.
int openBehindLinks(const char* path, int flags, mode_t permissions) noexcept {
    try {
        std::string file(path);
        errno = followTrustedLinks(file);
        return errno == 0 ? openOnce(file.c_str(), flags, permissions) : -1;
    } catch (const std::bad_alloc&) {
        errno = ENOMEM;
        return -1;
    }
}

int openAny(const char* path, int flags, mode_t permissions) noexcept {
    if ((flags & O_ACCMODE) == O_RDONLY)
        return openOnce(path, flags, permissions);
    const int descriptor = openOnce(path, flags | O_NOFOLLOW, permissions);
    return descriptor < 0 && errno == ELOOP ? openBehindLinks(path, flags | O_NOFOLLOW, permissions)
                                            : descriptor;
}

} // namespace

int openFile(const char* path, int flags, BesideFiles accepted, mode_t permissions,
             struct stat* told) noexcept {
    const int descriptor = openAny(path, flags, permissions);
    if (descriptor < 0)
        return -1;
    struct stat status = {};
    const int reason = fstat(descriptor, &status) != 0 ? errno : reasonToRefuse(status, accepted);
    if (reason == 0) {
        if (told != nullptr)
            *told = status;
        return descriptor;
    }
    close(descriptor);
    errno = reason;
    return -1;
}

} // namespace platform
