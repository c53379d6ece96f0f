// The text of a file object, as it goes into a file.
#pragma once

#include "pxidrivertools/ini/iniFileObject.h"
#include "pxidrivertools/ini/iniFileOperations.h"
#include "pxidrivertools/ini/iniStatus.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// A text on its way to the disk: buffered, with each "\n" as CR LF.
// After a failed write everything further is dropped; ok() and finish() tell.
class IniOutput {
public:
    // Both outlive the output, which neither flushes nor closes the stream at its end.
    IniOutput(IniFileOperations& files, std::FILE* stream) noexcept;

    // Text that may have line feeds in it: each becomes the two bytes 13 and 10.
    void put(std::string_view text) noexcept;
    // Text, or a character, that is written as it is.
    void putAsIs(std::string_view text) noexcept {
        if (text.size() > buffer_.size() - used_)
            return putLong(text);
        std::memcpy(buffer_.data() + used_, text.data(), text.size());
        used_ += text.size();
    }
    void putAsIs(char character) noexcept { putAsIs(std::string_view(&character, 1)); }
    void endLine() noexcept { putAsIs("\r\n"); }

    // Writes what is left and flushes the stream. False when that or any write before failed.
    bool finish() noexcept;

    bool ok() const noexcept { return ok_; }

private:
    void putLong(std::string_view text) noexcept;
    void writeOut() noexcept;

    IniFileOperations& files_;
    std::FILE* stream_;
    std::size_t used_ = 0;
    bool ok_ = true;
    // Few large writes; not filled before it is used, since most files are short.
    std::array<char, 65536> buffer_;
};

// Writes every section in order and flushes. kIniDone, kIniNameTooLong or kIniWriteFailed.
IniStatus writeContents(const IniFileObject& file, IniOutput& output) noexcept;

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
