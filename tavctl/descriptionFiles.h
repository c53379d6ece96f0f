// The description files that the plug-in would load.
#pragma once

#include <string>
#include <vector>

namespace tavctl {

// Full paths in the order of loading, by the configuration in force. Raises FailureException when
// the folder cannot be listed or is not there.
std::vector<std::string> descriptionFiles();

} // namespace tavctl
