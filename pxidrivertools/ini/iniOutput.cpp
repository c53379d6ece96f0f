#include "pxidrivertools/ini/iniOutput.h"

#include <algorithm>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
IniOutput::IniOutput(IniFileOperations& files, std::FILE* stream) noexcept
    : files_(files), stream_(stream) {}

void IniOutput::put(std::string_view text) noexcept {
    for (;;) {
        const std::size_t feed = text.find('\n');
        putAsIs(text.substr(0, feed));
        if (feed == std::string_view::npos)
            return;
        endLine();
        text.remove_prefix(feed + 1);
    }
}

void IniOutput::putLong(std::string_view text) noexcept {
    while (!text.empty()) {
        if (used_ == buffer_.size())
            writeOut();
        const std::string_view piece = text.substr(0, buffer_.size() - used_);
        std::memcpy(buffer_.data() + used_, piece.data(), piece.size());
        used_ += piece.size();
        text.remove_prefix(piece.size());
    }
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
