#include "platform/fileMark.h"

#include "platform/windows/longPath.h"
#include "platform/windows/uniqueHandle.h"

namespace platform {

namespace {

std::uint64_t joined(DWORD high, DWORD low) {
    return std::uint64_t{high} << 32 | low;
}

std::optional<FileMark> markOf(const std::wstring& path) {
    const FileHandle file(CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    BY_HANDLE_FILE_INFORMATION about = {};
    if (!file || GetFileInformationByHandle(file.get(), &about) == FALSE)
        return std::nullopt;
    return FileMark{
        joined(about.ftLastWriteTime.dwHighDateTime, about.ftLastWriteTime.dwLowDateTime),
        joined(about.nFileSizeHigh, about.nFileSizeLow),
        joined(about.nFileIndexHigh, about.nFileIndexLow)};
}

} // namespace

std::optional<FileMark> markOfFile(const std::filesystem::path& path) noexcept {
    try {
        return markOf(withLongPrefix(path.native()));
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

} // namespace platform
