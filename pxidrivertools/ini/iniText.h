// The text of a name or value: a view into the loaded file's block, or a copy of its own once it
// has been set or joined. 16 bytes, because there are two of them in every key.
#pragma once

#include "pxidrivertools/ini/iniMemory.h"

#include <cstdint>
#include <limits>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

struct IniText {
    const char* data = "";
    std::uint32_t length = 0;
    // Of a name: what tagName() says of it, so that a search need not look at other names' text;
    // 0 when that is not known.
    std::uint16_t tag = 0;
    // Whether `data` is this text's own and ends with a NUL byte after its length.
    bool owned = false;

    std::string_view view() const noexcept { return {data, length}; }
};

// Whether a text may be as long as this: one below the largest length, so that length and closing
// NUL byte fit 32 bits too.
constexpr bool fitsText(std::string_view text) noexcept {
    return text.size() < std::numeric_limits<std::uint32_t>::max();
}

// A text that looks at memory that outlives it. The text must fit.
constexpr IniText viewText(std::string_view text) noexcept {
    return {text.data(), static_cast<std::uint32_t>(text.size())};
}

// Makes `result`, whose old content is not released, an own copy. False, with `result` as it was,
// when there is no memory or the text does not fit.
bool copyText(const IniMemory& memory, std::string_view text, IniText& result) noexcept;

// Frees an own copy; the text is empty afterwards.
void releaseText(const IniMemory& memory, IniText& text) noexcept;

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
