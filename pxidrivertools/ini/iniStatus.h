// The results of the INI engine: 0 or more is success, a failure is one of these. The engine never
// throws.
#pragma once

#include <cstdint>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// 32 bits signed, so that a result fits wherever a status fits.
using IniStatus = std::int32_t;

inline constexpr IniStatus kIniDone = 0;
// setValue() only: the key is stored.
inline constexpr IniStatus kIniStored = 1;
// setValue() only: the section's key list could not grow.
inline constexpr IniStatus kIniNotStored = 0;

// A key name is too long to split its value within the maximum line length.
inline constexpr IniStatus kIniNameTooLong = -2;
// The file starts with a UTF-16 or UTF-32 byte-order mark.
inline constexpr IniStatus kIniWideEncoding = -3;
// Empty path for the look at a file's last-write time.
inline constexpr IniStatus kIniNoTimestampPath = -4;
// A temporary name could not be created, and not because it is taken.
inline constexpr IniStatus kIniNoTemporary = -5;
// Empty name of a section or key to be stored.
inline constexpr IniStatus kIniEmptyName = -6;
inline constexpr IniStatus kIniOutOfMemory = -12;
// The target cannot be created or written, or the final rename failed.
inline constexpr IniStatus kIniNoAccess = -13;
// Empty target path; or no such file to read the last-write time of.
inline constexpr IniStatus kIniInvalid = -22;
// A write to the output, or flushing or closing it, failed.
inline constexpr IniStatus kIniWriteFailed = -28;
// The reader reported an error.
inline constexpr IniStatus kIniReadFailed = -5002;
// Every temporary name is taken.
inline constexpr IniStatus kIniTemporariesTaken = -5003;
// The output file could not be opened.
inline constexpr IniStatus kIniOpenFailed = -5004;

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
