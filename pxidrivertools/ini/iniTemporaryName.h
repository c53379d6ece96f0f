// The names of the temporary files that a safe write goes through.
#pragma once

#include "platform/file.h"

#include <string>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// A file beside the target is called "ini$$<number>.TMP", with a number below this.
inline constexpr int kTemporaryNames = 1000;

// Both raise std::bad_alloc only.
std::string numberedTemporary(const platform::PathParts& target, int number);

// The target's path with what follows its last dot replaced by "TMP". A dot and "TMP" are appended
// instead when the path has no separator, no dot behind its last one, or the extension TMP already.
// Both "/" and "\" are separators.
std::string siblingTemporary(const std::string& target);

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
