// What the engine does with files, one operation each, so that a test or a host with a file system
// of its own can stand in for the system's.
#pragma once

#include "platform/file.h"

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <optional>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// Paths are UTF-8. Nothing here throws.
class IniFileOperations {
public:
    enum class Creation { created, nameTaken, failed };

    virtual ~IniFileOperations() = default;

    // With a mode of fopen; null on failure. The stream is the caller's until close().
    virtual std::FILE* open(const char* path, const char* mode) noexcept = 0;
    // False when not everything could be written.
    virtual bool write(std::FILE* stream, const char* data, std::size_t size) noexcept = 0;
    // Hands what is buffered to the system.
    virtual bool flush(std::FILE* stream) noexcept = 0;
    // Forces what the system has onto the disk.
    virtual bool force(std::FILE* stream) noexcept = 0;
    // The stream is gone, whatever the result.
    virtual bool close(std::FILE* stream) noexcept = 0;

    // Makes an empty file that must not be there yet.
    virtual Creation createExclusively(const char* path) noexcept = 0;
    // Replaces a file that has the new name.
    virtual bool rename(const char* from, const char* to) noexcept = 0;
    virtual bool remove(const char* path) noexcept = 0;
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
