// Locks belong to the open file description rather than to the process, so that two objects of one
// process exclude each other, and closing some other descriptor of the file does not release.
#include "platform/fileLock.h"

#include "platform/linux/openFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace platform {

namespace {

constexpr std::intptr_t kNoDescriptor = -1;

SystemCode apply(std::intptr_t handle, short type) noexcept {
    struct flock range = {}; // from the start, length 0: to the end, however far that moves
    range.l_type = type;
    range.l_whence = SEEK_SET;
    for (;;) {
        if (fcntl(static_cast<int>(handle), F_OFD_SETLKW, &range) == 0)
            return kNoSystemError;
        if (errno != EINTR)
            return lastSystemCode();
    }
}

} // namespace

FileLock::~FileLock() {
    close();
}

SystemCode FileLock::open(const char* path) noexcept {
    const int descriptor = openFile(path, O_RDWR, BesideFiles::none);
    if (descriptor < 0)
        return lastSystemCode();
    close();
    handle_ = descriptor;
    return kNoSystemError;
}

SystemCode FileLock::lock() noexcept {
    return apply(handle_, F_WRLCK);
}

SystemCode FileLock::unlock() noexcept {
    return apply(handle_, F_UNLCK);
}

void FileLock::close() noexcept {
    if (handle_ != kNoDescriptor)
        ::close(static_cast<int>(handle_));
    handle_ = kNoDescriptor;
}

} // namespace platform
