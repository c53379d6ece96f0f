// One file that exists in memory only, for the INI engine and the INI file class: a run of a fuzzer
// costs no call of the system.
#pragma once

#include "pxidrivertools/ini/iniFileOperations.h"

#include <cstdio>
#include <string>

namespace fuzz {

namespace ini = nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;

// Whatever name is asked for, it is this file. Opening it for reading reads `content`; opening it
// for writing begins it anew. One stream at a time.
class MemoryFiles : public ini::IniFileOperations {
public:
    std::string content;

    ini::IniOpened open(const char* path, const char* mode) noexcept override;
    Code write(std::FILE* stream, const char* data, std::size_t size) noexcept override;
    Code flush(std::FILE* stream) noexcept override;
    Code force(std::FILE* stream) noexcept override;
    Code close(std::FILE* stream) noexcept override;
    ini::IniOpened openInPlace(const char* path) noexcept override;
    Code secureSpace(std::FILE* stream, std::uint64_t size) noexcept override;
    std::uint64_t keepFront(std::FILE* stream, std::uint64_t size) noexcept override;
    Code cutBehind(std::FILE* stream, std::uint64_t size) noexcept override;
    Code followLinks(std::string& path) noexcept override;
    ini::IniCreated createExclusively(const char* path) noexcept override;
    Code takeAccess(std::FILE* from, std::FILE* to) noexcept override;
    Code rename(const char* from, const char* to) noexcept override;
    Code remove(const char* path) noexcept override;
    std::optional<platform::FileTime> lastWriteTime(const char* path) noexcept override;
    void pause(std::chrono::milliseconds time) noexcept override;

private:
    std::size_t position_ = 0;
    platform::FileTime time_ = 0;
};

} // namespace fuzz
