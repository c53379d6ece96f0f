// Long values that were written in pieces: keys "<name> Line0001", "<name> Line0002" and so on.
#pragma once

#include "pxidrivertools/asciiText.h"
#include "pxidrivertools/ini/iniFileObject.h"
#include "pxidrivertools/ini/iniStatus.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// What a writer puts between the name and the number.
inline constexpr std::string_view kContinuationWord = " Line";

// A key name taken apart. The number is what a 32-bit signed number holds: with a larger one the
// name is not of this form.
struct IniContinuationName {
    std::string_view base;
    std::int32_t number;
};
std::optional<IniContinuationName> readContinuationName(std::string_view name) noexcept;

// Whether a look at the end of a name lets it be of this form; false for most names.
inline bool mayBeContinuation(std::string_view name) noexcept {
    std::size_t digits = name.size();
    while (digits != 0 && isDecimalDigit(name[digits - 1]))
        --digits;
    return digits != name.size() && digits != 0 && name[digits - 1] == kContinuationWord.back();
}

// Replaces each run of continuation keys in the section by one key. A run starts at a key numbered
// 1 and goes on over the directly following continuation keys up to the next one numbered 1; their
// order and base names are not looked at. The key keeps the first one's line and quote character.
// kIniDone, or kIniOutOfMemory with the runs joined so far.
IniStatus joinContinuations(IniFileObject& file, IniSection& section) noexcept;

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
