// How a file object reads and writes. The initial values are those of a new file object; they may
// be changed at any time and count from the next load or write on.
#pragma once

#include <cstdint>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

struct IniParseOptions {
    // A ":" separates name and value as "=" does, ":=" counts as one separator, and keys before the
    // first header are kept in a section named "(null)" instead of being dropped.
    bool colonAndUnnamedSection = false;
    // "name =" is a key with an empty value instead of an odd line.
    bool emptyValues = false;
    // Values enclosed in double (single) quotes lose them and remember which they were.
    bool doubleQuotes = true;
    bool singleQuotes = false;
};

inline constexpr std::int32_t kNoMaximumLineLength = -1;
inline constexpr char kNoBreakCharacter = 0;

struct IniWriteOptions {
    // Write a temporary file and rename it onto the target; otherwise the target itself is written.
    bool safeWrite = true;
    // The temporary file is "ini$$<n>.TMP" beside the target; otherwise the target's path with the
    // extension TMP.
    bool sameDirectoryTemporary = true;
    // Force the file onto the disk before it is closed.
    bool flush = false;
    // Begin with the UTF-8 byte-order mark.
    bool byteOrderMark = false;
    // No empty lines between sections that came from the loaded file.
    bool keepLayout = false;
    // " = " between name and value, otherwise "=".
    bool spacedSeparator = true;
    // In bytes, without the line break; longer key lines are split over several keys.
    std::int32_t maximumLineLength = 80;
    // Where a split prefers to cut: behind this character.
    char breakCharacter = kNoBreakCharacter;
};

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
