// The project, and in it the sample machine: its recorded bus, and the folder of its descriptions.
#pragma once

#include <filesystem>
#include <string>

namespace tavctltest {

inline const std::filesystem::path kProject = TAV_SOURCE_DIR;
inline const std::string kSample = TAV_SOURCE_DIR "/samples/switchboxes.dump";
inline const std::string kSampleDescriptions = TAV_SOURCE_DIR "/descriptions";

} // namespace tavctltest
