// Changing a file object in memory. Nothing is changed when one of these fails.
#pragma once

#include "pxidrivertools/ini/iniFileObject.h"
#include "pxidrivertools/ini/iniStatus.h"

#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// Stores a value with the quote character to write around it (kNoQuote for none). A missing section
// is appended. With merging, the value of an existing key is replaced; otherwise a key is appended
// to the section, even if it has one of that name. kIniStored; kIniEmptyName for an empty name,
// kIniOutOfMemory, or kIniNotStored when the key list could not grow.
IniStatus setValue(IniFileObject& file, std::string_view section, std::string_view key,
                   std::string_view value, char quote) noexcept;

// The section, or the key of the section, must be one of the file's.
void removeSection(IniFileObject& file, IniSection& section) noexcept;
void removeKey(IniFileObject& file, IniSection& section, IniKey& key) noexcept;

// Replaces the name in place, also by one that another section has. kIniDone, kIniEmptyName or
// kIniOutOfMemory.
IniStatus renameSection(IniFileObject& file, IniSection& section, std::string_view name) noexcept;

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
