#include "pxidrivertools/ini/iniOutput.h"

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

IniOutput::IniOutput(IniFileOperations& files, std::FILE* stream) noexcept
    : files_(files), stream_(stream) {}

void IniOutput::put(std::string_view text) noexcept {
    for (const char c : text)
        put(c);
}

void IniOutput::put(char character) noexcept {
    if (buffer_.size() - used_ < 2)
        writeOut();
    if (character == '\n')
        buffer_[used_++] = '\r';
    buffer_[used_++] = character;
}

bool IniOutput::finish() noexcept {
    writeOut();
    ok_ = ok_ && files_.flush(stream_);
    return ok_;
}

void IniOutput::writeOut() noexcept {
    if (ok_ && used_ != 0)
        ok_ = files_.write(stream_, buffer_.data(), used_);
    used_ = 0;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
