// The text of a file object, as it goes into a file.
#pragma once

#include "pxidrivertools/ini/iniFileObject.h"
#include "pxidrivertools/ini/iniOutput.h"
#include "pxidrivertools/ini/iniStatus.h"

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// Writes every section in order and flushes. kIniDone, kIniNameTooLong or kIniWriteFailed.
IniStatus writeContents(const IniFileObject& file, IniOutput& output) noexcept;

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
