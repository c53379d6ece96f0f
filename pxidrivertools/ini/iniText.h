// The text of a name or value: a view into the loaded file's block, or a copy of its own once it
// has been set or joined. 16 bytes, because there are two of them in every key.
#pragma once

#include "pxidrivertools/ini/iniMemory.h"

#include <cstdint>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

struct IniText {
    const char* data = "";
    std::uint32_t length = 0;
    // Whether `data` is this text's own and ends with a NUL byte after its length.
    std::uint32_t owned = 0;

    std::string_view view() const noexcept { return {data, length}; }
};

// Whether a text may be as long as this.
bool fitsText(std::string_view text) noexcept;

// A text that looks at memory that outlives it. The text must fit.
IniText viewText(std::string_view text) noexcept;

// Makes `result`, whose old content is not released, an own copy. False, with `result` as it was,
// when there is no memory or the text does not fit.
bool copyText(const IniMemory& memory, std::string_view text, IniText& result) noexcept;

// Frees an own copy; the text is empty afterwards.
void releaseText(const IniMemory& memory, IniText& text) noexcept;

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
