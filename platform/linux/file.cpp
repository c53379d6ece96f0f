#include "platform/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace platform {

namespace {

SystemCode codeOf(int result) noexcept {
    return result == 0 ? kNoSystemError : lastSystemCode();
}

} // namespace

Stream openStream(const char* utf8Path, const char* mode) noexcept {
    return Stream(std::fopen(utf8Path, mode));
}

std::optional<FileTime> lastWriteTime(const char* utf8Path) noexcept {
    struct stat status = {};
    if (stat(utf8Path, &status) != 0)
        return std::nullopt;
    constexpr FileTime kNanosecondsPerSecond = 1'000'000'000;
    return static_cast<FileTime>(status.st_mtim.tv_sec) * kNanosecondsPerSecond +
           static_cast<FileTime>(status.st_mtim.tv_nsec);
}

int restrictToOwner(const char* utf8Path) noexcept {
    return chmod(utf8Path, S_IRUSR | S_IWUSR);
}

SystemCode createExclusively(const char* utf8Path) noexcept {
    constexpr mode_t kAsFopen = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
    const int descriptor = open(utf8Path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kAsFopen);
    return descriptor < 0 ? lastSystemCode() : codeOf(close(descriptor));
}

bool isNameTaken(SystemCode code) noexcept {
    return code == EEXIST;
}

SystemCode forceToDisk(std::FILE* stream) noexcept {
    return codeOf(fsync(fileno(stream)));
}

SystemCode renameReplacing(const char* utf8From, const char* utf8To) noexcept {
    return codeOf(std::rename(utf8From, utf8To));
}

SystemCode removeFile(const char* utf8Path) noexcept {
    return codeOf(unlink(utf8Path));
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
