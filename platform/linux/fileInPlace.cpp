#include "platform/fileInPlace.h"

#include "platform/linux/interruption.h"
#include "platform/linux/openFile.h"
#include "platform/linux/ownFile.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>

namespace platform {

namespace {

SystemCode codeOf(int result) noexcept {
    return result == 0 ? kNoSystemError : lastSystemCode();
}

// A new file has its permissions whatever the process's mask takes away.
int openOrMake(const char* path) noexcept {
    const int existing = openFile(path, O_RDWR, BesideFiles::theNullDevice);
    if (existing >= 0 || errno != ENOENT)
        return existing;
    const mode_t permissions = ownPermissions(path);
    const int made = openFile(path, O_RDWR | O_CREAT, BesideFiles::none, permissions);
    if (made >= 0)
        pastInterruptions([&] { return fchmod(made, permissions); });
    return made;
}

// A write beyond the process's limit would end the process by SIGXFSZ.
bool isWithinLimit(std::uint64_t size) noexcept {
    struct rlimit limit = {};
    const bool isLimited = getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
    return size <= static_cast<std::uint64_t>(std::numeric_limits<off_t>::max()) &&
           (!isLimited || size <= limit.rlim_cur);
}

int cut(int file, std::uint64_t size) noexcept {
    return pastInterruptions([&] { return ftruncate(file, static_cast<off_t>(size)); });
}

// For file systems that give no room beforehand: NUL bytes behind the content take it. They read as
// ends of lines.
int fillBehind(int file, std::uint64_t from, std::uint64_t to) noexcept {
    static constexpr char kNothing[512] = {};
    if (from >= to)
        return 0;
    while (from < to) {
        const std::size_t size = std::min<std::uint64_t>(sizeof kNothing, to - from);
        const ssize_t done = pastInterruptions(
            [&] { return pwrite(file, kNothing, size, static_cast<off_t>(from)); });
        if (done < 0)
            return -1;
        from += static_cast<std::uint64_t>(done);
    }
    return pastInterruptions([&] { return fdatasync(file); }); // some find out only then
}

int takeRoom(int file, std::uint64_t from, std::uint64_t to) noexcept {
    const int taken = pastInterruptions(
        [&] { return fallocate(file, FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(to)); });
    return taken != 0 && (errno == EOPNOTSUPP || errno == ENOSYS) ? fillBehind(file, from, to)
                                                                  : taken;
}

} // namespace

Stream openInPlace(const char* path) noexcept {
    return streamOf(openOrMake(path), "r+b");
}

SystemCode secureSpace(std::FILE* stream, std::uint64_t size) noexcept {
    if (!isWithinLimit(size))
        return EFBIG;
    const int file = fileno(stream);
    struct stat before = {};
    if (fstat(file, &before) != 0)
        return lastSystemCode();
    if (size == 0 || !S_ISREG(before.st_mode) ||
        takeRoom(file, static_cast<std::uint64_t>(before.st_size), size) == 0)
        return kNoSystemError;
    const SystemCode code = lastSystemCode();
    // The room that was to be had goes back to a disk that has none, and nobody sees a change.
    cut(file, static_cast<std::uint64_t>(before.st_size));
    const struct timespec times[] = {before.st_atim, before.st_mtim};
    futimens(file, times);
    return code;
}

std::uint64_t keepFront(std::FILE* stream, std::uint64_t size) noexcept {
    return fseeko(stream, static_cast<off_t>(size), SEEK_SET) == 0 ? size : 0;
}

SystemCode cutBehind(std::FILE* stream, std::uint64_t size) noexcept {
    struct stat status = {};
    const int file = fileno(stream);
    const bool isKnown = fstat(file, &status) == 0;
    if (isKnown && (!S_ISREG(status.st_mode) || static_cast<std::uint64_t>(status.st_size) == size))
        return kNoSystemError;
    return codeOf(cut(file, size));
}

} // namespace platform
