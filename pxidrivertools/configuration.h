// Reads the TAV Manager's configuration: the values "Path" and "ConfigPath".
#pragma once

#include "quil/tErrorStatus.h"

#include <cstdint>
#include <string>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// The key below which the values stand.
inline constexpr const char* kConfigurationKey = "SOFTWARE\\Quorvane\\TAV Manager\\CurrentVersion";
inline constexpr const char* kPathValue = "Path";
inline constexpr const char* kConfigPathValue = "ConfigPath";

// There is no configuration: its key cannot be opened.
inline constexpr std::int32_t kConfigurationErrNoKey = -52003;

// Reads one value, as stored. Fails with kConfigurationErrNoKey, with the system's error for a
// value that is missing or unreadable, or with zoquilerr_memoryFull; the result is then empty. But
// for the last, the record has the members "configuration", which names the value and where it was
// looked for, and "internal_error", which says what the system reported. Does nothing when the
// status has failed already. Does not raise.
std::string readConfiguration(const char* name, nZOQUIL000::tErrorStatus& status);

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
