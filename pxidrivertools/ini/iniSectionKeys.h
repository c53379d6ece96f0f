// The list of a section's keys, which lives in the file object's arena after a load and in a block
// of its own once it has grown.
#pragma once

#include "pxidrivertools/ini/iniFileObject.h"
#include "pxidrivertools/ini/iniList.h"

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// Makes sure that one more key fits. False when there is no memory; the list is then as it was.
bool reserveKey(IniFileObject& file, IniSection& section, IniGrowth growth) noexcept;

// Gives back the room for keys that are not there.
void trimKeys(IniFileObject& file, IniSection& section) noexcept;

// Puts a copy of the list into the arena as the section's, which must have none. False when there
// is no memory.
bool placeKeys(IniFileObject& file, IniSection& section, const IniList& list) noexcept;

// Drops the list, not the keys in it.
void releaseKeys(const IniMemory& memory, IniSection& section) noexcept;

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
