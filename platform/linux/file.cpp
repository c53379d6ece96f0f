#include "platform/file.h"

#include "platform/linux/fileTime.h"
#include "platform/linux/interruption.h"
#include "platform/linux/openFile.h"
#include "platform/linux/ownFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace platform {

namespace {

SystemCode codeOf(int result) noexcept {
    return result == 0 ? kNoSystemError : lastSystemCode();
}

constexpr mode_t kForAll = 0666; // what the process's mask leaves of it

// The descriptor of what there is at the path, emptied or made.
int openFromStart(const char* path, const char* mode) noexcept {
    const int access = std::strchr(mode, '+') != nullptr ? O_RDWR : O_WRONLY;
    return pastInterruptions(
        [&] { return open(path, access | O_CREAT | O_TRUNC | O_CLOEXEC, kForAll); });
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
            openFile(path, O_WRONLY | O_APPEND | O_CREAT, BesideFiles::none, ownPermissions(path)),
            mode);
    default:
        return streamOf(openFromStart(path, mode), mode);
    }
}

std::optional<FileTime> lastWriteTime(const char* path) noexcept {
    struct stat status = {};
    if (stat(path, &status) != 0)
        return std::nullopt;
    return lastWriteTimeOf(status);
}

int restrictToOwner(std::FILE* stream, const char* path) noexcept {
    const mode_t permissions = ownPermissions(path);
    return pastInterruptions([&] { return fchmod(fileno(stream), permissions); });
}

SystemCode forceToDisk(std::FILE* stream) noexcept {
    return codeOf(pastInterruptions([&] { return fsync(fileno(stream)); }));
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
