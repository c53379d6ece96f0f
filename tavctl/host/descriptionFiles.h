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

// For a look that found no device: says in a line where the descriptions were looked for, if there
// are none there.
void explainNoDescriptions();

// Refuses a folder that does not hold "PCI Hardware Descriptions", and says so where it is that
// folder itself. Raises FailureException.
void requireDescriptionFolder(const std::string& folder);

} // namespace tavctl
