#include "platform/fileLock.h"

#include "platform/windows/widePath.h"

namespace platform {

namespace {

constexpr std::intptr_t kNoHandle = -1; // INVALID_HANDLE_VALUE
constexpr DWORD kWhole = 0xFFFFFFFF;    // both halves of the range's length

HANDLE asHandle(std::intptr_t handle) noexcept {
    return reinterpret_cast<HANDLE>(handle);
}

SystemCode codeOf(BOOL succeeded) noexcept {
    return succeeded ? kNoSystemError : lastFailureCode();
}

} // namespace

FileLock::~FileLock() {
    close();
}

SystemCode FileLock::open(const char* path) noexcept {
    constexpr DWORD kAccess = GENERIC_READ | GENERIC_WRITE;
    constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const WidePath wide(path);
    const HANDLE opened =
        wide.needed()
            ? CreateFileW(wide.text(), kAccess, kShared, nullptr, OPEN_EXISTING, 0, nullptr)
            : CreateFileA(path, kAccess, kShared, nullptr, OPEN_EXISTING, 0, nullptr);
    if (opened == INVALID_HANDLE_VALUE)
        return lastFailureCode();
    close();
    handle_ = reinterpret_cast<std::intptr_t>(opened);
    return kNoSystemError;
}

SystemCode FileLock::lock() noexcept {
    OVERLAPPED fromStart = {};
    return codeOf(
        LockFileEx(asHandle(handle_), LOCKFILE_EXCLUSIVE_LOCK, 0, kWhole, kWhole, &fromStart));
}

SystemCode FileLock::unlock() noexcept {
    OVERLAPPED fromStart = {};
    return codeOf(UnlockFileEx(asHandle(handle_), 0, kWhole, kWhole, &fromStart));
}

void FileLock::close() noexcept {
    if (handle_ != kNoHandle)
        CloseHandle(asHandle(handle_));
    handle_ = kNoHandle;
}

} // namespace platform
