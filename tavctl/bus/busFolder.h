// Folders that are named where a bus is: ones that stand for /sys, and others, which may hold
// recordings of many machines.
#pragma once

#include <string>

namespace tavctl {

// Whether there is a folder, itself or behind links, at this UTF-8 path.
[[nodiscard]] bool isFolder(const std::string& path);

// Whether the folder has the functions of a bus as /sys has them: a folder bus/pci/devices.
[[nodiscard]] bool standsForSys(const std::string& folder);

} // namespace tavctl
