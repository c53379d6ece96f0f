#include "platform/file.h"

#include "platform/text.h"
#include "platform/windows/uniqueHandle.h"

#include <io.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <new>

namespace platform {

namespace {

SystemCode codeOf(bool succeeded) noexcept {
    return succeeded ? kNoSystemError : lastSystemCode();
}

} // namespace

Stream openStream(const char* utf8Path, const char* mode) noexcept {
    try {
        std::wstring path;
        std::wstring wideMode;
        if (toWide(utf8Path, path) != Conversion::done ||
            toWide(mode, wideMode) != Conversion::done) {
            SetLastError(ERROR_NO_UNICODE_TRANSLATION);
            return nullptr;
        }
        return Stream(_wfopen(path.c_str(), wideMode.c_str()));
    } catch (const std::bad_alloc&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
}

Stream openNarrowStream(const char* path, const char* mode) noexcept {
    return Stream(std::fopen(path, mode));
}

std::optional<FileTime> lastWriteTime(const char* path) noexcept {
    WIN32_FIND_DATAA entry = {};
    const FileSearchHandle search(FindFirstFileA(path, &entry));
    if (!search)
        return std::nullopt;
    constexpr unsigned kBitsOfLowPart = 32;
    return static_cast<FileTime>(entry.ftLastWriteTime.dwHighDateTime) << kBitsOfLowPart |
           entry.ftLastWriteTime.dwLowDateTime;
}

int restrictToOwner(const char* path) noexcept {
    return _chmod(path, _S_IREAD | _S_IWRITE);
}

SystemCode createExclusively(const char* path) noexcept {
    constexpr DWORD kNotShared = 0;
    const FileHandle created(CreateFileA(path, GENERIC_WRITE, kNotShared, nullptr, CREATE_NEW,
                                         FILE_ATTRIBUTE_NORMAL, nullptr));
    return codeOf(static_cast<bool>(created));
}

bool isNameTaken(SystemCode code) noexcept {
    return code == ERROR_FILE_EXISTS;
}

SystemCode forceToDisk(std::FILE* stream) noexcept {
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    return codeOf(FlushFileBuffers(handle) != 0);
}

SystemCode renameReplacing(const char* from, const char* to) noexcept {
    return codeOf(MoveFileExA(from, to, MOVEFILE_REPLACE_EXISTING) != 0);
}

SystemCode removeFile(const char* path) noexcept {
    return codeOf(std::remove(path) == 0);
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
