#include "tavctl/bus/busFolder.h"

#include "platform/entryType.h"
#include "platform/pathBelow.h"

#include <filesystem>

namespace tavctl {

bool isFolder(const std::string& path) {
    return platform::typeOfEntry(path) == std::filesystem::file_type::directory;
}

bool standsForSys(const std::string& folder) {
    return isFolder(platform::pathBelow(folder, "bus/pci/devices"));
}

} // namespace tavctl
