// Reading an INI file into a file object.
#pragma once

#include "platform/fileToLoad.h"
#include "pxidrivertools/ini/iniBlock.h"
#include "pxidrivertools/ini/iniFileObject.h"
#include "pxidrivertools/ini/iniStatus.h"

#include <cstdio>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// Replaces the content by what the reader gives. kIniDone, kIniReadFailed or kIniOutOfMemory; a
// failed load leaves the sections of the complete lines that were read before the failure.
IniStatus loadIni(IniFileObject& file, const IniReader& reader) noexcept;

// The same from the start of an open stream, whose UTF-8 byte-order mark is passed over. A UTF-16
// or UTF-32 one gives kIniWideEncoding, and the content is as it was. The stream must be seekable
// and stays the caller's.
IniStatus loadIni(IniFileObject& file, std::FILE* stream) noexcept;

// The same from a file that is open and of which nothing has been read.
IniStatus loadIni(IniFileObject& file, platform::FileToLoad& from) noexcept;

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
