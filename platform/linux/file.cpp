#include "platform/file.h"

#include "platform/linux/interruption.h"
#include "platform/linux/openFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace platform {

namespace {

constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;

SystemCode codeOf(int result) noexcept {
    return result == 0 ? kNoSystemError : lastSystemCode();
}

// The stream of a descriptor, or none of -1.
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

} // namespace

// What is appended to is a file of the product's state, and nobody else's from the start.
Stream openStream(const char* path, const char* mode) noexcept {
    switch (mode[0]) {
    case 'r':
        return streamOf(std::strchr(mode, '+') != nullptr
                            ? openFile(path, O_RDWR, BesideFiles::none)
                            : openFile(path, O_RDONLY, BesideFiles::theNullDevice),
                        mode);
    case 'a':
        return streamOf(
            openFile(path, O_WRONLY | O_APPEND | O_CREAT, BesideFiles::none, kOwnerOnly), mode);
    default:
        return Stream(pastInterruptions([&] { return std::fopen(path, mode); }));
    }
}

std::optional<FileTime> lastWriteTime(const char* path) noexcept {
    struct stat status = {};
    if (stat(path, &status) != 0)
        return std::nullopt;
    constexpr FileTime kNanosecondsPerSecond = 1'000'000'000;
    return static_cast<FileTime>(status.st_mtim.tv_sec) * kNanosecondsPerSecond +
           static_cast<FileTime>(status.st_mtim.tv_nsec);
}

int restrictToOwner(const char* path) noexcept {
    return pastInterruptions([&] { return chmod(path, kOwnerOnly); });
}

SystemCode createExclusively(const char* path) noexcept {
    const int descriptor = pastInterruptions(
        [&] { return open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kOwnerOnly); });
    if (descriptor < 0)
        return lastSystemCode();
    const SystemCode closed = codeOf(close(descriptor));
    if (closed == kNoSystemError || closed == EINTR) // it is closed, with nothing to write
        return kNoSystemError;
    unlink(path); // what is said to have failed is not there
    return closed;
}

bool isNameTaken(SystemCode code) noexcept {
    return code == EEXIST;
}

SystemCode forceToDisk(std::FILE* stream) noexcept {
    return codeOf(pastInterruptions([&] { return fsync(fileno(stream)); }));
}

SystemCode renameReplacing(const char* from, const char* to) noexcept {
    return codeOf(std::rename(from, to));
}

SystemCode removeFile(const char* path) noexcept {
    return codeOf(unlink(path));
}

PathParts splitPath(const std::string& path) {
    const std::size_t separator = path.rfind('/');
    const std::size_t nameStart = separator == std::string::npos ? 0 : separator + 1;
    const std::size_t dot = path.rfind('.');
    const std::size_t nameEnd = dot == std::string::npos || dot < nameStart ? path.size() : dot;
    return {"", path.substr(0, nameStart), path.substr(nameStart, nameEnd - nameStart),
            path.substr(nameEnd)};
}

} // namespace platform
