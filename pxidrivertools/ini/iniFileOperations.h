// What the engine does with files, one operation each, so that a test or a host with a file system
// of its own can stand in for the system's.
#pragma once

#include "platform/file.h"
#include "platform/systemCode.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// A stream that was opened, or null and the reason. It is the caller's until close().
struct IniOpened {
    std::FILE* stream = nullptr;
    platform::SystemCode code = platform::kNoSystemError;
};

// The same for a file that must not have been there before.
struct IniCreated : IniOpened {
    bool isNameTaken = false;
    bool isThere = false; // it was created; with a null stream it cannot be written
};

// Paths are UTF-8. A code is platform::kNoSystemError, or the reason of a failure. Nothing throws.
class IniFileOperations {
public:
    using Code = platform::SystemCode;

    virtual ~IniFileOperations() = default;

    // With a mode of fopen.
    virtual IniOpened open(const char* path, const char* mode) noexcept = 0;
    // A failure when not everything could be written.
    virtual Code write(std::FILE* stream, const char* data, std::size_t size) noexcept = 0;
    // Hands what is buffered to the system.
    virtual Code flush(std::FILE* stream) noexcept = 0;
    // Forces what the system has onto the disk.
    virtual Code force(std::FILE* stream) noexcept = 0;
    // The stream is gone, whatever the result.
    virtual Code close(std::FILE* stream) noexcept = 0;

    // Writing a file anew where it stands: platform/fileInPlace.h.
    virtual IniOpened openInPlace(const char* path) noexcept = 0;
    virtual Code secureSpace(std::FILE* stream, std::uint64_t size) noexcept = 0;
    virtual std::uint64_t keepFront(std::FILE* stream, std::uint64_t size) noexcept = 0;
    virtual Code cutBehind(std::FILE* stream, std::uint64_t size) noexcept = 0;

    // Putting a new file in another's place: platform/fileReplacement.h.
    virtual Code followLinks(std::string& path) noexcept = 0;
    virtual IniCreated createExclusively(const char* path) noexcept = 0;
    virtual Code takeAccess(std::FILE* from, std::FILE* to) noexcept = 0;
    virtual Code rename(const char* from, const char* to) noexcept = 0;

    virtual Code remove(const char* path) noexcept = 0;
    // Nothing when there is no such file.
    virtual std::optional<platform::FileTime> lastWriteTime(const char* path) noexcept = 0;
    // Waits, so that a file's time moves on.
    virtual void pause(std::chrono::milliseconds time) noexcept = 0;

protected:
    IniFileOperations() = default;
    IniFileOperations(const IniFileOperations&) = default;
    IniFileOperations& operator=(const IniFileOperations&) = default;
};

// The system's files. Has no state; may be used by any thread.
IniFileOperations& systemFileOperations() noexcept;

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
