// Writing a file object back to its file, and what is known of that file afterwards.
#pragma once

#include "pxidrivertools/ini/iniFileObject.h"
#include "pxidrivertools/ini/iniFileOperations.h"
#include "pxidrivertools/ini/iniStatus.h"

#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// Writes every section to the target by the write options, and remembers path and last-write time.
// With a safe write, readers see the old content or the new, and a failure leaves the old one and
// no temporary file behind. Without it the target is written in place, and removed when that fails.
// kIniDone, or any negative result but those of loading and of setValue().
IniStatus writeIni(IniFileObject& file, const char* path,
                   IniFileOperations& files = systemFileOperations()) noexcept;

// A file's last-write time. kIniDone; kIniNoTimestampPath, or kIniInvalid when there is no such
// file.
IniStatus readTimestamp(const char* path, platform::FileTime& time,
                        IniFileOperations& files = systemFileOperations()) noexcept;

// Notes where the content comes from. kIniDone or kIniOutOfMemory.
IniStatus rememberFile(IniFileObject& file, std::string_view path,
                       platform::FileTime time) noexcept;

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
