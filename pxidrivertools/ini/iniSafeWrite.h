// Writing a file object back to its file, and what is known of that file afterwards.
#pragma once

#include "platform/file.h"
#include "pxidrivertools/ini/iniFileObject.h"
#include "pxidrivertools/ini/iniFileOperations.h"
#include "pxidrivertools/ini/iniStatus.h"

#include <string>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// What happens to a target that already holds exactly the bytes to be written, where it is written
// in place: nothing, or it is written all the same, so that its last-write time changes.
enum class IniRewrite { ifDifferent, always };

// Writes every section to the target by the write options, and remembers path and last-write time.
//
// With a safe write, readers see the old content or the new, and a failure leaves the old one and
// no temporary file behind. The new file has the owner, group, permissions and access list of the
// one it replaces, where the system lets it; a new one is its owner's only.
//
// Without it the target is written in place, from the first byte on that differs, after room for
// all of it has been secured; up to then a failure leaves the target as it is. Once its content is
// touched, a failure removes it.
//
// kIniDone, or any negative result but those of loading and of setValue(); then file.failure says
// what the system's reason was, where it had one.
IniStatus writeIni(IniFileObject& file, const char* path,
                   IniFileOperations& files = systemFileOperations(),
                   IniRewrite rewrite = IniRewrite::ifDifferent) noexcept;

// A file's last-write time. kIniDone; kIniNoTimestampPath, or kIniInvalid when there is no such
// file.
IniStatus readTimestamp(const char* path, platform::FileTime& time,
                        IniFileOperations& files = systemFileOperations()) noexcept;

// Notes where the content comes from. kIniDone or kIniOutOfMemory.
IniStatus rememberFile(IniFileObject& file, std::string_view path,
                       platform::FileTime time) noexcept;

// A file beside the target is called "ini$$<number>.TMP", with a number below this.
inline constexpr int kTemporaryNames = 1000;

// Both raise std::bad_alloc only.
std::string numberedTemporary(const platform::PathParts& target, int number);

// The target's path with what follows its last dot replaced by "TMP". A dot and "TMP" are appended
// instead when the path has no separator, no dot behind its last one, or the extension TMP already.
// Both "/" and "\" are separators.
std::string siblingTemporary(const std::string& target);

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
