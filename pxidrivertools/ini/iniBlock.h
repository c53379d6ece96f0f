// The whole input of a load in one piece of memory, so that names and values need no copies.
#pragma once

#include "pxidrivertools/ini/iniMemory.h"
#include "pxidrivertools/ini/iniReader.h"
#include "pxidrivertools/ini/iniStatus.h"

#include <cstddef>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

struct IniBlock {
    // A NUL byte stands behind the last one, so that a search for a line's end needs no other
    // bound. Null when there was no memory at all.
    char* data = nullptr;
    std::size_t size = 0;
};

// Reads to the end. On a failure (kIniReadFailed, kIniOutOfMemory) the block holds what was read
// before it. The block is the caller's to release in any case.
IniStatus readBlock(const IniMemory& memory, const IniReader& reader, IniBlock& block) noexcept;

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
