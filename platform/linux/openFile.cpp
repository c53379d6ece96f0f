#include "platform/linux/openFile.h"

#include "platform/linux/interruption.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>

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

} // namespace

int openFile(const char* path, int flags, BesideFiles accepted, mode_t permissions) noexcept {
    const int descriptor = pastInterruptions(
        [&] { return open(path, flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, permissions); });
    if (descriptor < 0)
        return -1;
    struct stat status = {};
    const int reason = fstat(descriptor, &status) != 0 ? errno : reasonToRefuse(status, accepted);
    if (reason == 0)
        return descriptor;
    close(descriptor);
    errno = reason;
    return -1;
}

} // namespace platform
