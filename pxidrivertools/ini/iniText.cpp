#include "pxidrivertools/ini/iniText.h"

#include <cstring>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

bool copyText(const IniMemory& memory, std::string_view text, IniText& result) noexcept {
    if (!fitsText(text))
        return false;
    char* const copy = static_cast<char*>(memory.allocate(text.size() + 1));
    if (copy == nullptr)
        return false;
    if (!text.empty())
        std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    result = {copy, static_cast<std::uint32_t>(text.size()), 0, true};
    return true;
}

void releaseText(const IniMemory& memory, IniText& text) noexcept {
    if (text.owned)
        memory.release(const_cast<char*>(text.data));
    text = {};
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
