#include "platform/fileToLoad.h"

#include "platform/linux/fileTime.h"
#include "platform/linux/openFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace platform {

namespace {

int descriptorOf(std::intptr_t handle) noexcept {
    return static_cast<int>(handle);
}

} // namespace

FileToLoad::FileToLoad(const char* path) noexcept {
    struct stat status = {};
    const int descriptor = openFile(path, O_RDONLY, BesideFiles::theNullDevice, 0, &status);
    if (descriptor < 0) {
        code_ = lastSystemCode();
        return;
    }
    handle_ = descriptor;
    isOpen_ = true;
    size_ = static_cast<std::uint64_t>(status.st_size);
    time_ = lastWriteTimeOf(status);
}

FileToLoad::~FileToLoad() {
    if (isOpen_)
        close(descriptorOf(handle_));
}

// Once what there was is read, the end is not asked for. A file that is being written is read as it
// was at some moment either way.
std::size_t FileToLoad::read(char* to, std::size_t size) noexcept {
    std::size_t got = 0;
    while (got < size && !isAtKnownEnd()) {
        const ssize_t piece = ::read(descriptorOf(handle_), to + got, size - got);
        if (piece == 0)
            break;
        if (piece > 0) {
            got += static_cast<std::size_t>(piece);
            done_ += static_cast<std::uint64_t>(piece);
        } else if (errno != EINTR) {
            hasFailed_ = true;
            break;
        }
    }
    return got;
}

} // namespace platform
