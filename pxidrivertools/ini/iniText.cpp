#include "pxidrivertools/ini/iniText.h"

#include <cstring>
#include <limits>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

bool fitsText(std::string_view text) noexcept {
    // One below the largest length, so that length and closing NUL byte fit 32 bits too.
    return text.size() < std::numeric_limits<std::uint32_t>::max();
}

IniText viewText(std::string_view text) noexcept {
    return {text.data(), static_cast<std::uint32_t>(text.size()), 0};
}

bool copyText(const IniMemory& memory, std::string_view text, IniText& result) noexcept {
    if (!fitsText(text))
        return false;
    char* const copy = static_cast<char*>(memory.allocate(text.size() + 1));
    if (copy == nullptr)
        return false;
    if (!text.empty())
        std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    result = {copy, static_cast<std::uint32_t>(text.size()), 1};
    return true;
}

void releaseText(const IniMemory& memory, IniText& text) noexcept {
    if (text.owned != 0)
        memory.release(const_cast<char*>(text.data));
    text = {};
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
