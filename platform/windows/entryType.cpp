#include "platform/entryType.h"

#include "platform/windows/longPath.h"
#include "platform/windows/systemHeaders.h"

#include <sys/stat.h>

#include <cerrno>
#include <string>

namespace platform {

namespace {

using std::filesystem::file_type;

bool isNotFound(DWORD code) {
    return code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND;
}

file_type typeOf(unsigned mode) {
    switch (mode & _S_IFMT) {
    case _S_IFREG:
        return file_type::regular;
    case _S_IFDIR:
        return file_type::directory;
    case _S_IFCHR:
        return file_type::character;
    case _S_IFIFO:
        return file_type::fifo;
    default:
        return file_type::unknown;
    }
}

// "C:/lab" for "C:/lab/"; a root keeps its separator.
std::wstring withoutSeparatorAtEnd(std::wstring path) {
    const auto isSeparator = [](wchar_t c) { return c == L'/' || c == L'\\'; };
    while (path.size() > 1 && isSeparator(path.back()) && path[path.size() - 2] != L':')
        path.pop_back();
    return path;
}

// By the C library, which knows devices, but takes the longer form for a pattern, and a separator
// at the end for a folder that is not there.
file_type typeOfUsual(const std::wstring& path) {
    struct _stat64 status = {};
    if (_wstat64(withoutSeparatorAtEnd(path).c_str(), &status) == 0)
        return typeOf(status.st_mode);
    return errno == ENOENT || errno == ENOTDIR ? file_type::not_found : file_type::none;
}

} // namespace

file_type typeOfEntry(const std::string& utf8Path) {
    const std::wstring path = wideText(utf8Path);
    if (!isLongPath(path.c_str()))
        return typeOfUsual(path);
    const DWORD attributes = GetFileAttributesW(withLongPrefix(path).c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES)
        return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? file_type::directory
                                                            : file_type::regular;
    return isNotFound(GetLastError()) ? file_type::not_found : file_type::none;
}

bool isEntryThere(const std::string& utf8Path) {
    return GetFileAttributesW(withLongPrefix(wideText(utf8Path)).c_str()) !=
               INVALID_FILE_ATTRIBUTES ||
           !isNotFound(GetLastError());
}

} // namespace platform
