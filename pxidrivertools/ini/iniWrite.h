// The text of a file object, as it goes into a file.
#pragma once

#include "pxidrivertools/ini/iniFileObject.h"
#include "pxidrivertools/ini/iniSinks.h"
#include "pxidrivertools/ini/iniStatus.h"

#include <cstring>
#include <span>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// A text on its way to a sink: in large pieces, each of whole lines unless one is longer than that,
// and with each "\n" as CR LF.
// After the sink has failed everything further is dropped; ok() and finish() tell.
class IniOutput {
public:
    // The buffer has room for some bytes at least. Both outlive the output.
    IniOutput(IniSink& sink, std::span<char> buffer) noexcept : sink_(sink), buffer_(buffer) {}

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
    void endLine() noexcept {
        putAsIs("\r\n");
        wholeLines_ = used_;
    }

    // Gives the sink what is left. False when it failed now or before.
    bool finish() noexcept;

    bool ok() const noexcept { return ok_; }

private:
    void putLong(std::string_view text) noexcept;
    void giveLines() noexcept;
    void give(std::size_t size) noexcept;

    IniSink& sink_;
    std::span<char> buffer_;
    std::size_t used_ = 0;
    std::size_t wholeLines_ = 0; // where the last of them ends in the buffer
    bool ok_ = true;
};

// Puts out every section in order, and finishes. kIniDone, kIniNameTooLong, or kIniWriteFailed when
// the sink fails.
IniStatus writeContents(const IniFileObject& file, IniOutput& output) noexcept;

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
