// Finding sections and keys by name.
#pragma once

#include "pxidrivertools/ini/iniFileObject.h"
#include "pxidrivertools/ini/iniList.h"

#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// Looks at the current section first, then for the first of the list; what is found becomes the
// current section. Null when there is none of that name. The pointer is good until the section is
// removed, or the file object is loaded or destroyed; the same holds for keys.
IniSection* findSection(IniFileObject& file, std::string_view name) noexcept;

// The first key of the section with that name, or null. `section` is one of the file's.
IniKey* findKey(IniFileObject& file, IniSection& section, bool caseSensitive,
                std::string_view name) noexcept;

// The same with the section's own case-sensitivity.
IniKey* findKey(IniFileObject& file, IniSection& section, std::string_view name) noexcept;

// By 1-based index, in file order; 0 and -1 mean the first. Null when there is no such one. Part of
// the engine's interface, for whoever goes through a whole file.
IniSection* sectionAt(const IniFileObject& file, std::int32_t index) noexcept;
IniKey* keyAt(const IniSection& section, std::int32_t index) noexcept;

std::uint32_t sectionCount(const IniFileObject& file) noexcept;
std::uint32_t keyCount(const IniSection& section) noexcept;

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
