// The description files that the plug-in would load.
#pragma once

#include <string>
#include <vector>

namespace tavctl {

// Full paths in the order of loading, by the configuration in force. Raises FailureException when
// the folder cannot be listed or is not there.
std::vector<std::string> descriptionFiles();

// The same for a folder that holds "PCI Hardware Descriptions".
std::vector<std::string> descriptionFilesIn(const std::string& folder);

} // namespace tavctl
