#include "platform/fileLock.h"

#include "platform/windows/systemHeaders.h"

namespace platform {

namespace {

constexpr std::intptr_t kNoHandle = -1; // INVALID_HANDLE_VALUE
constexpr DWORD kWhole = 0xFFFFFFFF;    // both halves of the range's length

HANDLE asHandle(std::intptr_t handle) noexcept {
    return reinterpret_cast<HANDLE>(handle);
}

SystemCode codeOf(BOOL succeeded) noexcept {
    return succeeded ? kNoSystemError : lastSystemCode();
}

} // namespace

FileLock::~FileLock() {
    close();
}

SystemCode FileLock::open(const char* path) noexcept {
    const HANDLE opened = CreateFileA(path, GENERIC_READ | GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, 0, nullptr);
    if (opened == INVALID_HANDLE_VALUE)
        return lastSystemCode();
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
