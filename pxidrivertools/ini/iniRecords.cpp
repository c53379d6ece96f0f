#include "pxidrivertools/ini/iniRecords.h"

#include <cstring>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// Files are large when they are large in keys and sections: their records stay small.
static_assert(sizeof(void*) != 8 || (sizeof(IniSection) == 40 && sizeof(IniKey) == 40));

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

bool isUnnamed(const IniSection& section) noexcept {
    return section.line == kNotFromFile && section.name.view() == kUnnamedSection;
}

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
