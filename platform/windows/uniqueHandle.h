// Owners of the system's handles: one type for each kind, which closes what it holds when
// destroyed. Private to this folder.
#pragma once

#include "platform/windows/systemHeaders.h"

#include <utility>

namespace platform {

// `Kind` names the handle's type, the value that means none, and how one is given back.
template <typename Kind>
class UniqueHandle {
public:
    using Handle = typename Kind::Handle;

    UniqueHandle() noexcept = default;
    explicit UniqueHandle(Handle handle) noexcept : handle_(handle) {}
    ~UniqueHandle() { reset(); }
    UniqueHandle(UniqueHandle&& other) noexcept
        : handle_(std::exchange(other.handle_, Kind::none())) {}
    UniqueHandle& operator=(UniqueHandle&& other) noexcept {
        reset(std::exchange(other.handle_, Kind::none()));
        return *this;
    }

    [[nodiscard]] Handle get() const noexcept { return handle_; }
    explicit operator bool() const noexcept { return handle_ != Kind::none(); }

    // Closing must not hide the error of the call that made it necessary.
    void reset(Handle handle = Kind::none()) noexcept {
        if (handle_ != Kind::none()) {
            const DWORD error = GetLastError();
            Kind::close(handle_);
            SetLastError(error);
        }
        handle_ = handle;
    }

    // For calls that hand out a handle; what was held before is closed.
    [[nodiscard]] Handle* out() noexcept {
        reset();
        return &handle_;
    }

private:
    Handle handle_ = Kind::none();
};

struct RegistryKeyKind {
    using Handle = HKEY;
    // Some calls give a null key, some INVALID_HANDLE_VALUE for none; null here.
    static Handle none() noexcept { return nullptr; }
    static void close(Handle handle) noexcept { RegCloseKey(handle); }
};
using RegistryKey = UniqueHandle<RegistryKeyKind>;

struct FileKind {
    using Handle = HANDLE;
    static Handle none() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(Handle handle) noexcept { CloseHandle(handle); }
};
using FileHandle = UniqueHandle<FileKind>;

struct FileSearchKind {
    using Handle = HANDLE;
    static Handle none() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(Handle handle) noexcept { FindClose(handle); }
};
using FileSearchHandle = UniqueHandle<FileSearchKind>;

struct ProcessKind {
    using Handle = HANDLE;
    static Handle none() noexcept { return nullptr; }
    static void close(Handle handle) noexcept { CloseHandle(handle); }
};
using ProcessHandle = UniqueHandle<ProcessKind>;

struct LocalMemoryKind {
    using Handle = void*;
    static Handle none() noexcept { return nullptr; }
    static void close(Handle handle) noexcept { LocalFree(handle); }
};
using LocalMemory = UniqueHandle<LocalMemoryKind>;

} // namespace platform
