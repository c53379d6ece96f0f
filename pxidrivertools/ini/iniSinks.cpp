#include "pxidrivertools/ini/iniSinks.h"

#include "platform/stream.h"

#include <algorithm>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

bool IniComparison::take(std::string_view piece) noexcept {
    if (old_ != nullptr && same_ == size_) {
        const std::size_t got = platform::readStream(old_, buffer_.data(), piece.size());
        const auto differs = std::mismatch(
            buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(got), piece.begin());
        same_ += static_cast<std::uint64_t>(differs.second - piece.begin());
    }
    size_ += piece.size();
    return true;
}

bool IniComparison::isSame() noexcept {
    return old_ != nullptr && same_ == size_ &&
           platform::readStream(old_, buffer_.data(), 1) == 0 && std::ferror(old_) == 0;
}

bool IniFileSink::take(std::string_view piece) noexcept {
    const auto known = static_cast<std::size_t>(std::min<std::uint64_t>(kept_, piece.size()));
    kept_ -= known;
    piece.remove_prefix(known);
    if (!piece.empty())
        code_ = files_.write(stream_, piece.data(), piece.size());
    return code_ == platform::kNoSystemError;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
