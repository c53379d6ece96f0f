// The text of an INI file on its way to the disk: buffered, with each "\n" as CR LF.
#pragma once

#include "pxidrivertools/ini/iniFileOperations.h"

#include <array>
#include <cstdio>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// After a failed write everything further is dropped; ok() and finish() tell.
class IniOutput {
public:
    // Both outlive the output, which neither flushes nor closes the stream at its end.
    IniOutput(IniFileOperations& files, std::FILE* stream) noexcept;

    // Text: a "\n" in it becomes the two bytes 13 and 10.
    void put(std::string_view text) noexcept;
    void put(char character) noexcept;

    // Writes what is left and flushes the stream. False when that or any write before failed.
    bool finish() noexcept;

    bool ok() const noexcept { return ok_; }

private:
    void writeOut() noexcept;

    IniFileOperations& files_;
    std::FILE* stream_;
    std::size_t used_ = 0;
    bool ok_ = true;
    std::array<char, 4096> buffer_{};
};

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
