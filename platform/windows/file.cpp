#include "platform/file.h"

#include "platform/windows/uniqueHandle.h"
#include "platform/windows/widePath.h"

#include <io.h>
#include <sys/stat.h>

#include <cstdio>

namespace platform {

namespace {

SystemCode codeOf(bool succeeded) noexcept {
    return succeeded ? kNoSystemError : lastFailureCode();
}

template <typename Entry>
FileTime timeOf(const Entry& entry) noexcept {
    constexpr unsigned kBitsOfLowPart = 32;
    return static_cast<FileTime>(entry.ftLastWriteTime.dwHighDateTime) << kBitsOfLowPart |
           entry.ftLastWriteTime.dwLowDateTime;
}

} // namespace

Stream openStream(const char* path, const char* mode) noexcept {
    const WidePath wide(path);
    if (!wide.needed())
        return Stream(std::fopen(path, mode));
    std::array<wchar_t, 8> wideMode = {};
    for (std::size_t i = 0; i + 1 < wideMode.size() && mode[i] != '\0'; ++i)
        wideMode[i] = static_cast<wchar_t>(mode[i]);
    return Stream(_wfopen(wide.text(), wideMode.data()));
}

std::optional<FileTime> lastWriteTime(const char* path) noexcept {
    const WidePath wide(path);
    if (wide.needed()) {
        WIN32_FIND_DATAW entry = {};
        const FileSearchHandle search(FindFirstFileW(wide.text(), &entry));
        return search ? std::optional(timeOf(entry)) : std::nullopt;
    }
    WIN32_FIND_DATAA entry = {};
    const FileSearchHandle search(FindFirstFileA(path, &entry));
    return search ? std::optional(timeOf(entry)) : std::nullopt;
}

int restrictToOwner(std::FILE*, const char* path) noexcept {
    constexpr int kReadAndWrite = _S_IREAD | _S_IWRITE;
    const WidePath wide(path);
    return wide.needed() ? _wchmod(wide.text(), kReadAndWrite) : _chmod(path, kReadAndWrite);
}

SystemCode forceToDisk(std::FILE* stream) noexcept {
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    return codeOf(FlushFileBuffers(handle) != 0);
}

SystemCode removeFile(const char* path) noexcept {
    const WidePath wide(path);
    return codeOf((wide.needed() ? _wremove(wide.text()) : std::remove(path)) == 0);
}

PathParts splitPath(const std::string& path) {
    constexpr std::size_t kDriveLength = 2;
    const std::size_t driveEnd = path.size() >= kDriveLength && path[1] == ':' ? kDriveLength : 0;
    const std::size_t separator = path.find_last_of("\\/");
    const std::size_t nameStart = separator == std::string::npos ? driveEnd : separator + 1;
    const std::size_t dot = path.rfind('.');
    const std::size_t nameEnd = dot == std::string::npos || dot < nameStart ? path.size() : dot;
    return {path.substr(0, driveEnd), path.substr(driveEnd, nameStart - driveEnd),
            path.substr(nameStart, nameEnd - nameStart), path.substr(nameEnd)};
}

} // namespace platform
